// The customer file's text: decoded, converted to EUC-JP, and walked line by line. Shared with
// programs that check a disk. Failures are traced in the words of the import.
#ifndef KEYFD_CUSTOMER_TEXT_H
#define KEYFD_CUSTOMER_TEXT_H

#include <keyfd/item_parser.h>
#include <ntwin32/types.h>

#include "registry/handles.h"

// EUC-JP text, zero-filled up to dwSize bytes and followed by one more zero byte.
struct CUSTOMER_TEXT {
    AutoMemory<char> text;
    DWORD dwSize;
};

// Decodes the customer file lpszPath and converts its text.
[[nodiscard]] bool ReadCustomerText(const char *lpszPath, CUSTOMER_TEXT *lpText) noexcept;

// Gives a started parser every line of the text and then the end. An unterminated last line is no
// line. False: the parser refused, or the text does not begin with a line.
[[nodiscard]] bool WalkCustomerText(const char *lpText, DWORD dwSize,
                                    ITEM_PARSER *lpParser) noexcept;

#endif  // KEYFD_CUSTOMER_TEXT_H
