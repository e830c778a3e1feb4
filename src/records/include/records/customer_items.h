// The items of a key disk's customer file, in the order of its item table. The import, the
// user-information reader and the programs that check disks all walk this one table; a row's index
// is the index into the reader's array.
#ifndef RECORDS_CUSTOMER_ITEMS_H
#define RECORDS_CUSTOMER_ITEMS_H

#include <records/item_row.h>

// Each row stands below its Japanese name in UTF-8, of which a test makes the EUC-JP bytes.
// clang-format off
inline constexpr ITEM_ROW CUSTOMER_ITEMS[] = {
    // お客様属性
    {{"CONTRACT", "\xA4\xAA\xB5\xD2\xCD\xCD\xC2\xB0\xC0\xAD"},
     ITEM_WHOLE, REG_DWORD, "KAISHAKBN"},
    // お客様名称(カナ)
    {{"USER-NAME", "\xA4\xAA\xB5\xD2\xCD\xCD\xCC\xBE\xBE\xCE(\xA5\xAB\xA5\xCA)"},
     ITEM_WHOLE, REG_SZ, "TOKUINMA"},
    // お客様名称(漢字)
    {{ITEM_NOT_IN_ENGLISH, "\xA4\xAA\xB5\xD2\xCD\xCD\xCC\xBE\xBE\xCE(\xB4\xC1\xBB\xFA)"},
     ITEM_WHOLE, REG_SZ, "TOKUINMN"},
    // 部署名
    {{"USER-DIVISION", "\xC9\xF4\xBD\xF0\xCC\xBE"},
     ITEM_WHOLE, REG_SZ, "BUNMN"},
    // お客様郵便番号
    {{"USER-ZIPCODE", "\xA4\xAA\xB5\xD2\xCD\xCD\xCD\xB9\xCA\xD8\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "ZIPNO"},
    // 住所(カナ)
    {{"USER-ADDRESS", "\xBD\xBB\xBD\xEA(\xA5\xAB\xA5\xCA)"},
     ITEM_WHOLE, REG_SZ, "ADRSNMA"},
    // 住所(漢字)
    {{ITEM_NOT_IN_ENGLISH, "\xBD\xBB\xBD\xEA(\xB4\xC1\xBB\xFA)"},
     ITEM_WHOLE, REG_SZ, "ADRSNMN"},
    // 住所(詳細)
    {{ITEM_NOT_IN_ENGLISH, "\xBD\xBB\xBD\xEA(\xBE\xDC\xBA\xD9)"},
     ITEM_WHOLE, REG_SZ, "SHOZAINMN"},
    // お客様電話番号
    {{"USER-TELNUM", "\xA4\xAA\xB5\xD2\xCD\xCD\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "BUTEL"},
    // お客様メールアドレス
    {{"USER-EMAIL",
      "\xA4\xAA\xB5\xD2\xCD\xCD\xA5\xE1\xA1\xBC\xA5\xEB\xA5\xA2\xA5\xC9\xA5\xEC\xA5\xB9"},
     ITEM_WHOLE, REG_SZ, "MAIL"},
    // 担当者名(カナ)
    {{"USER-CONTACT", "\xC3\xB4\xC5\xF6\xBC\xD4\xCC\xBE(\xA5\xAB\xA5\xCA)"},
     ITEM_WHOLE, REG_SZ, "BUTANNMA"},
    // 担当者名(漢字)
    {{ITEM_NOT_IN_ENGLISH, "\xC3\xB4\xC5\xF6\xBC\xD4\xCC\xBE(\xB4\xC1\xBB\xFA)"},
     ITEM_WHOLE, REG_SZ, "BUTANNMN"},
    // ユーザシステムコード
    {{"USER-SYSTEM-CD",
      "\xA5\xE6\xA1\xBC\xA5\xB6\xA5\xB7\xA5\xB9\xA5\xC6\xA5\xE0\xA5\xB3\xA1\xBC\xA5\xC9"},
     ITEM_WHOLE, REG_SZ, "USERCODE"},
    // サーバ名称
    {{"SERVER-NAME", "\xA5\xB5\xA1\xBC\xA5\xD0\xCC\xBE\xBE\xCE"},
     ITEM_WHOLE, REG_SZ, "SYSNMN"},
    // 装置コード
    {{"N-CODE", "\xC1\xF5\xC3\xD6\xA5\xB3\xA1\xBC\xA5\xC9"},
     ITEM_WHOLE, REG_SZ, "SOCHICD"},
    // 製造番号
    {{"SERIAL-NUMBER", "\xC0\xBD\xC2\xA4\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "SYSGOKI"},
    // 保証書番号
    {{"GUARANTEE-NUMBER", "\xCA\xDD\xBE\xDA\xBD\xF1\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "GUARANTEE"},
    // OS名称
    {{"OS-NAME", "OS\xCC\xBE\xBE\xCE"},
     ITEM_WHOLE, REG_SZ, "OSNMA"},
    // OS詳細バージョン
    {{"OS-VERSION", "OS\xBE\xDC\xBA\xD9\xA5\xD0\xA1\xBC\xA5\xB8\xA5\xE7\xA5\xF3"},
     ITEM_WHOLE, REG_SZ, "OSREV"},
    // 装置コード (and a blank)
    {{"SUB-N-CODE ", "\xC1\xF5\xC3\xD6\xA5\xB3\xA1\xBC\xA5\xC9 "},
     ITEM_NUMBERED, REG_SZ, "OPTCD"},
    // 販売店名
    {{"DEALER-NAME", "\xC8\xCE\xC7\xE4\xC5\xB9\xCC\xBE"},
     ITEM_WHOLE, REG_SZ, "SYSSHOPNMN"},
    // 担当営業所属
    {{"DEALER-LOCAL-OFFICE", "\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xBD\xEA\xC2\xB0"},
     ITEM_WHOLE, REG_SZ, "SYSEIGYOBUNMN"},
    // 担当営業氏名
    {{"DEALER-CONTACT", "\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xBB\xE1\xCC\xBE"},
     ITEM_WHOLE, REG_SZ, "SYSEIGYONMN"},
    // 担当営業電話番号
    {{"DEALER-TEL-NUM", "\xC3\xB4\xC5\xF6\xB1\xC4\xB6\xC8\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "SYSEIGYOTEL"},
    // 担当SE所属
    {{"SE-NAME", "\xC3\xB4\xC5\xF6SE\xBD\xEA\xC2\xB0"},
     ITEM_WHOLE, REG_SZ, "SYSSEBU"},
    // 担当SE氏名
    {{"SE-CONTACT", "\xC3\xB4\xC5\xF6SE\xBB\xE1\xCC\xBE"},
     ITEM_WHOLE, REG_SZ, "SYSSENMN"},
    // 担当SE電話番号
    {{"SE-TEL-NUMBER", "\xC3\xB4\xC5\xF6SE\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "SYSSETEL"},
};
// clang-format on

inline constexpr std::size_t CUSTOMER_ITEM_COUNT = sizeof CUSTOMER_ITEMS / sizeof CUSTOMER_ITEMS[0];
static_assert(CUSTOMER_ITEM_COUNT == 27);

inline constexpr ITEM_TABLE CUSTOMER_TABLE = {CUSTOMER_ITEMS, CUSTOMER_ITEM_COUNT};

// The number (REG_DWORD) beside the numbered items' values: the highest option number.
#define CUSTOMER_OPTION_COUNT_VALUE "OPTCDN"

// How the customer kind is stored: what stands for the catalogue's "Corporate" and "Personal".
inline constexpr DWORD CUSTOMER_KIND_CORPORATE = 1;
inline constexpr DWORD CUSTOMER_KIND_PERSONAL = 99;

#endif  // RECORDS_CUSTOMER_ITEMS_H
