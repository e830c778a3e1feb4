// The lines of a plain text file of the key disk, through the line reader.
#ifndef KEYFD_DISK_LINES_H
#define KEYFD_DISK_LINES_H

#include <records/key_disk.h>

#include "registry/handles.h"

struct DISK_LINES {
    AutoFile file;
    const char *lpszResetMessage;  // traced when the reader cannot be reset,
    const char *lpszFirstMessage;  // the first line cannot be read,
    const char *lpszNextMessage;   // a later one cannot be read
    bool bStarted;
    // The line: up to KEYDISK_MAX_LINE bytes and a zero byte after them.
    char szText[KEYDISK_MAX_LINE + 1];
};

// Opens the file lpszPath for lines; false when it cannot be opened.
[[nodiscard]] bool OpenDiskLines(DISK_LINES *lpLines, const char *lpszPath) noexcept;

enum DISK_LINE_RESULT {
    DISK_LINE_READ,
    DISK_LINE_END,  // the file ends, or a line begins with a zero byte
    DISK_LINE_FAILED,
};
DISK_LINE_RESULT NextDiskLine(DISK_LINES *lpLines) noexcept;

#endif  // KEYFD_DISK_LINES_H
