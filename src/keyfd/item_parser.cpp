#include "keyfd/item_parser.h"

#include <amcrtcpy.h>

#include <cstring>

#include "steps.h"

void StartItems(ITEM_PARSER *lpParser, const ITEM_RULES &rules, ITEM_LANGUAGE eLanguage,
                ITEM_SINK pfnSink, void *lpContext) noexcept {
    std::memset(lpParser, 0, sizeof *lpParser);
    lpParser->lpRules = &rules;
    lpParser->eLanguage = eLanguage;
    lpParser->pfnSink = pfnSink;
    lpParser->lpContext = lpContext;
}

static bool Fail(ITEM_PARSER *lpParser, ITEM_ERROR eError) noexcept {
    lpParser->eError = eError;
    return false;
}

static bool HandOut(ITEM_PARSER *lpParser, bool bLast) noexcept {
    const ITEM_VALUE value = {lpParser->lpRow, lpParser->szNumber, lpParser->szValue, bLast};
    return lpParser->pfnSink(value, lpParser->lpContext) || Fail(lpParser, ITEM_ERROR_NOT_STORED);
}

static bool AppendToValue(ITEM_PARSER *lpParser, const char *lpText,
                          std::size_t dwLength) noexcept {
    if (dwLength > KEYDISK_MAX_VALUE - lpParser->dwValueLength) {
        TRACE_STEP(TRACE_FAILURE, "Value too long : %s line %u : over %zu bytes",
                   lpParser->lpRules->lpszFile, lpParser->dwLineNumber, KEYDISK_MAX_VALUE);
        return Fail(lpParser, ITEM_ERROR_VALUE_TOO_LONG);
    }
    std::memcpy(lpParser->szValue + lpParser->dwValueLength, lpText, dwLength);
    lpParser->dwValueLength += dwLength;
    lpParser->szValue[lpParser->dwValueLength] = '\0';
    return true;
}

static bool TakeValueLine(ITEM_PARSER *lpParser) noexcept {
    if (lpParser->eState == ITEM_STATE_START) {
        TRACE_STEP(TRACE_FAILURE, "Case 0 : itemname = FALSE");
        return Fail(lpParser, ITEM_ERROR_NO_NAME_YET);
    }
    if (lpParser->eState == ITEM_STATE_NAMED) {
        lpParser->dwValueLength = 0;
    } else if (!AppendToValue(lpParser, "\n", 1)) {
        return false;
    }
    if (!AppendToValue(lpParser, lpParser->line.szText, lpParser->line.dwLength)) {
        return false;
    }
    lpParser->eState = ITEM_STATE_VALUE;
    return true;
}

// The name between the brackets in EUC-JP. A name that does not convert becomes the empty name,
// which no row has.
static void GetEucName(const ITEM_PARSER &parser,
                       char (&szName)[2 * KEYDISK_MAX_LINE + 1]) noexcept {
    char szDiskName[KEYDISK_MAX_LINE + 1];
    GetItemName(parser.line, szDiskName);
    if (!parser.lpRules->bShiftJis) {
        std::memcpy(szName, szDiskName, sizeof szDiskName);
        return;
    }
    std::memset(szName, 0, sizeof szName);
    const auto dwLength = static_cast<DWORD>(std::strlen(szDiskName));
    if (ecm_SJIStoEUC(szDiskName, dwLength, sizeof szName - 1, szName) == 0) {
        szName[0] = '\0';
    }
}

static bool RefuseName(ITEM_PARSER *lpParser, const ITEM_LOOKUP &lookup,
                       const char *lpszName) noexcept {
    if (lookup.eResult == ITEM_WRONG_LANGUAGE) {
        TRACE_STEP(TRACE_FAILURE, "KeyFD language error : NEED:\"%s\" <- KeyFD=\"%s\"",
                   lookup.lpRow->lpszName[lpParser->eLanguage], lpszName);
        return Fail(lpParser, ITEM_ERROR_LANGUAGE);
    }
    if (lookup.eResult == ITEM_BAD_NUMBER) {
        TRACE_STEP(TRACE_FAILURE, "Case 0 : Option Number Error!");
        return Fail(lpParser, ITEM_ERROR_NUMBER);
    }
    TRACE_STEP(TRACE_FAILURE, "Invalided item : %s ", lpszName);
    return Fail(lpParser, ITEM_ERROR_UNKNOWN);
}

static bool TakeName(ITEM_PARSER *lpParser) noexcept {
    if (lpParser->eState == ITEM_STATE_VALUE && !HandOut(lpParser, false)) {
        return false;
    }
    char szName[2 * KEYDISK_MAX_LINE + 1];
    GetEucName(*lpParser, szName);
    const ITEM_LOOKUP lookup = FindItem(lpParser->lpRules->table, lpParser->eLanguage, szName);
    if (lookup.eResult != ITEM_FOUND) {
        return RefuseName(lpParser, lookup, szName);
    }
    lpParser->lpRow = lookup.lpRow;
    lpParser->szNumber[0] = '\0';
    if (lookup.lpRow->eMatch == ITEM_NUMBERED) {
        const ITEM_NUMBER number = GetItemNumber(*lookup.lpRow, lpParser->eLanguage, szName);
        std::memcpy(lpParser->szNumber, number.szText, sizeof lpParser->szNumber);
        if (number.nValue > lpParser->nHighestNumber) {
            lpParser->nHighestNumber = number.nValue;
        }
    }
    lpParser->eState = ITEM_STATE_NAMED;
    return true;
}

bool TakeItemLine(ITEM_PARSER *lpParser, const char *lpText, std::size_t dwSize) noexcept {
    ++lpParser->dwLineNumber;
    if (!SetItemLine(&lpParser->line, lpText, dwSize)) {
        TRACE_STEP(TRACE_FAILURE, "Line too long : %s line %u : %zu bytes, at most %zu",
                   lpParser->lpRules->lpszFile, lpParser->dwLineNumber, dwSize, KEYDISK_MAX_LINE);
        return Fail(lpParser, ITEM_ERROR_LINE_TOO_LONG);
    }
    return IsItemLine(lpParser->line) ? TakeName(lpParser) : TakeValueLine(lpParser);
}

bool TakeItemsEnd(ITEM_PARSER *lpParser) noexcept {
    return lpParser->lpRow == nullptr || HandOut(lpParser, true);
}
