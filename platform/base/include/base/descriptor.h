// A file descriptor that is closed when its owner goes out of scope.
#ifndef BASE_DESCRIPTOR_H
#define BASE_DESCRIPTOR_H

#include <cerrno>

#include <unistd.h>

namespace base {

class UniqueDescriptor {
  public:
    constexpr UniqueDescriptor() noexcept = default;
    constexpr explicit UniqueDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    UniqueDescriptor(UniqueDescriptor &&other) noexcept : descriptor_(other.Release()) {}
    UniqueDescriptor &operator=(UniqueDescriptor &&other) noexcept {
        Reset(other.Release());
        return *this;
    }
    UniqueDescriptor(const UniqueDescriptor &) = delete;
    UniqueDescriptor &operator=(const UniqueDescriptor &) = delete;
    ~UniqueDescriptor() { Reset(); }

    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int Get() const noexcept { return descriptor_; }

    int Release() noexcept {
        const int released = descriptor_;
        descriptor_ = -1;
        return released;
    }

    // Closes what is held and keeps errno: an owner that goes out of scope never hides the reason
    // of the failure that made it do so.
    void Reset(int descriptor = -1) noexcept {
        if (descriptor_ >= 0 && descriptor_ != descriptor) {
            const int saved = errno;
            ::close(descriptor_);
            errno = saved;
        }
        descriptor_ = descriptor;
    }

  private:
    int descriptor_ = -1;
};

}  // namespace base

#endif  // BASE_DESCRIPTOR_H
