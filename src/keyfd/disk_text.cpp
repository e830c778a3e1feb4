#include "keyfd/disk_text.h"

#include <amcrtcpy.h>

DISK_TEXT_RESULT ConvertDiskText(const char *lpDecoded, DWORD dwSize, char *lpszWide,
                                 char *lpszEuc) noexcept {
    if (kes_AnkZen(lpDecoded, dwSize, 2 * dwSize, lpszWide) == 0) {
        return DISK_TEXT_NOT_WIDENED;
    }
    return ecm_SJIStoEUC(lpszWide, 2 * dwSize, 2 * dwSize, lpszEuc) == 0 ? DISK_TEXT_NOT_SHIFT_JIS
                                                                         : DISK_TEXT_CONVERTED;
}
