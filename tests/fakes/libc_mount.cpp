// The mount table: TheLibc().mounts.
#include <mntent.h>

#include "fakes/libc.h"
#include "state.h"

using fakes::Enter;
using fakes::TheLibc;

namespace {

std::size_t next_mount = 0;
mntent entry;

}  // namespace

extern "C" FILE *__wrap_setmntent(const char *file, const char *mode) {
    if (Enter("setmntent", std::string(file) + " " + mode) != 0) {
        return nullptr;
    }
    next_mount = 0;
    ++TheLibc().open_mount_tables;
    return stdin;  // never read, only handed back
}

extern "C" mntent *__wrap_getmntent(FILE *) {
    if (next_mount == TheLibc().mounts.size()) {
        return nullptr;
    }
    fakes::Mount &mount = TheLibc().mounts[next_mount++];
    entry = {};
    entry.mnt_fsname = mount.device.data();
    entry.mnt_dir = mount.directory.data();
    return &entry;
}

extern "C" int __wrap_endmntent(FILE *) {
    Enter("endmntent");
    --TheLibc().open_mount_tables;
    return 1;
}
