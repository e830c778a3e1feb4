/*
 * The registry functions of libNTwin32: a Windows-style registry that the daemon KESntserver keeps.
 *
 * Conventions
 *  1. Results: ERROR_SUCCESS (0), or one of
 *       ERROR_FILE_NOT_FOUND       2     the key or the value does not exist
 *       ERROR_ACCESS_DENIED        5     the key to delete has sub-keys, or the caller may not
 * write ERROR_INVALID_HANDLE       6     the handle never named a key ERROR_NOT_ENOUGH_MEMORY    8
 *       ERROR_INVALID_PARAMETER    87    a null pointer that must not be null, an ill-formed access
 *                                        mask, or a limit of convention 6 exceeded
 *       ERROR_DISK_FULL            112   nothing was written; works again when there is room
 *       ERROR_BAD_PATHNAME         161   a path with an empty component
 *       ERROR_MORE_DATA            234   the buffer is too small; the size tells the needed one
 *       ERROR_NO_MORE_ITEMS        259   the index of an enumeration is past the end
 *       ERROR_REGISTRY_IO_FAILED   1016  the store or the daemon failed; nothing was written
 *       ERROR_KEY_DELETED          1018  the key that the handle names was deleted
 *       ERROR_SERVICE_NOT_ACTIVE   1062  the daemon is not running
 *       ERROR_TIMEOUT              1460  the daemon did not answer in time
 *     Output arguments are untouched on failure unless a function's text says otherwise.
 *  2. A handle is the key's id. Opening is a look-up, closing releases nothing, a handle of a
 * deleted key answers ERROR_KEY_DELETED, and a call on a closed handle still reaches its key.
 *  3. Names compare without regard to ASCII case and keep the spelling of their first writer.
 *     Sub-keys enumerate in folded alphabetical order, values in the order of their creation.
 *  4. Paths are separated by '\'. An empty or null path names the key of the handle itself; a path
 *     with a leading, trailing or doubled separator is refused.
 *  5. Access masks are checked for form (a subset of KEY_ALL_ACCESS or of the generic and maximum
 *     allowed bits, not 0) and not enforced: callers write through handles opened for reading.
 *  6. Limits: key name and value name 255 bytes, depth 512, data 1 MiB, class text 255 bytes.
 *  7. A write is on disk before the call returns ERROR_SUCCESS. Only root may write.
 *  8. Thread safety: every function may be called from any thread; after fork() the child makes its
 *     own connection.
 *  9. Capacities are in bytes and count the terminating zero where a text is handed out.
 */
#ifndef NTWIN32_REGISTRY_H
#define NTWIN32_REGISTRY_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define HKEY_LOCAL_MACHINE ((HKEY)0x80000002u)

#define REG_NONE 0u
#define REG_SZ 1u
#define REG_EXPAND_SZ 2u
#define REG_BINARY 3u
#define REG_DWORD 4u
#define REG_DWORD_BIG_ENDIAN 5u
#define REG_MULTI_SZ 7u
#define REG_QWORD 11u

#define KEY_QUERY_VALUE 0x0001u
#define KEY_SET_VALUE 0x0002u
#define KEY_CREATE_SUB_KEY 0x0004u
#define KEY_ENUMERATE_SUB_KEYS 0x0008u
#define KEY_NOTIFY 0x0010u
#define KEY_CREATE_LINK 0x0020u
#define KEY_READ 0x20019u
#define KEY_WRITE 0x20006u
#define KEY_ALL_ACCESS 0xF003Fu

#define REG_OPTION_NON_VOLATILE 0u
#define REG_CREATED_NEW_KEY 1u
#define REG_OPENED_EXISTING_KEY 2u

/* Limits of convention 6, in bytes without a terminator (depth: in keys). */
#define KES_REG_MAX_KEY_NAME 255u
#define KES_REG_MAX_VALUE_NAME 255u
#define KES_REG_MAX_DEPTH 512u
#define KES_REG_MAX_DATA 0x100000u

