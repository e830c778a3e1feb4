// The items of a key disk's address file, in the order of its item table.
#ifndef RECORDS_ADDRESS_ITEMS_H
#define RECORDS_ADDRESS_ITEMS_H

#include <records/item_row.h>

// Each row stands below its Japanese name in UTF-8, of which a test makes the EUC-JP bytes.
// clang-format off
inline constexpr ITEM_ROW ADDRESS_ITEMS[] = {
    // メールアドレス
    {{"E-MAIL", "\xA5\xE1\xA1\xBC\xA5\xEB\xA5\xA2\xA5\xC9\xA5\xEC\xA5\xB9"},
     ITEM_WHOLE, REG_SZ, "MailAdrs"},
    // 電話番号
    {{"PHONENO", "\xC5\xC5\xCF\xC3\xC8\xD6\xB9\xE6"},
     ITEM_WHOLE, REG_SZ, "PhoneNo"},
    // エラーリプライアドレス
    {{"ERROR-REPLY",
      "\xA5\xA8\xA5\xE9\xA1\xBC\xA5\xEA\xA5\xD7\xA5\xE9\xA5\xA4\xA5\xA2\xA5\xC9\xA5\xEC\xA5\xB9"},
     ITEM_WHOLE, REG_SZ, "ErrorReply"},
};
// clang-format on

inline constexpr std::size_t ADDRESS_ITEM_COUNT = sizeof ADDRESS_ITEMS / sizeof ADDRESS_ITEMS[0];
static_assert(ADDRESS_ITEM_COUNT == 3);

inline constexpr ITEM_TABLE ADDRESS_TABLE = {ADDRESS_ITEMS, ADDRESS_ITEM_COUNT};

#endif  // RECORDS_ADDRESS_ITEMS_H
