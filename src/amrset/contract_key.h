// The key of the contract data and one text value of it, for the record operations.
#ifndef AMRSET_CONTRACT_KEY_H
#define AMRSET_CONTRACT_KEY_H

#include <registry/handles.h>

#include <cstddef>

#include "velox/contract.h"

// Where a record keeps a value, and the most that is read of it. A value of less than dwLeastSize
// bytes counts as missing.
struct CONTRACT_FIELD {
    const char *lpszValue;
    std::size_t dwOffset;
    DWORD dwReadSize;
    DWORD dwLeastSize = 0;
};

// The least size of a text that must not be empty: one character and the terminator.
inline constexpr DWORD NOT_EMPTY = 2;

// Opens the contract data key for reading and writing, creating it when it cannot be opened.
// Neither failure is reported: every call on the handle then fails like that of a missing value.
void OpenContractKey(AutoRegKey *lpKey) noexcept;

// Reads a field's text into szText, which is zeroed first. False when the value is missing, larger
// than the field's read size or smaller than its least size; szText may then hold anything.
[[nodiscard]] bool QueryContractText(HKEY hKey, const CONTRACT_FIELD &field,
                                     char (&szText)[VLX_FIELD_SIZE]) noexcept;

// Reads a field into its record, which stays as it is where QueryContractText fails.
void ReadContractField(HKEY hKey, const CONTRACT_FIELD &field, void *lpRecord) noexcept;

// Writes a record's field as REG_SZ, unchecked. A field without terminator is left out and traced
// with the name of the operation.
void WriteContractField(HKEY hKey, const CONTRACT_FIELD &field, const void *lpRecord,
                        const char *szFunction) noexcept;

#endif  // AMRSET_CONTRACT_KEY_H
