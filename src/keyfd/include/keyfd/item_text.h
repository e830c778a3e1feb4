// The grammar that the key disk's files share: line ends, item lines, and the names of items. Used
// by the import and by programs that check a disk; it neither traces nor stores.
#ifndef KEYFD_ITEM_TEXT_H
#define KEYFD_ITEM_TEXT_H

#include <records/item_row.h>
#include <records/key_disk.h>

#include <cstddef>

// A line's text: at most KEYDISK_MAX_LINE bytes, which end at the first zero byte.
struct ITEM_LINE {
    char szText[KEYDISK_MAX_LINE + 1];
    std::size_t dwLength;
};

// Removes from the end of a text one end mark (1A), then one LF, then one CR, each when it is
// there. Gives the length that is left.
std::size_t StripLineEnd(char *lpszText) noexcept;

// Takes dwSize bytes (up to the first zero byte) as a line, without its line end. False: they are
// over KEYDISK_MAX_LINE; lpLine then holds what fits, so that a message can show it.
[[nodiscard]] bool SetItemLine(ITEM_LINE *lpLine, const char *lpText, std::size_t dwSize) noexcept;

// An item line begins with "[" and ends with "]", whatever is between them.
bool IsItemLine(const ITEM_LINE &line) noexcept;

// Copies the name between an item line's brackets.
void GetItemName(const ITEM_LINE &line, char (&szName)[KEYDISK_MAX_LINE + 1]) noexcept;

enum ITEM_RESULT {
    ITEM_FOUND,
    ITEM_UNKNOWN,         // no row has this name
    ITEM_WRONG_LANGUAGE,  // it begins with a row's name in the other language
    ITEM_BAD_NUMBER,      // a numbered row's name, but not exactly two bytes after it
};

struct ITEM_LOOKUP {
    ITEM_RESULT eResult;
    const ITEM_ROW *lpRow;  // null for ITEM_UNKNOWN
};

// Looks a name (EUC-JP) up row by row: the first row that either matches or shows that the disk is
// of the other language decides.
ITEM_LOOKUP FindItem(const ITEM_TABLE &table, ITEM_LANGUAGE eLanguage,
                     const char *lpszName) noexcept;

// The two bytes after a numbered row's name, as text and as a number: the first byte minus "0"
// times ten plus the second minus "0", signed and without a check for digits.
struct ITEM_NUMBER {
    char szText[3];
    int nValue;
};
ITEM_NUMBER GetItemNumber(const ITEM_ROW &row, ITEM_LANGUAGE eLanguage,
                          const char *lpszName) noexcept;

#endif  // KEYFD_ITEM_TEXT_H
