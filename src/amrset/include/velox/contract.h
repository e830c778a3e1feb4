/*
 * The contract data of the Velox service: customer, machine, dealer and options, as the key-disk
 * import stores them below "SOFTWARE\XEV\VLXService\SETTING", and the lists of the set-up data
 * files.
 *
 * Conventions
 *  1. Functions that give BOOL give TRUE (1) or FALSE (0), as each text says. Missing values give
 *     empty fields; writes are not checked, because the program that calls reads back what it
 * shows.
 *  2. Pointers must not be null unless a text says otherwise. All memory is the caller's.
 *  3. A list is an array of pointers to buffers of the caller. What the array must hold at least is
 *     known only after the call, so that new programs use the functions that end in Bounded: they
 * take the array's capacity, store no more entries than that and still count all of them.
 *  4. Sizes are in bytes and count the terminating zero. Texts are EUC-JP, as they are stored.
 *  5. The set-up data files are J_vxsadm1.txt and J_vxsadm2.txt on a Japanese system, else
 *     E_vxsadm1.txt and E_vxsadm2.txt, in the folder data of the product (docs/contract-data.md).
 *     One that is no regular file or is larger than 4 MiB counts as missing.
 *  6. The functions keep no state and may be called from any thread; several values written one
 *     after another are not one transaction.
 */
#ifndef VELOX_CONTRACT_H
#define VELOX_CONTRACT_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Size of each text field of the records below. A field without terminator is not written. */
#define VLX_FIELD_SIZE 128

/* The most that is read of each value. A longer text can be stored, but reads back as empty. */
#define VLX_SIZE_TOKUINMA 51
#define VLX_SIZE_TOKUINMN 81
#define VLX_SIZE_BUNMN 61
#define VLX_SIZE_ZIPNO 8
#define VLX_SIZE_ADRSNMA 51
#define VLX_SIZE_ADRSNMN 81
#define VLX_SIZE_SHOZAINMN 41
#define VLX_SIZE_BUTEL 31
#define VLX_SIZE_MAIL 81
#define VLX_SIZE_BUTANNMA 21
#define VLX_SIZE_BUTANNMN 31
#define VLX_SIZE_USERCODE 11
#define VLX_SIZE_SYSNMN 41
#define VLX_SIZE_SYSGOKI 17
#define VLX_SIZE_GUARANTEE 17
#define VLX_SIZE_OSREV 33
#define VLX_SIZE_OSNMA 31
#define VLX_SIZE_SOCHICD 41
#define VLX_SIZE_SYSSHOPNMN 51
#define VLX_SIZE_SYSEIGYOBUNMN 61
#define VLX_SIZE_SYSEIGYONMN 41
#define VLX_SIZE_SYSEIGYOTEL 31
#define VLX_SIZE_SYSSEBU 61
#define VLX_SIZE_SYSSENMN 41
#define VLX_SIZE_SYSSETEL 31
#define VLX_SIZE_OPTCD 51

/* The buffers of the lists: one entry each. */
#define VLX_OS_NAME_SIZE 31
#define VLX_DEALER_SIZE 51
#define VLX_OPTION_SIZE 101

/* ---- Set-up data files ----------------------------------------------------------------------- */

/* The value of the environment variable LANG, or null. It stays the environment's. */
NTWIN32_API const char *GetEnvLang(void) NTWIN32_NOEXCEPT;

/* What fileflag names file 1 with; any other number names file 2. */
#define VLX_DATA_FILE_1 1
#define VLX_DATA_FILE_2 2

/*
 * Writes basepath and the name of a set-up data file into buf, which holds at least 22 bytes more
 * than basepath has. The language is that of LANG here, not the system's: Japanese when LANG begins
 * with "ja" (lower case), else English; without LANG file 1 is the English one and file 2 the
 * Japanese one. Gives 0.
 */
NTWIN32_API int GetFileByEnv(char *buf, const char *basepath, int fileflag) NTWIN32_NOEXCEPT;

/* ---- Customer -------------------------------------------------------------------------------- */

#define VLX_CUSTOMER_PERSONAL 0  /* stored as 99 */
#define VLX_CUSTOMER_CORPORATE 1 /* stored as 1 */

