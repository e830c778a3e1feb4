// Reads a file of items line by line: one state machine for the customer file and the address file,
// whose differences are data (ITEM_RULES). Completed items go to a function of the caller; failures
// are traced in the words of the import and told as a code.
//
// States:  0 before the first item line
//          1 an item line was read, no value line yet
//          2 the value is being collected
// An item line in state 1 drops the item before it. The last item of a file is always handed out,
// in state 1 with the value that was collected last.
#ifndef KEYFD_ITEM_PARSER_H
#define KEYFD_ITEM_PARSER_H

#include <keyfd/item_text.h>
#include <ntwin32/types.h>
#include <records/address_items.h>
#include <records/customer_items.h>

struct ITEM_RULES {
    const char *lpszFile;  // for messages
    ITEM_TABLE table;
    bool bShiftJis;  // the lines are Shift-JIS: names are converted before they are looked up
};

inline constexpr ITEM_RULES CUSTOMER_RULES = {KEYDISK_CUSTOMER_FILE, CUSTOMER_TABLE, false};
inline constexpr ITEM_RULES ADDRESS_RULES = {KEYDISK_ADDRESS_FILE, ADDRESS_TABLE, true};

enum ITEM_STATE : int { ITEM_STATE_START = 0, ITEM_STATE_NAMED = 1, ITEM_STATE_VALUE = 2 };

enum ITEM_ERROR {
    ITEM_ERROR_NONE,
    ITEM_ERROR_NO_NAME_YET,  // a value line before the first item line
    ITEM_ERROR_LANGUAGE,
    ITEM_ERROR_UNKNOWN,
    ITEM_ERROR_NUMBER,
    ITEM_ERROR_LINE_TOO_LONG,
    ITEM_ERROR_VALUE_TOO_LONG,
    ITEM_ERROR_NOT_STORED,  // the caller's function refused the item
};

// A completed item. The texts are valid during the call only.
struct ITEM_VALUE {
    const ITEM_ROW *lpRow;
    const char *lpszNumber;  // of a numbered row, else empty
    const char *lpszText;    // as the file has it
    bool bLast;              // the file's last item
};

// Takes an item; false ends the parse with ITEM_ERROR_NOT_STORED.
using ITEM_SINK = bool (*)(const ITEM_VALUE &value, void *lpContext) noexcept;

struct ITEM_PARSER {
    const ITEM_RULES *lpRules;
    ITEM_LANGUAGE eLanguage;
    ITEM_SINK pfnSink;
    void *lpContext;

    ITEM_STATE eState;
    ITEM_ERROR eError;
    const ITEM_ROW *lpRow;  // null until an item was found
    char szNumber[3];
    int nHighestNumber;  // of the numbered items, 0 without one
    DWORD dwLineNumber;  // of line, from 1
    ITEM_LINE line;
    std::size_t dwValueLength;
    char szValue[KEYDISK_MAX_VALUE + 1];
};

// Sets a parser to the start of a file. The rules must outlive it.
void StartItems(ITEM_PARSER *lpParser, const ITEM_RULES &rules, ITEM_LANGUAGE eLanguage,
                ITEM_SINK pfnSink, void *lpContext) noexcept;

// The next line, dwSize bytes with or without its line end. False: the parse ends here, eError says
// why.
[[nodiscard]] bool TakeItemLine(ITEM_PARSER *lpParser, const char *lpText,
                                std::size_t dwSize) noexcept;

// The end of the file: hands out the last item, if any was found.
[[nodiscard]] bool TakeItemsEnd(ITEM_PARSER *lpParser) noexcept;

#endif  // KEYFD_ITEM_PARSER_H
