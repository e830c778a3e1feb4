// The item tables row by row, and the UTF-8 comments beside their EUC-JP bytes.
#include <gtest/gtest.h>
#include <records/address_items.h>
#include <records/customer_items.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/encoding.h"

namespace {

using test_support::ToEuc;

struct Row {
    std::string english;
    std::string japanese;  // UTF-8
    ITEM_MATCH match;
    std::string value_name;
    DWORD type;
};

const std::vector<Row> kCustomerRows = {
    {"CONTRACT", "お客様属性", ITEM_WHOLE, "KAISHAKBN", REG_DWORD},
    {"USER-NAME", "お客様名称(カナ)", ITEM_WHOLE, "TOKUINMA", REG_SZ},
    {"*", "お客様名称(漢字)", ITEM_WHOLE, "TOKUINMN", REG_SZ},
    {"USER-DIVISION", "部署名", ITEM_WHOLE, "BUNMN", REG_SZ},
    {"USER-ZIPCODE", "お客様郵便番号", ITEM_WHOLE, "ZIPNO", REG_SZ},
    {"USER-ADDRESS", "住所(カナ)", ITEM_WHOLE, "ADRSNMA", REG_SZ},
    {"*", "住所(漢字)", ITEM_WHOLE, "ADRSNMN", REG_SZ},
    {"*", "住所(詳細)", ITEM_WHOLE, "SHOZAINMN", REG_SZ},
    {"USER-TELNUM", "お客様電話番号", ITEM_WHOLE, "BUTEL", REG_SZ},
    {"USER-EMAIL", "お客様メールアドレス", ITEM_WHOLE, "MAIL", REG_SZ},
    {"USER-CONTACT", "担当者名(カナ)", ITEM_WHOLE, "BUTANNMA", REG_SZ},
    {"*", "担当者名(漢字)", ITEM_WHOLE, "BUTANNMN", REG_SZ},
    {"USER-SYSTEM-CD", "ユーザシステムコード", ITEM_WHOLE, "USERCODE", REG_SZ},
    {"SERVER-NAME", "サーバ名称", ITEM_WHOLE, "SYSNMN", REG_SZ},
    {"N-CODE", "装置コード", ITEM_WHOLE, "SOCHICD", REG_SZ},
    {"SERIAL-NUMBER", "製造番号", ITEM_WHOLE, "SYSGOKI", REG_SZ},
    {"GUARANTEE-NUMBER", "保証書番号", ITEM_WHOLE, "GUARANTEE", REG_SZ},
    {"OS-NAME", "OS名称", ITEM_WHOLE, "OSNMA", REG_SZ},
    {"OS-VERSION", "OS詳細バージョン", ITEM_WHOLE, "OSREV", REG_SZ},
    {"SUB-N-CODE ", "装置コード ", ITEM_NUMBERED, "OPTCD", REG_SZ},
    {"DEALER-NAME", "販売店名", ITEM_WHOLE, "SYSSHOPNMN", REG_SZ},
    {"DEALER-LOCAL-OFFICE", "担当営業所属", ITEM_WHOLE, "SYSEIGYOBUNMN", REG_SZ},
    {"DEALER-CONTACT", "担当営業氏名", ITEM_WHOLE, "SYSEIGYONMN", REG_SZ},
    {"DEALER-TEL-NUM", "担当営業電話番号", ITEM_WHOLE, "SYSEIGYOTEL", REG_SZ},
    {"SE-NAME", "担当SE所属", ITEM_WHOLE, "SYSSEBU", REG_SZ},
    {"SE-CONTACT", "担当SE氏名", ITEM_WHOLE, "SYSSENMN", REG_SZ},
    {"SE-TEL-NUMBER", "担当SE電話番号", ITEM_WHOLE, "SYSSETEL", REG_SZ},
};

const std::vector<Row> kAddressRows = {
    {"E-MAIL", "メールアドレス", ITEM_WHOLE, "MailAdrs", REG_SZ},
    {"PHONENO", "電話番号", ITEM_WHOLE, "PhoneNo", REG_SZ},
    {"ERROR-REPLY", "エラーリプライアドレス", ITEM_WHOLE, "ErrorReply", REG_SZ},
};

void ExpectRows(const ITEM_TABLE &table, const std::vector<Row> &rows) {
    ASSERT_EQ(table.dwCount, rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(table.lpRows[i].lpszName[ITEM_ENGLISH], rows[i].english);
        EXPECT_EQ(table.lpRows[i].lpszName[ITEM_JAPANESE], ToEuc(rows[i].japanese));
        EXPECT_EQ(table.lpRows[i].eMatch, rows[i].match);
        EXPECT_EQ(table.lpRows[i].lpszValueName, rows[i].value_name);
        EXPECT_EQ(table.lpRows[i].dwType, rows[i].type);
    }
}

TEST(ItemTablesTest, CustomerItems) {
    ExpectRows(CUSTOMER_TABLE, kCustomerRows);
}

TEST(ItemTablesTest, AddressItems) {
    ExpectRows(ADDRESS_TABLE, kAddressRows);
}

TEST(ItemTablesTest, TheOtherLanguage) {
    EXPECT_EQ(OtherLanguage(ITEM_ENGLISH), ITEM_JAPANESE);
    EXPECT_EQ(OtherLanguage(ITEM_JAPANESE), ITEM_ENGLISH);
}

// The names that stand as comments above the rows of a header's table.
std::vector<std::string> CommentedNames(const std::string &header) {
    std::ifstream file(std::string(RECORDS_HEADERS "/") + header);
    std::vector<std::string> names;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("    // ")) {
            names.push_back(line.substr(7));
        }
    }
    return names;
}

void ExpectComments(const std::string &header, const ITEM_TABLE &table) {
    const std::vector<std::string> names = CommentedNames(header);
    ASSERT_EQ(names.size(), table.dwCount);
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string name = names[i];
        if (const std::size_t remark = name.find(" (and a blank)"); remark != std::string::npos) {
            name.resize(remark + 1);
        }
        EXPECT_EQ(table.lpRows[i].lpszName[ITEM_JAPANESE], ToEuc(name)) << name;
    }
}

TEST(ItemTablesTest, CommentsNameTheRowsTheyStandAbove) {
    ExpectComments("customer_items.h", CUSTOMER_TABLE);
    ExpectComments("address_items.h", ADDRESS_TABLE);
}

// docs/key-disk.md has a line for every row, with both names and the value.
bool IsDocumented(const Row &row) {
    std::ifstream file(KEY_DISK_DOCUMENT);
    for (std::string line; std::getline(file, line);) {
        if (line.find("`" + row.japanese + (row.match == ITEM_NUMBERED ? "nn`" : "`")) !=
                std::string::npos &&
            line.find("`" + row.value_name) != std::string::npos &&
            (row.english == "*" || line.find("`" + row.english) != std::string::npos)) {
            return true;
        }
    }
    return false;
}

TEST(ItemTablesTest, EveryRowIsDocumented) {
    for (const std::vector<Row> *rows : {&kCustomerRows, &kAddressRows}) {
        for (const Row &row : *rows) {
            EXPECT_TRUE(IsDocumented(row)) << row.japanese;
        }
    }
}

}  // namespace