typedef struct VLX_USER_DATA {
    DWORD dwKind;                          /* KAISHAKBN: a VLX_CUSTOMER_ number */
    char szNameKana[VLX_FIELD_SIZE];       /* TOKUINMA */
    char szName[VLX_FIELD_SIZE];           /* TOKUINMN */
    char szDepartment[VLX_FIELD_SIZE];     /* BUNMN */
    char szPostalCode[VLX_FIELD_SIZE];     /* ZIPNO */
    char szAddressKana[VLX_FIELD_SIZE];    /* ADRSNMA */
    char szAddress[VLX_FIELD_SIZE];        /* ADRSNMN */
    char szAddressDetails[VLX_FIELD_SIZE]; /* SHOZAINMN */
    char szTelephone[VLX_FIELD_SIZE];      /* BUTEL */
    char szMail[VLX_FIELD_SIZE];           /* MAIL */
    char szContactKana[VLX_FIELD_SIZE];    /* BUTANNMA */
    char szContact[VLX_FIELD_SIZE];        /* BUTANNMN */
    char szUserCode[VLX_FIELD_SIZE];       /* USERCODE: read only, it comes from the key disk */
} VLX_USER_DATA;

static_assert(sizeof(VLX_USER_DATA) == 1540, "a number and twelve texts");
static_assert(offsetof(VLX_USER_DATA, szNameKana) == 4, "the texts follow the kind");
static_assert(offsetof(VLX_USER_DATA, szUserCode) == 1412, "user code is last");

/* Reads the customer's data. A kind other than the two stored ones reads as personal. TRUE. */
NTWIN32_API BOOL GetVlxUserSetting(VLX_USER_DATA *lpVlxUserData) NTWIN32_NOEXCEPT;

/* Writes all but the user code. A kind other than the two is stored as 0. TRUE. */
NTWIN32_API BOOL SetVlxUserSetting(const VLX_USER_DATA *lpVlxUserData) NTWIN32_NOEXCEPT;

/* ---- Machine --------------------------------------------------------------------------------- */

typedef struct VLX_MACH_DATA {
    char szServerName[VLX_FIELD_SIZE];      /* SYSNMN; when empty: the computer's name */
    char szSerialNumber[VLX_FIELD_SIZE];    /* SYSGOKI */
    char szGuaranteeNumber[VLX_FIELD_SIZE]; /* GUARANTEE */
    char szOsVersion[VLX_FIELD_SIZE];       /* OSREV */
    char szOsName[VLX_FIELD_SIZE];          /* OSNMA */
    char szDeviceCode[VLX_FIELD_SIZE];      /* SOCHICD; when missing: the hardware's product name */
} VLX_MACH_DATA;

static_assert(sizeof(VLX_MACH_DATA) == 768, "six texts");
static_assert(offsetof(VLX_MACH_DATA, szDeviceCode) == 640, "device code is last");

/* Reads the machine's data. TRUE. */
NTWIN32_API BOOL GetVlxMachSetting(VLX_MACH_DATA *lpVlxMachData) NTWIN32_NOEXCEPT;

/* Writes the machine's data. TRUE. */
NTWIN32_API BOOL SetVlxMachSetting(const VLX_MACH_DATA *lpVlxMachData) NTWIN32_NOEXCEPT;

/*
 * Lists the names of operating systems that file 1 offers: osName is an array of buffers of at
 * least VLX_OS_NAME_SIZE bytes, *osLen receives their number. The array must be large enough for
 * the file. FALSE when the product's folder is not known or file 1 is missing.
 */
NTWIN32_API BOOL GetVlxMachListData(char **osName, DWORD *osLen) NTWIN32_NOEXCEPT;

/* The same for an array of osCapacity buffers (0: osName may be null); *osLen still receives the
   number of all names. */
NTWIN32_API BOOL GetVlxMachListDataBounded(char **osName, DWORD osCapacity,
                                           DWORD *osLen) NTWIN32_NOEXCEPT;

/* ---- Dealer ---------------------------------------------------------------------------------- */

typedef struct VLX_VEND_DATA {
    char szDealer[VLX_FIELD_SIZE];             /* SYSSHOPNMN */
    char szSalesOffice[VLX_FIELD_SIZE];        /* SYSEIGYOBUNMN */
    char szSalesName[VLX_FIELD_SIZE];          /* SYSEIGYONMN */
    char szSalesTelephone[VLX_FIELD_SIZE];     /* SYSEIGYOTEL */
    char szEngineerDepartment[VLX_FIELD_SIZE]; /* SYSSEBU */
    char szEngineerName[VLX_FIELD_SIZE];       /* SYSSENMN */
    char szEngineerTelephone[VLX_FIELD_SIZE];  /* SYSSETEL */
} VLX_VEND_DATA;

static_assert(sizeof(VLX_VEND_DATA) == 896, "seven texts");
static_assert(offsetof(VLX_VEND_DATA, szEngineerTelephone) == 768, "in their order");

