/*
 * Reads the customer file "AMVLXUSR.INF" of a key disk item by item.
 *
 * Conventions
 *  1. Results are those of each function's text; every failure is traced, source "secgetinf".
 *  2. A folder's path is in the encoding of the file system; item values are EUC-JP with "\n"
 *     between their lines.
 *  3. The array that GetUSRInfo hands out is the caller's, who gives it to FreeUSRInfo.
 *  4. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_USER_INFORMATION_H
#define VELOX_USER_INFORMATION_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Results of GetUSRInfo: the Windows identifiers of the file's language, or a failure. */
#define USR_INFO_JAPANESE 1041
#define USR_INFO_ENGLISH 1033
#define USR_INFO_NOT_OPENED 1
#define USR_INFO_FAILED 2

/* Number of items, and the index of each in the array. Items marked "Japanese only" have no header
   in an English file. */
#define USR_INFO_ITEM_COUNT 27
enum USR_INFO_ITEM {
    USR_INFO_CONTRACT = 0,             /* customer attribute */
    USR_INFO_USER_NAME = 1,            /* customer name (in kana) */
    USR_INFO_USER_NAME_KANJI = 2,      /* customer name (in kanji), Japanese only */
    USR_INFO_USER_DIVISION = 3,        /* department */
    USR_INFO_USER_ZIPCODE = 4,         /* postal code */
    USR_INFO_USER_ADDRESS = 5,         /* address (in kana) */
    USR_INFO_USER_ADDRESS_KANJI = 6,   /* address (in kanji), Japanese only */
    USR_INFO_USER_ADDRESS_DETAIL = 7,  /* address (details), Japanese only */
    USR_INFO_USER_TELNUM = 8,          /* telephone number */
    USR_INFO_USER_EMAIL = 9,           /* mail address */
    USR_INFO_USER_CONTACT = 10,        /* contact person (in kana) */
    USR_INFO_USER_CONTACT_KANJI = 11,  /* contact person (in kanji), Japanese only */
    USR_INFO_USER_SYSTEM_CD = 12,      /* user system code */
    USR_INFO_SERVER_NAME = 13,         /* server name */
    USR_INFO_N_CODE = 14,              /* device code */
    USR_INFO_SERIAL_NUMBER = 15,       /* manufacturing number */
    USR_INFO_GUARANTEE_NUMBER = 16,    /* guarantee certificate number */
    USR_INFO_OS_NAME = 17,             /* operating system name */
    USR_INFO_OS_VERSION = 18,          /* operating system version in detail */
    USR_INFO_SUB_N_CODE = 19,          /* the last of the file's sub device codes */
    USR_INFO_DEALER_NAME = 20,         /* dealer name */
    USR_INFO_DEALER_LOCAL_OFFICE = 21, /* sales representative's office */
    USR_INFO_DEALER_CONTACT = 22,      /* sales representative's name */
    USR_INFO_DEALER_TEL_NUM = 23,      /* sales representative's telephone number */
    USR_INFO_SE_NAME = 24,             /* system engineer's office */
    USR_INFO_SE_CONTACT = 25,          /* system engineer's name */
    USR_INFO_SE_TEL_NUMBER = 26        /* system engineer's telephone number */
};

/*
 * Reads the file in the folder pUsrPath, whose path may end with a slash. *puser_info, which must
 * be null or hold an older array, receives a new array of USR_INFO_ITEM_COUNT texts, null where the
 * file has no item or an empty one; an older array is released. The first header decides the file's
 * language. The file is opened by the rule for removable media (ntwin32/file.h) and may have 4 MiB.
 * Gives USR_INFO_JAPANESE or USR_INFO_ENGLISH; USR_INFO_NOT_OPENED when there is no such regular
 * file; USR_INFO_FAILED otherwise. After a failure *puser_info is null.
 */
NTWIN32_API LONG GetUSRInfo(const char *pUsrPath, char ***puser_info) NTWIN32_NOEXCEPT;

/* Releases an array of GetUSRInfo and sets *puser_info to null. Null is accepted at both levels. */
NTWIN32_API void FreeUSRInfo(char ***puser_info) NTWIN32_NOEXCEPT;

/*
 * Index of the first CR or LF at or after dwStartPos in dwSize bytes of text, or of the last byte
 * when there is none before it. -1 (as an unsigned number) when dwStartPos is not below dwSize.
 */
NTWIN32_API DWORD SEC_Usr_GetCRLF(DWORD dwStartPos, const char *text,
                                  DWORD dwSize) NTWIN32_NOEXCEPT;

/* n rounded up to a multiple of 16. */
NTWIN32_API DWORD Sec_Usr_CalcSize(DWORD n) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
