// A file of a removable medium, open for reading.
#ifndef WIN32_FILE_H
#define WIN32_FILE_H

#include <ntwin32/types.h>

#include <cstddef>
#include <mutex>
#include <utility>

#include <base/descriptor.h>

namespace win32 {

class File {
  public:
    explicit File(base::UniqueDescriptor descriptor) noexcept
        : descriptor_(std::move(descriptor)) {}

    // Reads up to `size` bytes and stores their number; gives a Win32 error code. Once a read has
    // failed at the limit every later one fails too.
    DWORD Read(void *buffer, std::size_t size, std::size_t *count) noexcept;

  private:
    bool IsAtEnd() const noexcept;

    std::mutex mutex_;  // keeps one position, whatever threads read
    base::UniqueDescriptor descriptor_;
    std::size_t position_ = 0;
};

}  // namespace win32

#endif  // WIN32_FILE_H