/*
 * Reads the dealer's data. On a Japanese system vendData, an array of buffers of at least
 * VLX_DEALER_SIZE bytes, receives the dealers that file 2 lists and *vendLen their number; on any
 * other system file 2 is not read and the number is 0. FALSE when the product's folder is not known
 * or a Japanese system has no file 2; the record is untouched or empty then.
 */
NTWIN32_API BOOL GetVlxVendSetting(VLX_VEND_DATA *lpVlxVendData, char **vendData,
                                   DWORD *vendLen) NTWIN32_NOEXCEPT;

/* The same for an array of vendCapacity buffers (0: vendData may be null); *vendLen still receives
   the number of all dealers. */
NTWIN32_API BOOL GetVlxVendSettingBounded(VLX_VEND_DATA *lpVlxVendData, char **vendData,
                                          DWORD vendCapacity, DWORD *vendLen) NTWIN32_NOEXCEPT;

/* Writes the dealer's data. TRUE. */
NTWIN32_API BOOL SetVlxVendSetting(const VLX_VEND_DATA *lpVlxVendData) NTWIN32_NOEXCEPT;

/* ---- Options --------------------------------------------------------------------------------- */

/* The numbers of option kinds on a Japanese system and on any other. */
#define VLX_OPTION_KINDS_JAPANESE 13
#define VLX_OPTION_KINDS_OTHER 7

/* Where reading of stored options ends, whatever OPTCDN says. */
#define VLX_MAX_OPTIONS 9999

typedef struct VLX_OPTION_KIND {
    uint64_t qwCaller;       /* the caller's own; neither read nor written */
    const char *lpszHeading; /* the heading line of the kind's section, given by the caller */
    char **lplpItems;        /* array of buffers of at least VLX_OPTION_SIZE bytes */
    DWORD dwItems;           /* receives the number of items */
} VLX_OPTION_KIND;

static_assert(sizeof(VLX_OPTION_KIND) == 32, "four words of 64 bits");
static_assert(offsetof(VLX_OPTION_KIND, lpszHeading) == 8, "after the caller's word");
static_assert(offsetof(VLX_OPTION_KIND, lplpItems) == 16, "after the heading");
static_assert(offsetof(VLX_OPTION_KIND, dwItems) == 24, "after the items");

/* Writes the decimal text of a into buf (at least 11 bytes): "error" for a negative number. */
NTWIN32_API void itoc(int a, char *buf) NTWIN32_NOEXCEPT;

/*
 * Fills the item lists of the option kinds: OptionKind is an array of 13 entries on a Japanese
 * system, of 7 on any other. A kind whose heading is not in file 1 gets no items. FALSE when the
 * product's folder is not known or file 1 is missing.
 */
NTWIN32_API BOOL GetVlxOptKindList(VLX_OPTION_KIND *OptionKind) NTWIN32_NOEXCEPT;

/*
 * The same for an array of kindCapacity entries, each with itemCapacity item buffers (0: lplpItems
 * may be null). *kindLen receives 13 or 7; entries beyond kindCapacity are left out, entries beyond
 * that number untouched. dwItems of each entry still receives the number of all its items.
 */
NTWIN32_API BOOL GetVlxOptKindListBounded(VLX_OPTION_KIND *OptionKind, DWORD kindCapacity,
                                          DWORD itemCapacity, DWORD *kindLen) NTWIN32_NOEXCEPT;

/*
 * Lists the stored options into optionList, an array of buffers of at least VLX_OPTION_SIZE bytes:
 * each as its line of the option list of file 1 (code, blank, description), or as its bare code
 * when the list lacks it. *optionLen receives their number. FALSE when the product's folder is not
 * known or file 1 is missing; without OPTCDN TRUE with no options.
 */
NTWIN32_API BOOL GetVlxOptSetting(char **optionList, int64_t *optionLen) NTWIN32_NOEXCEPT;

/* The same for an array of optionCapacity buffers (0: optionList may be null); *optionLen still
   receives the number of all options. */
NTWIN32_API BOOL GetVlxOptSettingBounded(char **optionList, int64_t optionCapacity,
                                         int64_t *optionLen) NTWIN32_NOEXCEPT;

/*
 * Stores optionLen options, each given as its line of the option list (of which only the code is
 * stored) or as a code, and deletes the codes after them up to OPTCD99. FALSE with nothing stored
 * when optionLen is negative, the product's folder is not known or file 1 is missing.
 */
NTWIN32_API BOOL SetVlxOptSetting(const char *const *optionList,
                                  int64_t optionLen) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
