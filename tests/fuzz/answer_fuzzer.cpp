// The client's side of the protocol: a server that answers anything. Whatever comes, each function
// gives a result and stays inside its buffers, and what it says fits what it stored.
#include <ntserver/channel.h>
#include <ntserver/messages.h>
#include <ntserver/wire.h>
#include <ntwin32/registry.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using ntserver::Operation;

void Expect(bool condition) {
    if (!condition)
        std::abort();
}

// Answers every hello as a server would whose store cannot be mapped, and everything else with the
// input: as the payload of a proper frame, or as bare bytes after which the connection ends.
class Server {
  public:
    Server() {
        std::string pattern = "/tmp/velox-fuzz-XXXXXX";
        Expect(::mkdtemp(pattern.data()) != nullptr);
        ::setenv("KES_RUN", pattern.c_str(), 1);
        struct sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path_ = pattern + "/" + ntserver::kSocketName;
        std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
        listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        Expect(::bind(listener_, reinterpret_cast<struct sockaddr *>(&address), sizeof address) ==
                   0 &&
               ::listen(listener_, 8) == 0);
        thread_ = std::thread([this] { Run(); });
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server() {
        ::shutdown(listener_, SHUT_RDWR);
        thread_.detach();
        ::unlink(path_.c_str());
        ::rmdir(path_.substr(0, path_.rfind('/')).c_str());
    }

    void SetAnswer(bool framed, std::string bytes) {
        const std::scoped_lock held(lock_);
        framed_ = framed;
        answer_ = std::move(bytes);
    }

  private:
    static void Send(const ntserver::Channel &channel, const std::string &bytes) {
        (void)!::send(channel.Descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    static std::string Framed(const ntserver::Frame &request, std::string_view payload) {
        std::string bytes;
        ntserver::Encoder(&bytes).PutMessage(
            ntserver::FrameHeader{static_cast<std::uint32_t>(payload.size()),
                                  static_cast<std::uint16_t>(request.operation), request.tag});
        return bytes.append(payload);
    }
    static std::string HelloPayload() {
        ntserver::HelloAnswer answer;
        answer.version = ntserver::kProtocolVersion;
        answer.folder = "/nowhere";
        std::string payload;
        ntserver::Encoder encoder(&payload);
        encoder.Put(std::uint32_t{0});
        encoder.PutMessage(answer);
        return payload;
    }
    // False: the connection is to end.
    bool Answer(const ntserver::Channel &channel, const ntserver::Frame &request) {
        if (request.operation == Operation::kHello) {
            Send(channel, Framed(request, HelloPayload()));
            return true;
        }
        if (request.operation == Operation::kBatchChanges)
            return true;
        const std::scoped_lock held(lock_);
        Send(channel, framed_ ? Framed(request, answer_) : answer_);
        return framed_;
    }
    void Run() {
        while (true) {
            const auto socket =
                static_cast<int>(TEMP_FAILURE_RETRY(::accept(listener_, nullptr, nullptr)));
            if (socket < 0)
                return;
            ntserver::Channel channel{base::UniqueDescriptor(socket)};
            ntserver::Frame request;
            while (channel.Receive(std::chrono::seconds(10), &request) ==
                       ntserver::Transfer::kDone &&
                   Answer(channel, request)) {
            }
        }
    }

    std::string path_;
    int listener_ = -1;
    std::mutex lock_;
    bool framed_ = true;
    std::string answer_;
    std::thread thread_;
};

// A buffer of exactly so many bytes, so that a byte too many is found.
template <typename Byte>
class Buffer {
  public:
    explicit Buffer(DWORD capacity)
        : size(capacity), capacity_(capacity), bytes_(new Byte[capacity]()) {}
    Byte *Get() { return bytes_.get(); }
    void ExpectInside() const { Expect(size <= capacity_); }
    void ExpectText() const { Expect(size < capacity_ && bytes_[size] == 0); }
    DWORD size;

  private:
    DWORD capacity_;
    std::unique_ptr<Byte[]> bytes_;  // never null, as a vector's would be
};

void Query(DWORD capacity) {
    Buffer<BYTE> data(capacity);
    DWORD type = 0;
    if (RegQueryValueEx(HKEY_LOCAL_MACHINE, "V", nullptr, &type, data.Get(), &data.size) ==
        ERROR_SUCCESS)
        data.ExpectInside();
}

void EnumKey(DWORD capacity) {
    Buffer<char> name(capacity + 1);
    Buffer<char> class_text(capacity + 1);
    FILETIME time = {};
    if (RegEnumKeyEx(HKEY_LOCAL_MACHINE, 0, name.Get(), &name.size, nullptr, class_text.Get(),
                     &class_text.size, &time) == ERROR_SUCCESS) {
        name.ExpectText();
        class_text.ExpectText();
    }
}

void EnumValue(DWORD capacity) {
    Buffer<char> name(capacity + 1);
    Buffer<BYTE> data(capacity + 1);
    if (RegEnumValue(HKEY_LOCAL_MACHINE, 0, name.Get(), &name.size, nullptr, nullptr, data.Get(),
                     &data.size) == ERROR_SUCCESS) {
        name.ExpectText();
        data.ExpectInside();
    }
}

void QueryInfo(DWORD capacity) {
    Buffer<char> class_text(capacity + 1);
    DWORD number = 0;
    if (RegQueryInfoKey(HKEY_LOCAL_MACHINE, class_text.Get(), &class_text.size, nullptr, &number,
                        &number, nullptr, &number, nullptr, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS)
        class_text.ExpectText();
}

void AskServer(DWORD capacity) {
    KES_REG_SERVER_INFO info = {};
    if (KesRegQueryServer(&info) == ERROR_SUCCESS)
        Expect(::strnlen(info.szVersion, sizeof info.szVersion) < sizeof info.szVersion &&
               ::strnlen(info.szStore, sizeof info.szStore) < sizeof info.szStore);
    Buffer<char> message(capacity + 1);
    if (KesRegVerify(message.Get(), message.size) == ERROR_INVALID_DATA)
        Expect(::strnlen(message.Get(), message.size) < message.size);
}

void Change() {
    HKEY key = 0;
    DWORD disposition = 0;
    const BYTE data[] = {1, 2, 3};
    (void)RegOpenKeyEx(HKEY_LOCAL_MACHINE, "K", 0, KEY_READ, &key);
    (void)RegCreateKeyEx(HKEY_LOCAL_MACHINE, "K", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                         &disposition);
    (void)RegSetValueEx(HKEY_LOCAL_MACHINE, "V", 0, REG_BINARY, data, sizeof data);
    (void)RegDeleteValue(HKEY_LOCAL_MACHINE, "V");
    (void)RegDeleteKey(HKEY_LOCAL_MACHINE, "K");
    const KES_REG_CHANGE change = {KES_REG_SET_VALUE, REG_BINARY, "K", "V", data, sizeof data, 0};
    DWORD failed = 0;
    (void)KesRegApplyBatch(HKEY_LOCAL_MACHINE, &change, 1, &failed);
}

}  // namespace

// First byte: the function and the form of the answer; second byte: the buffers' capacity.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static Server server;
    if (size < 2)
        return 0;
    server.SetAnswer(data[0] % 2 == 0,
                     std::string(reinterpret_cast<const char *>(data) + 2, size - 2));
    const DWORD capacity = data[1];
    switch (data[0] / 2 % 6) {
        case 0:
            Query(capacity);
            break;
        case 1:
            EnumKey(capacity);
            break;
        case 2:
            EnumValue(capacity);
            break;
        case 3:
            QueryInfo(capacity);
            break;
        case 4:
            AskServer(capacity);
            break;
        default:
            Change();
            break;
    }
    return 0;
}
