/*
 * The alert manager's base settings: which kinds of report are on, the delayed shutdown, and the
 * destinations of SNMP traps.
 *
 * Conventions
 *  1. SetBaseSetting, GetBaseSetting and GetAllBaseSetting give 0 on success and -1 on failure; the
 *     trap functions give TRUE (1) or FALSE (0). The trace says why.
 *  2. Everything lies below HKEY_LOCAL_MACHINE, "SOFTWARE\XEV\KESALERTMAN\BASESETTING". A report
 *     kind is a key below REPORT there; kinds are never created. The kind "SHUTDOWN DELAY" lies
 *     below OTHER. Kinds compare without regard to case.
 *  3. What a function hands out belongs to the caller, who releases it with the matching Free
 *     function, or piece by piece with free(). The Free functions accept null. Outputs are
 *     untouched on failure unless a function's text says otherwise.
 *  4. Pointers must not be null unless a function's text says otherwise. Texts of records end
 *     inside their arrays; they are handed on as they stand (the system stores EUC-JP).
 *  5. Several values are not written in one transaction: what was written before a failure stays.
 *  6. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_BASE_SETTING_H
#define VELOX_BASE_SETTING_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define BASE_TEXT_CAPACITY 4096
/* Capacity of one trap destination in bytes, terminator included. */
#define TRAP_DEST_CAPACITY 256

typedef struct BASE_DATA {
    char szKindName[BASE_TEXT_CAPACITY]; /* a key below REPORT, or "SHUTDOWN DELAY" */
    DWORD dwEnabled;                     /* 0 off, 1 on */
    DWORD dwShutdownTime;                /* for "SHUTDOWN DELAY" only, stored as it is given */
    char **lplpTrapDest;                 /* filled for "Manager (SNMP)" only: FreeTrapDest */
    DWORD nTrapDestCount;                /* entries of lplpTrapDest */
    char szTrapDestination[BASE_TEXT_CAPACITY]; /* stored whole, never read back */
} BASE_DATA;

static_assert(offsetof(BASE_DATA, dwEnabled) == 4096, "layout of BASE_DATA");
static_assert(offsetof(BASE_DATA, dwShutdownTime) == 4100, "layout of BASE_DATA");
static_assert(offsetof(BASE_DATA, lplpTrapDest) == 4104, "layout of BASE_DATA");
static_assert(offsetof(BASE_DATA, nTrapDestCount) == 4112, "layout of BASE_DATA");
static_assert(offsetof(BASE_DATA, szTrapDestination) == 4116, "layout of BASE_DATA");
static_assert(sizeof(BASE_DATA) == 8216, "layout of BASE_DATA");

/*
 * Writes the switch and the trap destination text of the kind szKindName, for "SHUTDOWN DELAY" the
 * delay before them. -1: a key is missing, or dwEnabled is neither 0 nor 1 (the delay is written
 * by then). Whether the registry took the values is not looked at.
 */
NTWIN32_API int SetBaseSetting(const BASE_DATA *pBaseData) NTWIN32_NOEXCEPT;

/*
 * Reads the kind szKindName: dwEnabled, for "SHUTDOWN DELAY" also dwShutdownTime, for
 * "Manager (SNMP)" also the trap destinations (none when they cannot be read). A missing value
 * reads as 0. -1: a key is missing. Fields that do not belong to the kind are untouched, so that a
 * list of an earlier call is not released here.
 */
NTWIN32_API int GetBaseSetting(BASE_DATA *lpBaseData) NTWIN32_NOEXCEPT;

/*
 * Reads every kind below REPORT. *lplplpBaseData receives an array of *len + 1 pointers to single
 * records, of which the last is "SHUTDOWN DELAY", and a null pointer behind them. A kind that
 * cannot be read stays in the array with zeros. -1: REPORT cannot be read, or there is no memory.
 */
NTWIN32_API int GetAllBaseSetting(BASE_DATA ***lplplpBaseData, DWORD *len) NTWIN32_NOEXCEPT;

/* Releases what GetAllBaseSetting handed out, trap lists included. */
NTWIN32_API void FreeBaseSettings(BASE_DATA **lplpBaseData) NTWIN32_NOEXCEPT;

/*
 * Reads the SNMP trap destinations in the order in which they were written. *lplplpTrapDest
 * receives an array of *count pointers to single texts of TRAP_DEST_CAPACITY bytes, and a null
 * pointer behind them. FALSE: the key is missing, a value cannot be read or has more than 255
 * bytes, or there is no memory.
 */
NTWIN32_API DWORD TrapDestRead(DWORD *count, char ***lplplpTrapDest) NTWIN32_NOEXCEPT;

/* Releases what TrapDestRead handed out, also after DelDest has shortened the list. */
NTWIN32_API void FreeTrapDest(char **lplpTrapDest) NTWIN32_NOEXCEPT;

/*
 * TrapDestRead into the caller's buffers of TRAP_DEST_CAPACITY bytes. The array must have a buffer
 * for every destination; GetTrapDestBounded asks for no such promise.
 */
NTWIN32_API DWORD GetTrapDest(DWORD *count, char **lplpTrapDest) NTWIN32_NOEXCEPT;

/*
 * GetTrapDest for an array of dwCapacity buffers (null with a capacity of 0): at most that many
 * destinations are copied and *count receives how many. The result is the number of destinations,
 * which may be larger, or -1 on failure. Its trace records are those of GetTrapDest.
 */
NTWIN32_API LONG GetTrapDestBounded(DWORD *count, char **lplpTrapDest,
                                    DWORD dwCapacity) NTWIN32_NOEXCEPT;

/*
 * Replaces the SNMP trap destinations by the nCount texts of lplpTrapDest (0 or less: by none).
 * FALSE: a text is null or has more than 255 bytes (nothing is changed then), the key cannot be
 * created (the old list is gone then), or a value is refused (those before it are written then).
 */
NTWIN32_API DWORD SetTrapDest(LONG nCount, char **lplpTrapDest) NTWIN32_NOEXCEPT;

/*
 * Drops every entry that equals lpTrapDest, without regard to case, from a list in memory and
 * stores the number kept in *nCount. Later texts are copied into the buffers of the dropped ones;
 * the pointers stay where they are. Always TRUE.
 */
NTWIN32_API DWORD DelDest(DWORD *nCount, const char *lpTrapDest,
                          char **lplpTrapDest) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
