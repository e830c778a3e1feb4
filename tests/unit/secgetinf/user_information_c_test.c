/* The header alone, as C, and a call through it. */
#include "velox/user_information.h"

LONG GetUSRInfoFromC(const char *pUsrPath, char ***puser_info);

LONG GetUSRInfoFromC(const char *pUsrPath, char ***puser_info) {
    const LONG lResult = GetUSRInfo(pUsrPath, puser_info);
    FreeUSRInfo(puser_info);
    return lResult;
}
