// The heart-beat file's grammar: one item line, then one line with a decimal number; lines that
// hold only blanks and tabs do not count. Failures are traced in the words of the import.
#ifndef KEYFD_HEARTBEAT_TEXT_H
#define KEYFD_HEARTBEAT_TEXT_H

#include <ntwin32/types.h>

#include "registry/catalogue.h"

// The one item line: a message of the catalogue, with its brackets.
#define KEYDISK_HEARTBEAT_ITEM CATALOGUE_MESSAGE("[HEART-BEAT-INT]")

enum HEARTBEAT_ERROR {
    HEARTBEAT_ERROR_NONE,
    HEARTBEAT_ERROR_ITEM,        // the first line is not the item line
    HEARTBEAT_ERROR_VALUE,       // the value holds what is neither digit nor blank
    HEARTBEAT_ERROR_TERMINATE,   // something follows the value
    HEARTBEAT_ERROR_THIRD_LINE,  // a line after the value
};

struct HEARTBEAT_PARSER {
    DWORD dwInterval;    // 1 without a value line; wraps around above 32 bits
    DWORD dwLineNumber;  // of the line taken last, from 1
    int nLines;          // those that are not empty
    HEARTBEAT_ERROR eError;
};

// A parser before the first line.
inline constexpr HEARTBEAT_PARSER HEARTBEAT_START = {1, 0, 0, HEARTBEAT_ERROR_NONE};

// The next line (at most KEYDISK_MAX_LINE bytes, with its line end). The file's first line is
// converted from Shift-JIS before it is compared with the catalogue's item line. False: eError says
// why.
[[nodiscard]] bool TakeHeartbeatLine(HEARTBEAT_PARSER *lpParser, const char *lpszLine) noexcept;

#endif  // KEYFD_HEARTBEAT_TEXT_H
