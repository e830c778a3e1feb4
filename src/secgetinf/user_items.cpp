// States: expecting a header (only before the first one and while one is examined), or collecting a
// value. The differences from the import: the first header decides the language, empty lines add
// nothing, a line of one byte keeps its line break, and a header that occurs again replaces the
// earlier value.
#include "user_items.h"

#include <records/customer_items.h>
#include <records/key_disk.h>

#include <cstdlib>
#include <cstring>

#include "keyfd/item_text.h"
#include "velox/user_information.h"

namespace {

// A line with its line break, and a header's name, in bytes.
constexpr std::size_t LINE_LIMIT = 1023;
constexpr std::size_t HEADER_LIMIT = 2047;
static_assert(LINE_LIMIT <= KEYDISK_MAX_LINE);
static_assert(LINE_LIMIT - 2 <= HEADER_LIMIT, "a header that fits its line fits its limit");
static_assert(CUSTOMER_ITEM_COUNT == USR_INFO_ITEM_COUNT);

struct USER_ITEMS {
    char **lplpszItems;
    LONG nResult;
    ITEM_LANGUAGE eLanguage;
    bool bFirstHeader;
    bool bCollecting;
    std::size_t dwRow;
    char szHeader[KEYDISK_MAX_LINE + 1];
    std::size_t dwValueLength;
    char szValue[KEYDISK_MAX_VALUE + 1];
};

bool Fail(USER_ITEMS *lpItems) noexcept {
    lpItems->nResult = USR_INFO_FAILED;
    return false;
}

bool IsLineBreak(char cByte) noexcept {
    return cByte == '\r' || cByte == '\n';
}

// A row that numbers its items matches whatever follows its name.
bool MatchesRow(const ITEM_ROW &row, const char *lpszName, const char *lpszHeader) noexcept {
    return std::strcmp(lpszHeader, lpszName) == 0 ||
           (row.eMatch == ITEM_NUMBERED &&
            std::strncmp(lpszHeader, lpszName, std::strlen(lpszName)) == 0);
}

bool FindRow(USER_ITEMS *lpItems) noexcept {
    for (std::size_t dwRow = 0; dwRow < CUSTOMER_ITEM_COUNT; ++dwRow) {
        const ITEM_ROW &row = CUSTOMER_ITEMS[dwRow];
        const char *lpszName = row.lpszName[lpItems->eLanguage];
        TRACE_STEP(TRACE_NOTE, "[%d] %s => %s", static_cast<int>(dwRow), lpszName,
                   lpItems->szHeader);
        if (MatchesRow(row, lpszName, lpItems->szHeader)) {
            lpItems->dwRow = dwRow;
            return true;
        }
    }
    return false;
}

// The file's first header is tried in English when it is no Japanese one.
bool FindHeader(USER_ITEMS *lpItems) noexcept {
    bool bFound = FindRow(lpItems);
    if (!bFound && lpItems->bFirstHeader) {
        lpItems->eLanguage = ITEM_ENGLISH;
        lpItems->nResult = USR_INFO_ENGLISH;
        bFound = FindRow(lpItems);
    }
    lpItems->bFirstHeader = false;
    return bFound;
}

// The collected value replaces what its row had; an empty one leaves the row null.
bool StoreValue(USER_ITEMS *lpItems) noexcept {
    char *&lpszItem = lpItems->lplpszItems[lpItems->dwRow];
    std::free(lpszItem);
    lpszItem = nullptr;
    if (lpItems->dwValueLength == 0) {
        return true;
    }
    const std::size_t dwSize = lpItems->dwValueLength + 1;
    lpszItem = static_cast<char *>(std::malloc(dwSize));
    if (lpszItem == nullptr) {
        TRACE_STEP(TRACE_MEMORY, "malloc error,malloc size:%d", static_cast<int>(dwSize));
        return Fail(lpItems);
    }
    std::memcpy(lpszItem, lpItems->szValue, dwSize);
    lpItems->dwValueLength = 0;
    return true;
}

bool AppendText(USER_ITEMS *lpItems, const char *lpText, std::size_t dwLength) noexcept {
    if (dwLength > KEYDISK_MAX_VALUE - lpItems->dwValueLength) {
        TRACE_STEP(TRACE_FAILURE, "value of %s is longer than %zu bytes", lpItems->szHeader,
                   KEYDISK_MAX_VALUE);
        return Fail(lpItems);
    }
    std::memcpy(lpItems->szValue + lpItems->dwValueLength, lpText, dwLength);
    lpItems->dwValueLength += dwLength;
    lpItems->szValue[lpItems->dwValueLength] = '\0';
    return true;
}

bool TakeValueLine(USER_ITEMS *lpItems, const ITEM_LINE &line) noexcept {
    if (line.dwLength == 0 || IsLineBreak(line.szText[0])) {
        return true;
    }
    return (lpItems->dwValueLength == 0 || AppendText(lpItems, "\n", 1)) &&
           AppendText(lpItems, line.szText, line.dwLength);
}

bool TakeHeader(USER_ITEMS *lpItems, const ITEM_LINE &line) noexcept {
    if (lpItems->bCollecting && !StoreValue(lpItems)) {
        return false;
    }
    GetItemName(line, lpItems->szHeader);
    if (!FindHeader(lpItems)) {
        TRACE_STEP(TRACE_FAILURE, "%s not exist", lpItems->szHeader);
        return Fail(lpItems);
    }
    lpItems->bCollecting = true;
    return true;
}

// dwSize bytes with the line's break, none of them zero.
bool TakeLine(USER_ITEMS *lpItems, const char *lpText, std::size_t dwSize) noexcept {
    if (dwSize > LINE_LIMIT) {
        TRACE_STEP(TRACE_FAILURE, "line of %zu bytes is longer than %zu bytes", dwSize, LINE_LIMIT);
        return Fail(lpItems);
    }
    ITEM_LINE line;
    std::memcpy(line.szText, lpText, dwSize);
    line.szText[dwSize] = '\0';
    line.dwLength = dwSize >= 2 ? StripLineEnd(line.szText) : dwSize;
    if (IsItemLine(line)) {
        return TakeHeader(lpItems, line);
    }
    if (!lpItems->bCollecting) {
        TRACE_STEP(TRACE_FAILURE, "item %s error ", lpItems->szHeader);
        return Fail(lpItems);
    }
    return TakeValueLine(lpItems, line);
}

bool TakeLines(USER_ITEMS *lpItems, const char *lpText, DWORD dwSize) noexcept {
    DWORD dwStart = 0;
    do {
        const DWORD dwEnd = SEC_Usr_GetCRLF(dwStart, lpText, dwSize);
        if (dwEnd == static_cast<DWORD>(-1)) {
            TRACE_STEP(TRACE_FAILURE, "SEC_Usr_GetCRLF() failed!!");
            return Fail(lpItems);
        }
        if (!TakeLine(lpItems, lpText + dwStart, dwEnd + 1 - dwStart)) {
            return false;
        }
        dwStart = dwEnd + 1;
    } while (dwStart < dwSize);
    return StoreValue(lpItems);
}

}  // namespace

DWORD SEC_Usr_GetCRLF(DWORD dwStartPos, const char *text, DWORD dwSize) noexcept {
    if (dwStartPos >= dwSize) {
        TRACE(TRACE_FAILURE, "dwStartPos >= dwSize,go to error!");
        return static_cast<DWORD>(-1);
    }
    DWORD dwIndex = dwStartPos;
    while (dwIndex < dwSize - 1 && !IsLineBreak(text[dwIndex])) {
        ++dwIndex;
    }
    return dwIndex;
}

LONG ReadUserItems(const char *lpText, DWORD dwSize, char **lplpszItems) noexcept {
    USER_ITEMS items;
    items.lplpszItems = lplpszItems;
    items.nResult = USR_INFO_JAPANESE;
    items.eLanguage = ITEM_JAPANESE;
    items.bFirstHeader = true;
    items.bCollecting = false;
    items.dwRow = 0;
    items.szHeader[0] = '\0';
    items.dwValueLength = 0;
    (void)TakeLines(&items, lpText, dwSize);
    return items.nResult;
}
