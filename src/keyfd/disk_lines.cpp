#include "keyfd/disk_lines.h"

#include <ntwin32/file.h>

#include "keyfd/keyfd.h"
#include "steps.h"

bool OpenDiskLines(DISK_LINES *lpLines, const char *lpszPath) noexcept {
    lpLines->file.Reset(
        CreateFile(lpszPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0));
    return lpLines->file.IsValid();
}

DISK_LINE_RESULT NextDiskLine(DISK_LINES *lpLines) noexcept {
    DWORD dwPosition = 0;
    DWORD dwSize = 0;
    const bool bFirst = !lpLines->bStarted;
    lpLines->bStarted = true;
    if (bFirst && GetFileLine(READER_RESET, lpLines->szText, &dwSize, &dwPosition) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "%s", lpLines->lpszResetMessage);
        return DISK_LINE_FAILED;
    }
    dwSize = KEYDISK_MAX_LINE;
    const auto hInput = static_cast<LONG>(lpLines->file.Get());
    if (GetFileLine(hInput, lpLines->szText, &dwSize, &dwPosition) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "%s",
                   bFirst ? lpLines->lpszFirstMessage : lpLines->lpszNextMessage);
        return DISK_LINE_FAILED;
    }
    lpLines->szText[dwSize] = '\0';  // a full piece has no end of its own
    return lpLines->szText[0] == '\0' ? DISK_LINE_END : DISK_LINE_READ;
}
