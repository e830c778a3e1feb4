// The registry's store in this process's own memory, for those who may open it.
#ifndef WIN32_REGISTRY_MAPPING_H
#define WIN32_REGISTRY_MAPPING_H

#include <cstdint>
#include <memory>

#include "ntserver/messages.h"
#include "regstore/environment.h"
#include "regstore/generation.h"

namespace win32 {

class Mapping {
  public:
    // Maps the store that a hello told of. Null when this process must ask the daemon instead: it
    // is not root, lives in another PID namespace (whose process numbers would confuse the store's
    // list of readers), sees another file under that path, or the file is not on a local file
    // system.
    static std::shared_ptr<Mapping> Open(const ntserver::HelloAnswer &hello);

    bool IsOf(const ntserver::HelloAnswer &hello) const noexcept {
        return device_ == hello.data_device && inode_ == hello.data_inode;
    }
    const regstore::Environment &Store() const noexcept { return *store_; }
    const regstore::Generation &Service() const noexcept { return *service_; }

    // In a forked child: see Environment::Abandon.
    void Abandon() noexcept { store_->Abandon(); }

  private:
    Mapping() = default;

    std::unique_ptr<regstore::Environment> store_;
    std::unique_ptr<regstore::Generation> service_;
    std::uint64_t device_ = 0;
    std::uint64_t inode_ = 0;
};

}  // namespace win32

#endif  // WIN32_REGISTRY_MAPPING_H
