#include "registry_mapping.h"

#include <algorithm>
#include <iterator>
#include <string>

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace win32 {

namespace {

// File systems whose maps and locks do not reach other machines, or whose server is a process.
constexpr unsigned long kForeignFileSystems[] = {
    NFS_SUPER_MAGIC,  SMB_SUPER_MAGIC,  CIFS_SUPER_MAGIC, SMB2_SUPER_MAGIC,
    V9FS_MAGIC,       CEPH_SUPER_MAGIC, AFS_SUPER_MAGIC,  AFS_FS_MAGIC,
    CODA_SUPER_MAGIC, NCP_SUPER_MAGIC,  FUSE_SUPER_MAGIC};

bool IsLocal(const std::string &folder) noexcept {
    struct statfs about = {};
    if (::statfs(folder.c_str(), &about) != 0)
        return false;
    // The kernel's numbers have 32 bits, whatever the width of the field.
    const auto type = static_cast<unsigned long>(about.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(kForeignFileSystems), std::end(kForeignFileSystems), type) ==
           std::end(kForeignFileSystems);
}

bool InNamespaceOf(const ntserver::HelloAnswer &hello) noexcept {
    struct stat about = {};
    return ::stat("/proc/self/ns/pid", &about) == 0 && about.st_dev == hello.pid_namespace_device &&
           about.st_ino == hello.pid_namespace_inode;
}

bool IsDataFileOf(const ntserver::HelloAnswer &hello, const struct stat &about) noexcept {
    return about.st_dev == hello.data_device && about.st_ino == hello.data_inode &&
           static_cast<std::uint64_t>(about.st_size) >= hello.data_size;
}

bool HoldsDataFileOf(const ntserver::HelloAnswer &hello, const regstore::Environment &store) {
    int descriptor = -1;
    struct stat about = {};
    return mdb_env_get_fd(store.Handle(), &descriptor) == MDB_SUCCESS &&
           ::fstat(descriptor, &about) == 0 && IsDataFileOf(hello, about);
}

}  // namespace

std::shared_ptr<Mapping> Mapping::Open(const ntserver::HelloAnswer &hello) {
    const std::string folder(hello.folder);
    const std::string data = folder + "/" + regstore::kDataFile;
    struct stat about = {};
    if (!hello.verified || ::geteuid() != 0 || !InNamespaceOf(hello) || !IsLocal(folder) ||
        ::stat(data.c_str(), &about) != 0 || !IsDataFileOf(hello, about))
        return nullptr;
    std::shared_ptr<Mapping> mapping(new Mapping);
    mapping->service_ = regstore::Generation::Open(folder, regstore::Access::kRead);
    if (mapping->service_ == nullptr)
        return nullptr;
    std::string problem;
    mapping->store_ = regstore::Environment::Open(folder, regstore::Access::kRead, &problem);
    // Once more, because the path may have changed its meaning in between.
    if (mapping->store_ == nullptr || !HoldsDataFileOf(hello, *mapping->store_))
        return nullptr;
    mapping->device_ = hello.data_device;
    mapping->inode_ = hello.data_inode;
    return mapping;
}

}  // namespace win32
