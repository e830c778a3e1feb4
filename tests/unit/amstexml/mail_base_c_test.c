/* The header alone, as C, and a call through it. */
#include "velox/mail_base.h"

int IpCheckedFromC(const char *lpszText);

int IpCheckedFromC(const char *lpszText) {
    return AMBIMyIPCheck(lpszText);
}
