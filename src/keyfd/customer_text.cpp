#include "keyfd/customer_text.h"

#include <amcrtcpy.h>
#include <ntwin32/memory.h>

#include <cstdlib>

#include "keyfd/disk_text.h"
#include "keyfd/keyfd.h"
#include "steps.h"

static bool IsLineBreak(char cByte) noexcept {
    return cByte == '\r' || cByte == '\n';
}

LONG GetCRLF(DWORD dwStartPos, const char *buffer, DWORD dwSize) noexcept {
    TRACE(TRACE_NOTE, ">");
    if (dwStartPos >= dwSize) {
        TRACE(TRACE_FAILURE, "dwStartPos >= dwSize,go to error!");
        return -1;
    }
    const DWORD dwLast = dwSize - 1;
    DWORD dwIndex = dwStartPos;
    while (dwIndex < dwLast && !IsLineBreak(buffer[dwIndex])) {
        if (buffer[dwIndex] == '\0') {
            return 0;
        }
        ++dwIndex;
    }
    if (dwIndex == dwStartPos) {
        return -1;
    }
    while (dwIndex + 1 < dwLast && IsLineBreak(buffer[dwIndex + 1])) {
        ++dwIndex;
    }
    const auto nResult = static_cast<LONG>(dwIndex);
    TRACE(TRACE_NOTE, "<return %d", nResult);
    return nResult;
}

// The decoded text (dwSize bytes, not terminated) into lpszEuc by way of lpszWide; both hold
// 2 * dwSize zeroed bytes and one more, so that what the traces show ends.
static bool ConvertText(const char *lpDecoded, DWORD dwSize, char *lpszWide,
                        char *lpszEuc) noexcept {
    const DISK_TEXT_RESULT eResult = ConvertDiskText(lpDecoded, dwSize, lpszWide, lpszEuc);
    TRACE_STEP(TRACE_NOTE, "1byte-JIS:%.*s", static_cast<int>(dwSize), lpDecoded);
    if (eResult == DISK_TEXT_NOT_WIDENED) {
        TRACE_STEP(TRACE_FAILURE, "kes_AnkZen() failed!!");
        return false;
    }
    TRACE_STEP(TRACE_NOTE, "2byte-JIS:%s", lpszWide);
    if (eResult == DISK_TEXT_NOT_SHIFT_JIS) {
        TRACE_STEP(TRACE_FAILURE, "ecm_SJIStoEUC() failed!!");
        return false;
    }
    TRACE_STEP(TRACE_NOTE, "nEUC:%s", lpszEuc);
    return true;
}

bool ReadCustomerText(const char *lpszPath, CUSTOMER_TEXT *lpText) noexcept {
    AutoGlobal decoded;
    DWORD dwDecoded = 0;
    if (UUCdDeCodingFromFile(lpszPath, decoded.Put(), &dwDecoded) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "UUCdDeCodingFromFile() failed!!");
        return false;
    }
    // At most what a file of a disk may hold (KES_MAX_MEDIA_FILE).
    const auto dwSize = static_cast<DWORD>(GlobalSize(decoded.Get()));
    const std::size_t dwAllocated = 2 * static_cast<std::size_t>(dwSize) + 1;
    const AutoMemory<char> wide(static_cast<char *>(std::calloc(dwAllocated, 1)));
    if (!wide.IsValid()) {
        TRACE_STEP(TRACE_MEMORY, "hMem malloc failed!");
        return false;
    }
    lpText->text.Reset(static_cast<char *>(std::calloc(dwAllocated, 1)));
    if (!lpText->text.IsValid()) {
        TRACE_STEP(TRACE_MEMORY, "szhMem malloc failed!");
        return false;
    }
    lpText->dwSize = 2 * dwSize;
    return ConvertText(static_cast<const char *>(decoded.Get()), dwSize, wide.Get(),
                       lpText->text.Get());
}

bool WalkCustomerText(const char *lpText, DWORD dwSize, ITEM_PARSER *lpParser) noexcept {
    DWORD dwStart = 0;
    LONG nEnd = GetCRLF(0, lpText, dwSize);
    if (nEnd <= 0) {
        TRACE_STEP(TRACE_FAILURE, "GetCRLF() failed!!");
        return false;
    }
    while (nEnd > 0) {
        const auto dwNext = static_cast<DWORD>(nEnd) + 1;
        if (!TakeItemLine(lpParser, lpText + dwStart, dwNext - dwStart)) {
            return false;
        }
        dwStart = dwNext;
        nEnd = dwStart < dwSize ? GetCRLF(dwStart, lpText, dwSize) : 0;
    }
    if (nEnd < 0) {
        TRACE_STEP(TRACE_FAILURE, "GetCRLF Error!");
        return false;
    }
    return TakeItemsEnd(lpParser);
}
