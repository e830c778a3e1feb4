// One row of an item table: an item of a key disk under its two names, and the registry value that
// keeps it. The tables stand in records/customer_items.h and records/address_items.h.
#ifndef RECORDS_ITEM_ROW_H
#define RECORDS_ITEM_ROW_H

#include <ntwin32/registry.h>
#include <ntwin32/types.h>

#include <cstddef>

// Which of a row's names a disk uses.
enum ITEM_LANGUAGE : unsigned { ITEM_ENGLISH = 0, ITEM_JAPANESE = 1 };

inline constexpr ITEM_LANGUAGE OtherLanguage(ITEM_LANGUAGE eLanguage) noexcept {
    return eLanguage == ITEM_ENGLISH ? ITEM_JAPANESE : ITEM_ENGLISH;
}

// How a row's name is compared with the name on the disk.
enum ITEM_MATCH : unsigned {
    ITEM_WHOLE = 0,  // the two are equal
    ITEM_NUMBERED =
        1,  // the row's name, which ends in a blank, begins the disk's; a number follows
};

// The English name of an item that only Japanese disks have.
#define ITEM_NOT_IN_ENGLISH "*"

struct ITEM_ROW {
    const char *lpszName[2];  // by ITEM_LANGUAGE; the Japanese one in EUC-JP
    ITEM_MATCH eMatch;
    DWORD dwType;               // REG_SZ or REG_DWORD
    const char *lpszValueName;  // registry value; for a numbered row the number is appended
};

// A table as a parser walks it.
struct ITEM_TABLE {
    const ITEM_ROW *lpRows;
    std::size_t dwCount;
};

#endif  // RECORDS_ITEM_ROW_H
