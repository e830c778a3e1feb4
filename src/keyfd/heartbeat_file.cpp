// The last stage of the import: the interval of the optional heart-beat file.
#include <amcrtcpy.h>
#include <ntwin32/registry.h>

#include "keyfd/disk_lines.h"
#include "keyfd/heartbeat_text.h"
#include "keyfd/keyfd.h"
#include "registry/keys.h"
#include "steps.h"

static bool WalkHeartbeatFile(DISK_LINES *lpLines, HEARTBEAT_PARSER *lpParser) noexcept {
    DISK_LINE_RESULT eResult = NextDiskLine(lpLines);
    while (eResult == DISK_LINE_READ) {
        if (!TakeHeartbeatLine(lpParser, lpLines->szText)) {
            return false;
        }
        eResult = NextDiskLine(lpLines);
    }
    return eResult == DISK_LINE_END;
}

static DWORD StoreInterval(DWORD dwInterval) noexcept {
    if (AMACRERegCreateKey(HKEY_LOCAL_MACHINE, VLX_KEY_HEARTBEAT) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "CreateKey " VLX_KEY_HEARTBEAT " Error7!");
        return KEYFD_FAILED;
    }
    if (AMACRERegWriteDword(HKEY_LOCAL_MACHINE, VLX_KEY_HEARTBEAT, "HBINTERVAL", dwInterval) ==
        FALSE) {
        TRACE_STEP(TRACE_FAILURE, "WriteDword HBINTERVAL Error4!\n");
        return KEYFD_FAILED;
    }
    return KEYFD_IMPORTED;
}

DWORD ImportHeartbeatFile(const char *lpszPath) noexcept {
    DISK_LINES lines = {{},
                        "GetFileLine AMVLXHBI Error1!",
                        "GetFileLine AMVLXHBI Error2!",
                        "GetFileLine AMVLXHBI Error3!",
                        false,
                        {}};
    if (!OpenDiskLines(&lines, lpszPath)) {
        TRACE_STEP(TRACE_FAILURE, "CreateFile AMVLXHBI Error!");
        return KEYFD_IMPORTED;
    }
    HEARTBEAT_PARSER parser = HEARTBEAT_START;
    if (!WalkHeartbeatFile(&lines, &parser)) {
        return KEYFD_FAILED;
    }
    lines.file.Reset();
    return StoreInterval(parser.dwInterval);
}