/*
 * Opens the existing key at lpSubKey below hKey and stores its handle in *phkResult.
 * ulOptions is reserved (any value is accepted). ERROR_FILE_NOT_FOUND when a component is absent.
 */
NTWIN32_API LONG RegOpenKeyEx(HKEY hKey, const char *lpSubKey, DWORD ulOptions, REGSAM samDesired,
                              HKEY *phkResult) NTWIN32_NOEXCEPT;

/*
 * Opens the key at lpSubKey below hKey, creating it and every missing key on the way in one durable
 * step. lpClass (may be null) is kept for new keys only. dwOptions is accepted and every key is
 * kept; lpSecurityAttributes is ignored. *lpdwDisposition (may be null) receives
 * REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY. A key that exists costs no commit.
 */
NTWIN32_API LONG RegCreateKeyEx(HKEY hKey, const char *lpSubKey, DWORD Reserved,
                                const char *lpClass, DWORD dwOptions, REGSAM samDesired,
                                const void *lpSecurityAttributes, HKEY *phkResult,
                                DWORD *lpdwDisposition) NTWIN32_NOEXCEPT;

/* RegCreateKeyEx without class, options and disposition. */
NTWIN32_API LONG RegCreateKey(HKEY hKey, const char *lpSubKey, HKEY *phkResult) NTWIN32_NOEXCEPT;

/*
 * Reads the value lpValueName (null or "": the key's default value) of hKey.
 * *lpType (may be null) receives the type. On entry *lpcbData holds the capacity of lpData, on
 * success the number of bytes of the value. With lpData null only type and size are stored.
 * ERROR_MORE_DATA when the value is larger than the capacity: *lpcbData then holds the needed size
 * and *lpType the type, and lpData is untouched. lpcbData may be null only when lpData is null.
 * Text is handed out exactly as stored: a value that was stored without terminator comes without.
 */
NTWIN32_API LONG RegQueryValueEx(HKEY hKey, const char *lpValueName, DWORD *lpReserved,
                                 DWORD *lpType, BYTE *lpData, DWORD *lpcbData) NTWIN32_NOEXCEPT;

/* Creates or replaces the value lpValueName of hKey with cbData bytes at lpData, durably. */
NTWIN32_API LONG RegSetValueEx(HKEY hKey, const char *lpValueName, DWORD Reserved, DWORD dwType,
                               const BYTE *lpData, DWORD cbData) NTWIN32_NOEXCEPT;

/*
 * Hands out the name of the sub-key number dwIndex of hKey. On entry *lpcchName is the capacity of
 * lpName with the terminator, on success the length without it; the same for lpClass and
 * *lpcchClass (both may be null). *lpftLastWriteTime (may be null) receives the time of the key's
 * last change. ERROR_NO_MORE_ITEMS past the end, ERROR_MORE_DATA when a buffer is too small.
 */
NTWIN32_API LONG RegEnumKeyEx(HKEY hKey, DWORD dwIndex, char *lpName, DWORD *lpcchName,
                              DWORD *lpReserved, char *lpClass, DWORD *lpcchClass,
                              FILETIME *lpftLastWriteTime) NTWIN32_NOEXCEPT;

/*
 * Hands out the value number dwIndex of hKey: its name (capacity and length as in RegEnumKeyEx),
 * type and data (capacity and size as in RegQueryValueEx; lpType, lpData and lpcbData may be null).
 */
NTWIN32_API LONG RegEnumValue(HKEY hKey, DWORD dwIndex, char *lpValueName, DWORD *lpcchValueName,
                              DWORD *lpReserved, DWORD *lpType, BYTE *lpData,
                              DWORD *lpcbData) NTWIN32_NOEXCEPT;

/*
 * Hands out what is known of hKey; every output may be null. Counts of sub-keys and values, longest
 * sub-key name, class and value name (bytes without terminator), largest data (bytes), time of the
 * last change. lpClass takes the class text with the capacity *lpcchClass. The security
 * descriptor's size is always 0.
 */
