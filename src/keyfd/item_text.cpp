#include "keyfd/item_text.h"

#include <cstring>
#include <initializer_list>

static std::size_t RemoveLast(char *lpszText, std::size_t dwLength, char cLast) noexcept {
    if (dwLength == 0 || lpszText[dwLength - 1] != cLast) {
        return dwLength;
    }
    lpszText[dwLength - 1] = '\0';
    return dwLength - 1;
}

std::size_t StripLineEnd(char *lpszText) noexcept {
    std::size_t dwLength = std::strlen(lpszText);
    for (const char cLast : {KEYDISK_END_MARK, '\n', '\r'}) {
        dwLength = RemoveLast(lpszText, dwLength, cLast);
    }
    return dwLength;
}

bool SetItemLine(ITEM_LINE *lpLine, const char *lpText, std::size_t dwSize) noexcept {
    const std::size_t dwLength = strnlen(lpText, dwSize);
    const bool bFits = dwLength <= KEYDISK_MAX_LINE;
    const std::size_t dwKept = bFits ? dwLength : KEYDISK_MAX_LINE;
    std::memcpy(lpLine->szText, lpText, dwKept);
    lpLine->szText[dwKept] = '\0';
    lpLine->dwLength = StripLineEnd(lpLine->szText);
    return bFits;
}

bool IsItemLine(const ITEM_LINE &line) noexcept {
    return line.szText[0] == '[' && line.szText[line.dwLength - 1] == ']';
}

void GetItemName(const ITEM_LINE &line, char (&szName)[KEYDISK_MAX_LINE + 1]) noexcept {
    const std::size_t dwLength = line.dwLength - 2;
    std::memcpy(szName, line.szText + 1, dwLength);
    szName[dwLength] = '\0';
}

static bool BeginsWith(const char *lpszName, const char *lpszStart) noexcept {
    return std::strncmp(lpszName, lpszStart, std::strlen(lpszStart)) == 0;
}

ITEM_LOOKUP FindItem(const ITEM_TABLE &table, ITEM_LANGUAGE eLanguage,
                     const char *lpszName) noexcept {
    for (const ITEM_ROW *lpRow = table.lpRows; lpRow != table.lpRows + table.dwCount; ++lpRow) {
        const char *lpszRowName = lpRow->lpszName[eLanguage];
        if (lpRow->eMatch == ITEM_WHOLE && std::strcmp(lpszName, lpszRowName) == 0) {
            return {ITEM_FOUND, lpRow};
        }
        if (lpRow->eMatch == ITEM_NUMBERED && BeginsWith(lpszName, lpszRowName)) {
            const bool bTwoBytes = std::strlen(lpszName) == std::strlen(lpszRowName) + 2;
            return {bTwoBytes ? ITEM_FOUND : ITEM_BAD_NUMBER, lpRow};
        }
        if (BeginsWith(lpszName, lpRow->lpszName[OtherLanguage(eLanguage)])) {
            return {ITEM_WRONG_LANGUAGE, lpRow};
        }
    }
    return {ITEM_UNKNOWN, nullptr};
}

ITEM_NUMBER GetItemNumber(const ITEM_ROW &row, ITEM_LANGUAGE eLanguage,
                          const char *lpszName) noexcept {
    const char *lpDigits = lpszName + std::strlen(row.lpszName[eLanguage]);
    const int nTens = static_cast<signed char>(lpDigits[0]) - '0';
    const int nOnes = static_cast<signed char>(lpDigits[1]) - '0';
    return {{lpDigits[0], lpDigits[1], '\0'}, nTens * 10 + nOnes};
}
