// The conversion of a decoded customer file, which the import and the user-information reader
// share.
#ifndef KEYFD_DISK_TEXT_H
#define KEYFD_DISK_TEXT_H

#include <ntwin32/types.h>

enum DISK_TEXT_RESULT {
    DISK_TEXT_CONVERTED,
    DISK_TEXT_NOT_WIDENED,    // lpszWide is not set
    DISK_TEXT_NOT_SHIFT_JIS,  // lpszWide is set, lpszEuc is not
};

// Converts dwSize bytes of Shift-JIS (not terminated; up to the first zero byte) to lpszWide, with
// half-width katakana made full-width, and that to EUC-JP in lpszEuc. Both have room for
// 2 * dwSize + 1 bytes, zeroed by the caller.
[[nodiscard]] DISK_TEXT_RESULT ConvertDiskText(const char *lpDecoded, DWORD dwSize, char *lpszWide,
                                               char *lpszEuc) noexcept;

#endif  // KEYFD_DISK_TEXT_H
