/* The header alone, as C, and a call through it. */
#include "velox/service_info.h"

BOOL ServiceInfoCalledFromC(char **lphData, DWORD *lpdwLen);

BOOL ServiceInfoCalledFromC(char **lphData, DWORD *lpdwLen) {
    return GetVlxServiceInfo(lphData, lpdwLen);
}
