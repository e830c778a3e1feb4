// "veloxctl keydisk template".
#include <keyfd/heartbeat_text.h>
#include <ntwin32/registry.h>
#include <records/address_items.h>
#include <records/customer_items.h>
#include <regfile/text.h>
#include <registry/catalogue.h>

#include <algorithm>
#include <cstring>

#include "failure.h"
#include "keydisk/check.h"
#include "keydisk/commands.h"
#include "keydisk/form.h"
#include "terminal.h"

namespace veloxctl::keydisk {

namespace {

// What a form is filled with, by the item's registry value and by language.
struct Sample {
    const char *value_name;
    const char *text[2];
};

constexpr Sample kSamples[] = {
    {"TOKUINMA", {"EXAMPLE TRADING CO.", "ｶﾌﾞｼｷｶﾞｲｼｬ ﾚｲｼｮｳｼﾞ"}},
    {"TOKUINMN", {"", "株式会社例商事"}},
    {"BUNMN", {"INFORMATION SYSTEMS", "情報システム部"}},
    {"ZIPNO", {"100-0001", "100-0001"}},
    {"ADRSNMA", {"1-1 CHIYODA, TOKYO", "ﾄｳｷｮｳﾄ ﾁﾖﾀﾞｸ ﾁﾖﾀﾞ"}},
    {"ADRSNMN", {"", "東京都千代田区千代田"}},
    {"SHOZAINMN", {"", "１－１ 例ビル３階"}},
    {"BUTEL", {"03-5555-0100", "03-5555-0100"}},
    {"MAIL", {"systems@customer.example", "systems@customer.example"}},
    {"BUTANNMA", {"TARO YAMADA", "ﾔﾏﾀﾞ ﾀﾛｳ"}},
    {"BUTANNMN", {"", "山田 太郎"}},
    {"USERCODE", {"C0001234", "C0001234"}},
    {"SYSNMN", {"SERVER01", "SERVER01"}},
    {"SOCHICD", {"N8100-0001", "N8100-0001"}},
    {"SYSGOKI", {"0000001", "0000001"}},
    {"GUARANTEE", {"G-0000001", "G-0000001"}},
    {"OSNMA", {"LINUX", "LINUX"}},
    {"OSREV", {"3.1", "3.1"}},
    {"OPTCD", {"N8102-0001", "N8102-0001"}},
    {"SYSSHOPNMN", {"EXAMPLE DEALER", "例販売株式会社"}},
    {"SYSEIGYOBUNMN", {"TOKYO OFFICE", "東京営業所"}},
    {"SYSEIGYONMN", {"HANAKO SATO", "佐藤 花子"}},
    {"SYSEIGYOTEL", {"03-5555-0200", "03-5555-0200"}},
    {"SYSSEBU", {"TOKYO SUPPORT CENTER", "東京サポートセンター"}},
    {"SYSSENMN", {"JIRO SUZUKI", "鈴木 次郎"}},
    {"SYSSETEL", {"03-5555-0300", "03-5555-0300"}},
    {"MailAdrs", {"report@center.example", "report@center.example"}},
    {"PhoneNo", {"03-5555-0400", "03-5555-0400"}},
    {"ErrorReply", {"error@customer.example", "error@customer.example"}},
};

constexpr char kHead[] =
    "# The form of a key disk of the Velox report service, in UTF-8.\n"
    "#\n"
    "# A line that begins with # is a comment. %customer, %address and %heartbeat begin the\n"
    "# three files. A line in brackets names an item, the lines behind it are its value. A\n"
    "# backslash is written twice.\n"
    "#\n"
    "# veloxctl keydisk create FORM -o DIR|IMAGE makes the disk.\n";

std::string SampleOf(const ITEM_ROW &row, ITEM_LANGUAGE language) {
    if (row.dwType == REG_DWORD) {
        return regfile::NameToUtf8(CatalogueText("Corporate"));
    }
    const auto *sample = std::ranges::find_if(kSamples, [&](const Sample &candidate) {
        return std::strcmp(candidate.value_name, row.lpszValueName) == 0;
    });
    if (sample == std::end(kSamples)) {
        Fail(EX_SOFTWARE, std::string("no sample for ") + row.lpszValueName);
    }
    return sample->text[language];
}

std::string ItemText(const ITEM_ROW &row, ITEM_LANGUAGE language) {
    if (std::strcmp(row.lpszName[language], ITEM_NOT_IN_ENGLISH) == 0) {
        return "";
    }
    const std::string number = row.eMatch == ITEM_NUMBERED ? "01" : "";
    return "[" + regfile::NameToUtf8(row.lpszName[language]) + number + "]\n" +
           SampleOf(row, language) + "\n";
}

std::string PartTemplate(Part part, const ITEM_TABLE &table, ITEM_LANGUAGE language) {
    std::string text = std::string("\n# ") + kParts[part].file + ", the " + kParts[part].title +
                       "\n" + kParts[part].section + "\n";
    for (std::size_t row = 0; row < table.dwCount; ++row) {
        text += ItemText(table.lpRows[row], language);
    }
    return text;
}

}  // namespace

int RunTemplate(const Arguments &arguments) {
    if (arguments.Has("lang")) {
        UseImportLanguage(arguments.Get("lang"));
    }
    UseCatalogue("", CATALOGUE_VELOX);
    const ITEM_LANGUAGE language = ImportLanguage();
    Print(kHead);
    Print(PartTemplate(kCustomer, CUSTOMER_TABLE, language));
    Print(PartTemplate(kAddress, ADDRESS_TABLE, language));
    Print(PartTemplate(kHeartbeat, {nullptr, 0}, language));
    Print(regfile::NameToUtf8(CatalogueText(KEYDISK_HEARTBEAT_ITEM)) + "\n10\n");
    return EX_OK;
}

}  // namespace veloxctl::keydisk
