// A full contract in the fake registry, and the service information text that it calls for.
#ifndef VXGETINF_CONTRACT_H
#define VXGETINF_CONTRACT_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "support/encoding.h"
#include "velox/service_info.h"

namespace contract {

inline constexpr char kSetting[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
inline constexpr char kAlertReport[] = "SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT";

// The items that are texts, in the order of the text; the option items stand after the machine's.
inline const std::vector<const char *> kUser = {
    "TOKUINMA", "TOKUINMN", "BUNMN",    "ZIPNO",    "ADRSNMA",  "ADRSNMN", "SHOZAINMN",
    "BUTEL",    "MAIL",     "BUTANNMA", "BUTANNMN", "USERCODE", "COMMENT"};
inline const std::vector<const char *> kMachine = {"SYSNMN",    "SOCHICD", "SYSGOKI",
                                                   "GUARANTEE", "OSNMA",   "OSREV"};
inline const std::vector<const char *> kShop = {
    "SYSSHOPNMN", "SYSEIGYOBUNMN", "SYSEIGYONMN", "SYSEIGYOTEL", "SYSSEBU", "SYSSENMN", "SYSSETEL"};

inline std::string OptionName(unsigned number) {
    char name[16];
    (void)std::snprintf(name, sizeof name, "OPTCD%02u", number);
    return name;
}

// Every text item holds "<its name> value".
inline void Store(DWORD kind, DWORD options) {
    fakes::StoreNumber(kSetting, "KAISHAKBN", kind);
    for (const auto *names : {&kUser, &kMachine, &kShop}) {
        for (const char *name : *names) {
            fakes::StoreText(kSetting, name, std::string(name) + " value");
        }
    }
    fakes::StoreNumber(kSetting, "OPTCDN", options);
    for (unsigned option = 1; option <= options; ++option) {
        fakes::StoreText(kSetting, OptionName(option), OptionName(option) + " value");
    }
}

// The text's lines in English, of a contract with three options.
inline std::vector<std::string> EnglishLines() {
    return {"[CONTRACT]",
            "Corporate",
            "[USER-NAME]",
            "TOKUINMA value",
            "[USER-DIVISION]",
            "BUNMN value",
            "[USER-ZIPCODE]",
            "ZIPNO value",
            "[USER-ADDRESS]",
            "ADRSNMA value",
            "[USER-TELNUM]",
            "BUTEL value",
            "[USER-EMAIL]",
            "MAIL value",
            "[USER-CONTACT]",
            "BUTANNMA value",
            "[USER-SYSTEM-CD]",
            "USERCODE value",
            "[COMMENT]",
            "COMMENT value",
            "[SERVER-NAME]",
            "SYSNMN value",
            "[N-CODE]",
            "SOCHICD value",
            "[SERIAL-NUMBER]",
            "SYSGOKI value",
            "[GUARANTEE-NUMBER]",
            "GUARANTEE value",
            "[OS-NAME]",
            "OSNMA value",
            "[OS-VERSION]",
            "OSREV value",
            "[SUB-N-CODE 01]",
            "OPTCD01 value",
            "[SUB-N-CODE 02]",
            "OPTCD02 value",
            "[SUB-N-CODE 03]",
            "OPTCD03 value",
            "[DEALER-NAME]",
            "SYSSHOPNMN value",
            "[DEALER-LOCAL-OFFICE]",
            "SYSEIGYOBUNMN value",
            "[DEALER-CONTACT]",
            "SYSEIGYONMN value",
            "[DEALER-TEL-NUM]",
            "SYSEIGYOTEL value",
            "[SE-CONTACT]",
            "SYSSEBU value",
            "[SE-NAME]",
            "SYSSENMN value",
            "[SE-TEL-NUMBER]",
            "SYSSETEL value"};
}

// The same in Japanese, in EUC-JP.
inline std::vector<std::string> JapaneseLines() {
    std::vector<std::string> lines = {
        "[CONTRACT]",
        "Corporate",
        "[お客様名称(カナ)]",
        "TOKUINMA value",
        "[お客様名称(漢字)]",
        "TOKUINMN value",
        "[部署名]",
        "BUNMN value",
        "[お客様郵便番号]",
        "ZIPNO value",
        "[住所(カナ)]",
        "ADRSNMA value",
        "[住所(漢字)]",
        "ADRSNMN value",
        "[住所(詳細)]",
        "SHOZAINMN value",
        "[お客様電話番号]",
        "BUTEL value",
        "[お客様メールアドレス]",
        "MAIL value",
        "[担当者名(カナ)]",
        "BUTANNMA value",
        "[担当者名(漢字)]",
        "BUTANNMN value",
        "[ユーザシステムコード]",
        "USERCODE value",
        "[コメント]",
        "COMMENT value",
        "[サーバ名称]",
        "SYSNMN value",
        "[装置コード]",
        "SOCHICD value",
        "[製造番号]",
        "SYSGOKI value",
        "[保証書番号]",
        "GUARANTEE value",
        "[OS名称]",
        "OSNMA value",
        "[OS詳細バージョン]",
        "OSREV value",
        "[装置コード 01]",
        "OPTCD01 value",
        "[装置コード 02]",
        "OPTCD02 value",
        "[装置コード 03]",
        "OPTCD03 value",
        "[販売店名]",
        "SYSSHOPNMN value",
        "[担当営業所属]",
        "SYSEIGYOBUNMN value",
        "[担当営業氏名]",
        "SYSEIGYONMN value",
        "[担当営業電話番号]",
        "SYSEIGYOTEL value",
        "[担当SE所属]",
        "SYSSEBU value",
        "[担当SE氏名]",
        "SYSSENMN value",
        "[担当SE電話番号]",
        "SYSSETEL value",
    };
    for (std::string &line : lines) {
        line = test_support::ToEuc(line);
    }
    return lines;
}

inline std::string Join(const std::vector<std::string> &lines, const std::string &line_end) {
    std::string text;
    for (const std::string &line : lines) {
        text += line + line_end;
    }
    return text;
}

// One of the two functions.
struct Function {
    const char *title;
    BOOL (*call)(char **, DWORD *);
    const char *line_end;
    int kind_level;  // of the trace of a wrong customer kind
    const char *memory_trace;
};

inline const Function kPlain = {"GetVlxServiceInfo", &GetVlxServiceInfo, "\n", 1,
                                "<malloc *lphData failed.return FALSE."};
inline const Function kMail = {"GetVlxServiceInfo_Mail", &GetVlxServiceInfo_Mail, "\r\n", 0,
                               "<malloc *lphData error"};

// What a call gave. The text is compared with its length, and released.
struct Result {
    BOOL success = 77;
    DWORD length = 77;
    std::string text;
    bool touched = false;  // the text's place was written to

    explicit Result(const Function &function) {
        char nothing = 0;
        char *data = &nothing;
        success = function.call(&data, &length);
        touched = data != &nothing;
        if (touched) {
            text = data;
            std::free(data);
        }
    }
};

}  // namespace contract

#endif  // VXGETINF_CONTRACT_H
