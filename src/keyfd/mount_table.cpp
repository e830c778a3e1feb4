#include <mntent.h>

#include <cstdio>
#include <cstring>

#include "keyfd/keyfd.h"
#include "registry/handles.h"
#include "registry/text.h"
#include "steps.h"

struct MountTablePolicy {
    using Type = FILE *;
    static Type None() noexcept { return nullptr; }
    static void Close(Type lpTable) noexcept { endmntent(lpTable); }
};
using AutoMountTable = AutoHandle<MountTablePolicy>;

// The entry of the key disk, or null; later entries are not looked at.
static const mntent *FindEntry(FILE *lpTable) noexcept {
    while (const mntent *lpEntry = getmntent(lpTable)) {
        TRACE_STEP(TRACE_NOTE, "Has mounted %s %s\n", lpEntry->mnt_fsname, lpEntry->mnt_dir);
        if (std::strstr(lpEntry->mnt_dir, "floppy") != nullptr) {
            TRACE_STEP(TRACE_NOTE, "FD Had mounted!");
            return lpEntry;
        }
    }
    return nullptr;
}

DWORD FindKeyDisk(char (&szFolder)[PATH_MAX]) noexcept {
    const AutoMountTable table(setmntent("/etc/mtab", "r"));
    if (!table.IsValid()) {
        TRACE_STEP(TRACE_FAILURE, "Open /etc/mtab failed!");
        return KEYFD_FAILED;
    }
    const mntent *lpEntry = FindEntry(table.Get());
    if (lpEntry == nullptr) {
        TRACE_STEP(TRACE_FAILURE, "FD Hadn't mounted!");
        return KEYFD_NOT_MOUNTED;
    }
    if (!CopyText(szFolder, lpEntry->mnt_dir)) {
        TRACE_STEP(TRACE_FAILURE, "Folder of the key disk too long : at most %d bytes",
                   PATH_MAX - 1);
        return KEYFD_FAILED;
    }
    return KEYFD_IMPORTED;
}
