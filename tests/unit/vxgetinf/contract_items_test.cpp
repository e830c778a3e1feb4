// The item tables row by row, their Japanese headings against UTF-8, and their fit with the items
// of a key disk, whose values they show.
#include "velox/contract_items.h"

#include <gtest/gtest.h>
#include <records/customer_items.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/encoding.h"

extern "C" const char *ContractItemsSeenFromC(int row);

namespace {

using test_support::ToEuc;

struct Table {
    const char *name;
    const VX_ITEM_TEXT *rows;
    std::vector<std::string> expected;  // Japanese in UTF-8; an ending row included
};

const std::vector<Table> kTables = {
    {"VX_REG_USER",
     VX_REG_USER,
     {"KAISHAKBN", "TOKUINMA", "TOKUINMN", "BUNMN", "ZIPNO", "ADRSNMA", "ADRSNMN", "SHOZAINMN",
      "BUTEL", "MAIL", "BUTANNMA", "BUTANNMN", "USERCODE", "COMMENT", ""}},
    {"VX_TEXT_USER_en",
     VX_TEXT_USER_en,
     {"[USER-NAME]", "", "[USER-DIVISION]", "[USER-ZIPCODE]", "[USER-ADDRESS]", "", "",
      "[USER-TELNUM]", "[USER-EMAIL]", "[USER-CONTACT]", "", "[USER-SYSTEM-CD]", "[COMMENT]", ""}},
    {"VX_TEXT_USER_jp",
     VX_TEXT_USER_jp,
     {"[お客様名称(カナ)]", "[お客様名称(漢字)]", "[部署名]", "[お客様郵便番号]", "[住所(カナ)]",
      "[住所(漢字)]", "[住所(詳細)]", "[お客様電話番号]", "[お客様メールアドレス]",
      "[担当者名(カナ)]", "[担当者名(漢字)]", "[ユーザシステムコード]", "[コメント]", ""}},
    {"VX_REG_MACHINE",
     VX_REG_MACHINE,
     {"SYSNMN", "SOCHICD", "SYSGOKI", "GUARANTEE", "OSNMA", "OSREV", ""}},
    {"VX_TEXT_MACHINE_en",
     VX_TEXT_MACHINE_en,
     {"[SERVER-NAME]", "[N-CODE]", "[SERIAL-NUMBER]", "[GUARANTEE-NUMBER]", "[OS-NAME]",
      "[OS-VERSION]"}},
    {"VX_TEXT_MACHINE_jp",
     VX_TEXT_MACHINE_jp,
     {"[サーバ名称]", "[装置コード]", "[製造番号]", "[保証書番号]", "[OS名称]",
      "[OS詳細バージョン]"}},
    {"VX_REG_OPTION", VX_REG_OPTION, {"OPTCDN", "OPTCD", ""}},
    {"VX_TEXT_OPTION_en", VX_TEXT_OPTION_en, {"[SUB-N-CODE %02d]", ""}},
    {"VX_TEXT_OPTION_jp", VX_TEXT_OPTION_jp, {"[装置コード %02d]", ""}},
    {"VX_REG_SHOP",
     VX_REG_SHOP,
     {"SYSSHOPNMN", "SYSEIGYOBUNMN", "SYSEIGYONMN", "SYSEIGYOTEL", "SYSSEBU", "SYSSENMN",
      "SYSSETEL", ""}},
    {"VX_TEXT_SHOP_en",
     VX_TEXT_SHOP_en,
     {"[DEALER-NAME]", "[DEALER-LOCAL-OFFICE]", "[DEALER-CONTACT]", "[DEALER-TEL-NUM]",
      "[SE-CONTACT]", "[SE-NAME]", "[SE-TEL-NUMBER]", ""}},
    {"VX_TEXT_SHOP_jp",
     VX_TEXT_SHOP_jp,
     {"[販売店名]", "[担当営業所属]", "[担当営業氏名]", "[担当営業電話番号]", "[担当SE所属]",
      "[担当SE氏名]", "[担当SE電話番号]", ""}},
};

TEST(ContractItemsTest, TablesHoldTheirRows) {
    for (const Table &table : kTables) {
        for (std::size_t row = 0; row < table.expected.size(); ++row) {
            EXPECT_EQ(table.rows[row], ToEuc(table.expected[row])) << table.name << " " << row;
        }
    }
}

TEST(ContractItemsTest, TablesHaveNoOtherRows) {
    EXPECT_EQ(sizeof VX_REG_USER, 15 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_USER_en, 14 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_USER_jp, 14 * 24U);
    EXPECT_EQ(sizeof VX_REG_MACHINE, 7 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_MACHINE_en, 6 * 24U) << "without an ending row";
    EXPECT_EQ(sizeof VX_TEXT_MACHINE_jp, 6 * 24U) << "without an ending row";
    EXPECT_EQ(sizeof VX_REG_OPTION, 3 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_OPTION_en, 2 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_OPTION_jp, 2 * 24U);
    EXPECT_EQ(sizeof VX_REG_SHOP, 8 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_SHOP_en, 8 * 24U);
    EXPECT_EQ(sizeof VX_TEXT_SHOP_jp, 8 * 24U);
}

TEST(ContractItemsTest, CommentsNameTheRowsTheyStandAbove) {
    std::ifstream file(VXGETINF_SOURCE "/contract_items.cpp");
    std::vector<std::string> comments;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("    // ")) {
            comments.push_back(line.substr(7));
        }
    }
    std::vector<std::string> headings;
    for (const Table &table : kTables) {
        if (std::string(table.name).ends_with("_jp")) {
            for (const std::string &heading : table.expected) {
                if (!heading.empty()) {
                    headings.push_back(heading);
                }
            }
        }
    }
    EXPECT_EQ(comments, headings);
}