NTWIN32_API LONG RegQueryInfoKey(HKEY hKey, char *lpClass, DWORD *lpcchClass, DWORD *lpReserved,
                                 DWORD *lpcSubKeys, DWORD *lpcbMaxSubKeyLen, DWORD *lpcbMaxClassLen,
                                 DWORD *lpcValues, DWORD *lpcbMaxValueNameLen,
                                 DWORD *lpcbMaxValueLen, DWORD *lpcbSecurityDescriptor,
                                 FILETIME *lpftLastWriteTime) NTWIN32_NOEXCEPT;

/*
 * Deletes the key at lpSubKey below hKey with its values. ERROR_ACCESS_DENIED when it has sub-keys
 * or is the root; lpSubKey must not be null, "" names the key of the handle itself.
 */
NTWIN32_API LONG RegDeleteKey(HKEY hKey, const char *lpSubKey) NTWIN32_NOEXCEPT;

/* Deletes the value lpValueName (null or "": the default value) of hKey. */
NTWIN32_API LONG RegDeleteValue(HKEY hKey, const char *lpValueName) NTWIN32_NOEXCEPT;

/* Ends the use of a handle. Nothing is released, so that it succeeds for every handle but 0. */
NTWIN32_API LONG RegCloseKey(HKEY hKey) NTWIN32_NOEXCEPT;

/* What one change of a batch does. */
typedef enum KES_REG_OPERATION {
    KES_REG_CREATE_KEY = 1,   /* lpPath; a key that exists is no error */
    KES_REG_SET_VALUE = 2,    /* lpPath, lpValueName, dwType, lpData, cbData; creates the key */
    KES_REG_DELETE_VALUE = 3, /* lpPath, lpValueName; a value that is absent is no error */
    KES_REG_DELETE_TREE = 4   /* lpPath with everything below it; an absent key is no error */
} KES_REG_OPERATION;

/* One change of a batch. The pointers stay the caller's and are read during the call only. */
typedef struct KES_REG_CHANGE {
    DWORD dwOperation;       /* a KES_REG_OPERATION */
    DWORD dwType;            /* of the value */
    const char *lpPath;      /* below the key of the call */
    const char *lpValueName; /* null or "": the default value */
    const BYTE *lpData;
    DWORD cbData;
    DWORD dwReserved; /* 0 */
} KES_REG_CHANGE;

/*
 * Applies dwCount changes below hKey in their order as one durable transaction, whole or not at
 * all; other processes see all of them or none. On failure *lpdwFailed (may be null) receives the
 * index of the first change that could not be made, or dwCount when the commit itself failed. This
 * function is the system's own; Win32 has none like it.
 */
NTWIN32_API LONG KesRegApplyBatch(HKEY hKey, const KES_REG_CHANGE *lpChanges, DWORD dwCount,
                                  DWORD *lpdwFailed) NTWIN32_NOEXCEPT;

/* What the daemon tells of itself and of its store. Texts end with a zero byte. */
typedef struct KES_REG_SERVER_INFO {
    char szVersion[32];    /* of the daemon */
    char szStore[512];     /* folder of the store */
    uint64_t qwKeys;       /* keys in the store, the root not counted */
    uint64_t qwValues;     /* values in the store */
    uint64_t qwStoreBytes; /* size of the store's file */
    uint64_t qwFormat;     /* version of the store's format */
    DWORD dwProcessId;
    DWORD dwClients; /* connections open now */
} KES_REG_SERVER_INFO;

/* Asks the daemon about itself. The record is filled on success only. */
NTWIN32_API LONG KesRegQueryServer(KES_REG_SERVER_INFO *lpInfo) NTWIN32_NOEXCEPT;

/*
 * Has the daemon verify every record of its store, as at its start, in a child process.
 * ERROR_SUCCESS: sound. ERROR_INVALID_DATA: damaged; lpMessage (capacity cbMessage with terminator,
 * may be null) then says where. Other results: it could not be verified.
 */
NTWIN32_API LONG KesRegVerify(char *lpMessage, DWORD cbMessage) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
