#include "keyfd/heartbeat_text.h"

#include <amcrtcpy.h>

#include <cstring>

#include "keyfd/item_text.h"
#include "steps.h"

static bool Fail(HEARTBEAT_PARSER *lpParser, HEARTBEAT_ERROR eError) noexcept {
    lpParser->eError = eError;
    return false;
}

static const char *SkipBlanks(const char *lpszText) noexcept {
    return lpszText + std::strspn(lpszText, " \t");
}

// A line without its line end, in EUC-JP when it is the file's first one.
struct HEARTBEAT_LINE {
    char szText[2 * KEYDISK_MAX_LINE + 1];
    bool bConverted;  // false: the first line is no Shift-JIS; szText is the line as it stands
};

static void PrepareLine(HEARTBEAT_LINE *lpLine, const char *lpszLine, bool bFirst) noexcept {
    std::memset(lpLine, 0, sizeof *lpLine);
    const std::size_t dwLength = strnlen(lpszLine, KEYDISK_MAX_LINE);
    lpLine->bConverted = !bFirst || ecm_SJIStoEUC(lpszLine, static_cast<DWORD>(dwLength),
                                                  sizeof lpLine->szText - 1, lpLine->szText) != 0;
    if (!bFirst || !lpLine->bConverted) {
        std::memset(lpLine->szText, 0, sizeof lpLine->szText);
        std::memcpy(lpLine->szText, lpszLine, dwLength);
    }
    (void)StripLineEnd(lpLine->szText);
}

static bool TakeItem(HEARTBEAT_PARSER *lpParser, const HEARTBEAT_LINE &line) noexcept {
    if (line.bConverted && std::strcmp(line.szText, CatalogueText(KEYDISK_HEARTBEAT_ITEM)) == 0) {
        return true;
    }
    TRACE_STEP(TRACE_FAILURE, "Item name error : AMVLXHBI : %s", line.szText);
    return Fail(lpParser, HEARTBEAT_ERROR_ITEM);
}

static bool TakeValue(HEARTBEAT_PARSER *lpParser, const char *lpszLine) noexcept {
    lpParser->dwInterval = 0;
    const char *lpNext = SkipBlanks(lpszLine);
    for (; *lpNext != '\0'; ++lpNext) {
        TRACE_STEP(TRACE_FAILURE, "Value ? : AMVLXHBI : %02X", static_cast<BYTE>(*lpNext));
        if (*lpNext == ' ' || *lpNext == '\t') {
            break;
        }
        if (*lpNext < '0' || *lpNext > '9') {
            TRACE_STEP(TRACE_FAILURE, "Value error : AMVLXHBI : %s", lpszLine);
            return Fail(lpParser, HEARTBEAT_ERROR_VALUE);
        }
        lpParser->dwInterval = lpParser->dwInterval * 10 + static_cast<DWORD>(*lpNext - '0');
    }
    lpNext = SkipBlanks(lpNext);
    if (*lpNext != '\0') {
        TRACE_STEP(TRACE_FAILURE, "Value terminate error : AMVLXHBI : %s(%02X)", lpszLine,
                   static_cast<BYTE>(*lpNext));
        return Fail(lpParser, HEARTBEAT_ERROR_TERMINATE);
    }
    return true;
}

bool TakeHeartbeatLine(HEARTBEAT_PARSER *lpParser, const char *lpszLine) noexcept {
    HEARTBEAT_LINE line;
    PrepareLine(&line, lpszLine, lpParser->dwLineNumber++ == 0);
    if (*SkipBlanks(line.szText) == '\0') {
        return true;
    }
    switch (lpParser->nLines++) {
        case 0:
            return TakeItem(lpParser, line);
        case 1:
            return TakeValue(lpParser, line.szText);
        default:
            TRACE_STEP(TRACE_FAILURE, "Value Line error : AMVLXHBI");
            return Fail(lpParser, HEARTBEAT_ERROR_THIRD_LINE);
    }
}
