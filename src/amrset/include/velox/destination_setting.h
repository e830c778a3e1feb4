/*
 * Report destinations: named places to which the alert manager sends a report.
 *
 * Conventions
 *  1. The functions give 0 on success and a negative number on failure, as each text says; the
 *     trace says why.
 *  2. A destination is a key below "SOFTWARE\XEV\KESALERTMAN\DESTINATION\ID_LIST" that bears its
 *     id. An id has 1 to 255 bytes and no backslash; any other counts as one that does not exist.
 *  3. The kinds are "RUN COMMAND", "MANAGER (TCP_IP IN-BAND)", "MANAGER (TCP_IP OUT-OF-BAND)" and
 *     "MANAGER (SNMP)", compared without regard to case. Other destinations of the list (that of
 *     the Velox report, for example) are read by the same functions, without their address.
 *  4. Records belong to the caller and hold no memory. Pointers must not be null unless a
 *     function's text says otherwise. Texts end inside their arrays; they are handed on as they
 *     stand (the system stores EUC-JP). Passwords are stored as they are given and never traced.
 *  5. Several values are not written in one transaction: what was written before a failure stays.
 *  6. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_DESTINATION_SETTING_H
#define VELOX_DESTINATION_SETTING_H

#include <ntwin32/types.h>
#include <records/destination_data.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Does what nAction says with the destination szDestID: deletes it with all its keys (0 whether or
 * not it existed), adds it, or writes every value of an existing one anew. 0 also when the registry
 * refused a value or a key. -1: unknown action or kind; -2: the destination to modify does not
 * exist; -3: the destination to add exists.
 */
NTWIN32_API int SetDestSetting(const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;

/*
 * The writers of the four kinds, for SetDestSetting: create or overwrite the destination whatever
 * nAction and szMethod say. 0, or -1 when a key cannot be created; the last three tell nothing.
 */
NTWIN32_API int SetCmdDestSetting(const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;
NTWIN32_API void SetTcpInDestSetting(const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;
NTWIN32_API void SetTcpOutDestSetting(const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;
NTWIN32_API void SetSnmpDestSetting(const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;

/*
 * Reads the destination szDestID into the record; nAction is untouched. Fields that are not stored
 * or not of the kind are 0 or empty; an in-band or out-of-band destination without address reads as
 * "0.0.0.0", one without telephone number or password as "0". -1: one of its three keys is missing;
 * what was read before stays.
 */
NTWIN32_API int GetDestSetting(DEST_DATA *lpDestData) NTWIN32_NOEXCEPT;

/*
 * Reads every destination of the list, in the registry's order, into the records that lplpDestData
 * points at, and stores their number in *len. The array must have a record for every destination;
 * GetAllDestSettingBounded asks for no such promise. A destination that cannot be read keeps its id
 * and zeros. Always 0; without a list *len is untouched.
 */
NTWIN32_API int GetAllDestSetting(DEST_DATA **lplpDestData, DWORD *len) NTWIN32_NOEXCEPT;

/*
 * GetAllDestSetting for an array of dwCapacity records (null with a capacity of 0): at most that
 * many are read and *len receives how many. The result is the number of destinations, which may be
 * larger, or -1 when there is no list. Its trace records are those of GetAllDestSetting.
 */
NTWIN32_API LONG GetAllDestSettingBounded(DEST_DATA **lplpDestData, DWORD dwCapacity,
                                          DWORD *len) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