// What the text shows comes from the key disk's items, under the same names in brackets.
TEST(ContractItemsTest, HeadingsAreTheKeyDisksNamesInBrackets) {
    std::map<std::string, const ITEM_ROW *> by_value;
    for (const ITEM_ROW &row : CUSTOMER_ITEMS) {
        by_value[row.lpszValueName] = &row;
    }
    const auto expect = [&](const char *value, const char *english, const char *japanese) {
        const ITEM_ROW *row = by_value.at(value);
        const std::string name = row->lpszName[ITEM_ENGLISH];
        EXPECT_EQ(english, name == ITEM_NOT_IN_ENGLISH ? "" : "[" + name + "]") << value;
        EXPECT_EQ(japanese, std::string("[") + row->lpszName[ITEM_JAPANESE] + "]") << value;
    };
    for (int item = 0; item < VX_USER_ITEMS - 1; ++item) {  // the comment is on no disk
        expect(VX_REG_USER[item + 1], VX_TEXT_USER_en[item], VX_TEXT_USER_jp[item]);
    }
    for (int item = 0; item < VX_MACHINE_ITEMS; ++item) {
        expect(VX_REG_MACHINE[item], VX_TEXT_MACHINE_en[item], VX_TEXT_MACHINE_jp[item]);
    }
    for (int item = 0; item < VX_SHOP_ITEMS; ++item) {
        if (item == 4 || item == 5) {  // the disk's English names are exchanged here
            EXPECT_EQ("[" + std::string(by_value.at(VX_REG_SHOP[item])->lpszName[0]) + "]",
                      VX_TEXT_SHOP_en[9 - item]);
        } else {
            expect(VX_REG_SHOP[item], VX_TEXT_SHOP_en[item], VX_TEXT_SHOP_jp[item]);
        }
    }
}

TEST(ContractItemsTest, ACProgramSeesTheSameData) {
    EXPECT_STREQ(ContractItemsSeenFromC(2), "SYSEIGYONMN");
}

TEST(ContractItemsTest, TheHeadingsAreEnglishBeforeTheFirstText) {
    EXPECT_EQ(VX_TEXT_USER, VX_TEXT_USER_en);
    EXPECT_EQ(VX_TEXT_MACHINE, VX_TEXT_MACHINE_en);
    EXPECT_EQ(VX_TEXT_OPTION, VX_TEXT_OPTION_en);
    EXPECT_EQ(VX_TEXT_SHOP, VX_TEXT_SHOP_en);
}

}  // namespace
