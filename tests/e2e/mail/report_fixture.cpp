#include "report_fixture.h"

#include <stdexcept>

#include <ntwin32/registry.h>

using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

namespace {

struct Item {
    const char *name;
    const char *value;
    const char *english;  // heading; empty: not in English reports
    const char *japanese;
};

constexpr Item kCustomer[] = {
    {"TOKUINMA", "EXAMPLE TRADING", "[USER-NAME]", "[お客様名称(カナ)]"},
    {"TOKUINMN", "株式会社サンプル", "", "[お客様名称(漢字)]"},
    {"BUNMN", "システム部", "[USER-DIVISION]", "[部署名]"},
    {"ZIPNO", "1000001", "[USER-ZIPCODE]", "[お客様郵便番号]"},
    {"ADRSNMA", "1-2-3 EXAMPLE STREET", "[USER-ADDRESS]", "[住所(カナ)]"},
    {"ADRSNMN", "東京都千代田区", "", "[住所(漢字)]"},
    {"SHOZAINMN", "例ビル", "", "[住所(詳細)]"},
    {"BUTEL", "03-0000-0000", "[USER-TELNUM]", "[お客様電話番号]"},
    {"MAIL", "customer@customer.example", "[USER-EMAIL]", "[お客様メールアドレス]"},
    {"BUTANNMA", "JANE DOE", "[USER-CONTACT]", "[担当者名(カナ)]"},
    {"BUTANNMN", "山田花子", "", "[担当者名(漢字)]"},
    {"USERCODE", "U12345", "[USER-SYSTEM-CD]", "[ユーザシステムコード]"},
    {"COMMENT", "", "[COMMENT]", "[コメント]"},
};
constexpr Item kMachine[] = {
    {"SYSNMN", "SRV-1", "[SERVER-NAME]", "[サーバ名称]"},
    {"SOCHICD", "N8100-0001", "[N-CODE]", "[装置コード]"},
    {"SYSGOKI", "0000001", "[SERIAL-NUMBER]", "[製造番号]"},
    {"GUARANTEE", "G-1", "[GUARANTEE-NUMBER]", "[保証書番号]"},
    {"OSNMA", "LINUX", "[OS-NAME]", "[OS名称]"},
    {"OSREV", "12", "[OS-VERSION]", "[OS詳細バージョン]"},
};
constexpr Item kOptions[] = {
    {"OPTCD01", "N8101-01", "[SUB-N-CODE 01]", "[装置コード 01]"},
    {"OPTCD02", "N8102-02", "[SUB-N-CODE 02]", "[装置コード 02]"},
};
constexpr Item kDealer[] = {
    {"SYSSHOPNMN", "販売店", "[DEALER-NAME]", "[販売店名]"},
    {"SYSEIGYOBUNMN", "OFFICE", "[DEALER-LOCAL-OFFICE]", "[担当営業所属]"},
    {"SYSEIGYONMN", "JOHN ROE", "[DEALER-CONTACT]", "[担当営業氏名]"},
    {"SYSEIGYOTEL", "03-1111-1111", "[DEALER-TEL-NUM]", "[担当営業電話番号]"},
    {"SYSSEBU", "SE PERSON", "[SE-CONTACT]", "[担当SE所属]"},
    {"SYSSENMN", "SE OFFICE", "[SE-NAME]", "[担当SE氏名]"},
    {"SYSSETEL", "03-2222-2222", "[SE-TEL-NUMBER]", "[担当SE電話番号]"},
};

template <typename Work>
void ForEachItem(Work work) {
    for (const Item &item : kCustomer)
        work(item);
    for (const Item &item : kMachine)
        work(item);
    for (const Item &item : kOptions)
        work(item);
    for (const Item &item : kDealer)
        work(item);
}

std::string Quoted(const std::string &text) {
    return "\"" + text + "\"";
}

}  // namespace

ReportTest::ReportTest() {
    std::string lines =
        "[HKLM\\" + std::string(kContractKey) + "]\n\"KAISHAKBN\"=dword:1\n\"OPTCDN\"=dword:2\n";
    ForEachItem(
        [&](const Item &item) { lines += Quoted(item.name) + "=" + Quoted(item.value) + "\n"; });
    lines += "[HKLM\\" + std::string(kSetupKey) +
             "]\n\"VERSION\"=\"3.1/LINUX\"\n\"ERRORREPLY\"=\"errors@server.example\"\n";
    lines += "[HKLM\\" + std::string(kDestinationKey) + "]\n\"ETo\"=" + Quoted(kRecipients) + "\n";
    Import(lines);
}

void ReportTest::Import(const std::string &lines) {
    MustSucceed({"reg", "import", "-"}, "Windows Registry Editor Version 5.00\r\n\r\n" + lines);
}

void ReportTest::StoreText(const std::string &key, const std::string &name,
                           const std::string &text) {
    Import("[HKLM\\" + key + "]\n" + Quoted(name) + "=" + Quoted(text) + "\n");
}

std::uint32_t ReportTest::Number(const std::string &key, const std::string &name) {
    HKEY handle = 0;
    DWORD number = 0xFFFFFFFF;
    DWORD size = sizeof number;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &handle) == ERROR_SUCCESS) {
        RegQueryValueEx(handle, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE *>(&number),
                        &size);
        RegCloseKey(handle);
    }
    return number;
}

std::string ReportTest::MustSucceed(const std::vector<std::string> &words,
                                    const std::string &input) {
    const Result result = Veloxctl(words, {.input = input});
    if (result.status != 0)
        throw std::runtime_error("veloxctl " + words[0] + " " + words[1] + ": " + result.errors);
    return result.output;
}

void ReportTest::UseServer(const std::string &address, unsigned port,
                           const std::string &protection) {
    MustSucceed({"mail", "set", "--server", address, "--port", std::to_string(port), "--sender",
                 "agent@server.example", "--protection", protection});
}

void ReportTest::UsePop(const std::string &address, unsigned port, const std::string &account,
                        const std::string &password) {
    MustSucceed({"mail", "set", "--pop", "on", "--pop-server", address, "--pop-port",
                 std::to_string(port), "--pop-user", account, "--pop-password-file", "-"},
                password + "\n");
}

std::string ExpectedReport(bool japanese, const std::string &identifier,
                           const std::string &message) {
    std::string text = "*****START*****\r\n[REVISION]\r\n3.1/LINUX\r\n[MESSAGE-ID]\r\n" +
                       identifier + "\r\n[CONTRACT]\r\nCorporate\r\n";
    ForEachItem([&](const Item &item) {
        const std::string heading = japanese ? item.japanese : item.english;
        if (!heading.empty())
            text += heading + "\r\n" + item.value + "\r\n";
    });
    return text + message;
}

std::string Shown(std::string text) {
    std::erase(text, '\r');
    return text;
}
