// The named steps of CheckKeyFD. Each traces for itself, under the function name "CheckKeyFD", and
// gives CheckKeyFD's result (keyfd/keyfd.h) unless its text says otherwise.
#ifndef KEYFD_STEPS_H
#define KEYFD_STEPS_H

#include <ntwin32/types.h>
#include <records/item_row.h>

#include <climits>

#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "keyfd";

#define TRACE_STEP(nLevel, ...) TRACE_AS("CheckKeyFD", (nLevel), __VA_ARGS__)

// The folder on which the key disk is mounted: the first one of the mount table whose path has
// "floppy" in it.
DWORD FindKeyDisk(char (&szFolder)[PATH_MAX]) noexcept;

DWORD ImportCustomerFile(const char *lpszPath, ITEM_LANGUAGE eLanguage) noexcept;
DWORD ImportAddressFile(const char *lpszPath, ITEM_LANGUAGE eLanguage) noexcept;
DWORD ImportHeartbeatFile(const char *lpszPath) noexcept;

#endif  // KEYFD_STEPS_H
