#include "listener.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "folders.h"
#include "log.h"
#include "ntserver/protocol.h"

namespace ntserver {

namespace {

constexpr char kGroup[] = "kes";
constexpr char kLockFile[] = "ntserver.lock";
constexpr mode_t kSocketMode = 0660;
constexpr int kQueueLength = 128;

bool Fail(const std::string &path, const char *step, std::string *problem) {
    *problem = path + ": " + step + ": " + std::strerror(errno);
    return false;
}

bool ToAddress(const std::string &path, struct sockaddr_un *address, std::string *problem) {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof address->sun_path) {
        *problem = path + ": the path is too long for a socket";
        return false;
    }
    std::memcpy(address->sun_path, path.data(), path.size());
    return true;
}

base::UniqueDescriptor NewSocket() noexcept {
    return base::UniqueDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// Whether a server stands behind a socket; one whose queue is full does.
bool IsServed(const struct sockaddr_un &address) noexcept {
    const base::UniqueDescriptor socket = NewSocket();
    return socket && (::connect(socket.Get(), reinterpret_cast<const struct sockaddr *>(&address),
                                sizeof address) == 0 ||
                      errno == EAGAIN);
}

// What an earlier daemon that died left behind.
bool RemoveStale(const struct sockaddr_un &address, std::string *problem) {
    const std::string path = address.sun_path;
    struct stat about = {};
    if (::lstat(path.c_str(), &about) != 0)
        return errno == ENOENT || Fail(path, "the socket cannot be looked at", problem);
    if (!S_ISSOCK(about.st_mode)) {
        *problem = path + ": something that is no socket has the socket's name";
        return false;
    }
    if (IsServed(address)) {
        *problem = path + ": another server answers on this socket";
        return false;
    }
    if (::unlink(path.c_str()) != 0)
        return Fail(path, "the old socket cannot be removed", problem);
    Log(Priority::kNotice, "%s: removed a socket that nobody served", path.c_str());
    return true;
}

// The group's number; that of nobody in particular when there is none.
gid_t FindGroup() {
    std::vector<char> buffer(4096);
    struct group entry = {};
    struct group *found = nullptr;
    while (::getgrnam_r(kGroup, &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2);
    return found != nullptr ? found->gr_gid : static_cast<gid_t>(-1);
}

}  // namespace

Listener::~Listener() {
    struct stat about = {};
    if (made_ && ::lstat(path_.c_str(), &about) == 0 && about.st_dev == device_ &&
        about.st_ino == inode_)
        ::unlink(path_.c_str());
}

bool Listener::Open(const std::string &folder, std::string *problem) {
    path_ = folder + "/" + kSocketName;
    // Between looking and making, nobody else may do the same.
    return LockFolder(folder, kLockFile, "serves in this folder", &lock_, problem) && Bind(problem);
}

bool Listener::Bind(std::string *problem) {
    struct sockaddr_un address;
    if (!ToAddress(path_, &address, problem) || !RemoveStale(address, problem))
        return false;
    socket_ = NewSocket();
    if (!socket_)
        return Fail(path_, "no socket", problem);
    // Nobody may connect before owner and mode are right: connections are refused until listen().
    const mode_t before = ::umask(0177);
    const int bound =
        ::bind(socket_.Get(), reinterpret_cast<struct sockaddr *>(&address), sizeof address);
    ::umask(before);
    struct stat about = {};
    if (bound != 0 || ::lstat(path_.c_str(), &about) != 0)
        return Fail(path_, "the socket cannot be made", problem);
    made_ = true;
    device_ = about.st_dev;
    inode_ = about.st_ino;
    const gid_t group = FindGroup();
    if (group != static_cast<gid_t>(-1) &&
        ::chown(path_.c_str(), static_cast<uid_t>(-1), group) != 0)
        Log(Priority::kWarning, "%s: the group cannot be set: %s", path_.c_str(),
            std::strerror(errno));
    if (::chmod(path_.c_str(), kSocketMode) != 0)
        return Fail(path_, "the socket's mode cannot be set", problem);
    return ::listen(socket_.Get(), kQueueLength) == 0 || Fail(path_, "nobody can connect", problem);
}

}  // namespace ntserver
