// The host's key for stored passwords.
#ifndef AGENT_PASSWORD_KEY_H
#define AGENT_PASSWORD_KEY_H

#include <sodium.h>

namespace agent {

// A key in memory, wiped when it goes.
class PasswordKey {
  public:
    PasswordKey() = default;
    ~PasswordKey() { sodium_memzero(bytes_, sizeof bytes_); }
    PasswordKey(const PasswordKey &) = delete;
    PasswordKey &operator=(const PasswordKey &) = delete;

    const unsigned char *Bytes() const { return bytes_; }

    // Reads <state>/ras.key. False when it is absent, no regular file, of another size, or open to
    // anybody but its owner.
    bool Load();
    // Load(); a key that is absent is made first. Of several processes that make it at once one
    // succeeds, and all use its key. An existing file is never replaced.
    bool LoadOrMake();

  private:
    bool Read(const char *path);

    unsigned char bytes_[crypto_secretbox_KEYBYTES] = {};
};

}  // namespace agent

#endif  // AGENT_PASSWORD_KEY_H
