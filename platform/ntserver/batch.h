// A batch while it is received, and its application.
#ifndef NTSERVER_BATCH_H
#define NTSERVER_BATCH_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ntserver/messages.h"
#include "regstore/writer.h"

namespace ntserver {

class Batch {
  public:
    enum class Keep { kYes, kNo };

    // Checks the changes of one frame and keeps them; false when it is malformed. What exceeds the
    // limit of a batch is not kept: its end will be refused.
    bool Add(std::string_view payload, Keep keep);

    bool Begun() const noexcept { return begun_; }
    bool TooLarge() const noexcept { return too_large_; }
    std::uint32_t Count() const noexcept { return count_; }
    void Clear() noexcept;

    // Makes all changes below a key. On failure *failed is the index of the one that could not be
    // made, and the transaction must be given up.
    regstore::Status Apply(regstore::KeyId key, regstore::Writer &writer,
                           std::uint32_t *failed) const;

  private:
    bool begun_ = false;
    bool too_large_ = false;
    std::uint32_t count_ = 0;
    std::size_t size_ = 0;
    std::vector<std::string> frames_;
};

}  // namespace ntserver

#endif  // NTSERVER_BATCH_H
