// The daemon's socket: made with its mode, in the place of one that nobody serves any more.
#ifndef NTSERVER_LISTENER_H
#define NTSERVER_LISTENER_H

#include <string>

#include <sys/types.h>

#include "base/descriptor.h"

namespace ntserver {

class Listener {
  public:
    Listener() = default;
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    // Removes the socket, if it is still the one that was made.
    ~Listener();

    // Makes the socket in a folder: owner root, group "kes" where there is one, mode 0660. Fails
    // when somebody answers there, or something that is no socket has its name.
    bool Open(const std::string &folder, std::string *problem);

    int Descriptor() const noexcept { return socket_.Get(); }

  private:
    bool Bind(std::string *problem);

    std::string path_;
    base::UniqueDescriptor lock_;
    base::UniqueDescriptor socket_;
    bool made_ = false;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

}  // namespace ntserver

#endif  // NTSERVER_LISTENER_H
