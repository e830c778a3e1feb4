// The server's side of the protocol: a whole session on a real store, fed with any bytes. Whatever
// comes, the session ends with the connection, and the store stays sound.
#include <sys/socket.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "commit_queue.h"
#include "folders.h"
#include "session.h"
#include "store.h"

namespace {

using ntserver::Session;
using ntserver::Store;

// More could fill the socket with answers that nobody takes.
constexpr std::size_t kLargestInput = 4096;
constexpr int kInputsBetweenChecks = 5000;

// A store that lives as long as the program, in memory where there is such a folder.
class Service {
  public:
    Service() {
        const std::string above = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
        std::string pattern = above + "/velox-fuzz-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no folder");
        folder_ = pattern;
        folders_ = {folder_, folder_ + "/registry", folder_};
        std::filesystem::create_directories(folder_ + "/data");
        const std::string defaults = folder_ + "/data/defaults.reg";
        FILE *const file = std::fopen(defaults.c_str(), "w");
        std::fputs(
            "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"V\"=\"x\"\n",
            file);
        std::fclose(file);
        std::string problem;
        if (!ntserver::PrepareFolders(folders_, &problem))
            throw std::runtime_error(problem);
        store_ = Store::Open(
            folders_, [] { return true; }, &problem);
        if (store_ == nullptr)
            throw std::runtime_error(problem);
        commits_ = std::make_unique<ntserver::CommitQueue>(store_.get());
    }
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;
    ~Service() { std::filesystem::remove_all(folder_); }

    void Serve(base::UniqueDescriptor socket) {
        const ntserver::Service shared = {*store_, *commits_, [] { return 1U; }, ending_};
        Session(std::move(socket), shared).Run();
    }
    bool IsSound() {
        const ntserver::Verification verification =
            store_->Verify(std::chrono::minutes(1), [] { return true; });
        if (verification.soundness != ntserver::Soundness::kSound)
            std::fprintf(stderr, "the store is not sound: %s\n", verification.damage.c_str());
        return verification.soundness == ntserver::Soundness::kSound;
    }

  private:
    std::string folder_;
    ntserver::Folders folders_;
    std::unique_ptr<Store> store_;
    std::unique_ptr<ntserver::CommitQueue> commits_;
    std::atomic<bool> ending_{false};
};

void Put(std::string *bytes, std::uint32_t number) {
    bytes->append(reinterpret_cast<const char *>(&number), sizeof number);
}

// The first exchange, without which nothing else is reached.
std::string Hello() {
    std::string bytes;
    ntserver::FrameBuilder frame(&bytes, ntserver::Operation::kHello, 1);
    frame.Payload().PutMessage(
        ntserver::HelloRequest{ntserver::kMagic, ntserver::kProtocolVersion});
    frame.Finish();
    return bytes;
}

// The first byte tells the form of the rest: a hello and bare bytes, a hello and frames of which
// each is given as operation, size and payload, or bare bytes alone.
std::string ToBytes(const std::uint8_t *data, std::size_t size) {
    const std::string_view rest(reinterpret_cast<const char *>(data) + 1, size - 1);
    if (data[0] % 4 == 0)
        return std::string(rest);
    std::string bytes = Hello();
    if (data[0] % 4 == 1)
        return bytes.append(rest);
    for (std::size_t at = 0; at + 2 <= rest.size();) {
        const auto operation = static_cast<std::uint8_t>(rest[at]);
        const std::string_view payload =
            rest.substr(at + 2, static_cast<std::uint8_t>(rest[at + 1]));
        Put(&bytes, static_cast<std::uint32_t>(payload.size()));
        Put(&bytes, operation);
        bytes.append(payload);
        at += 2 + payload.size();
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static Service service;
    static int inputs = 0;
    if (size == 0 || size > kLargestInput)
        return 0;
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        std::abort();
    const base::UniqueDescriptor client(ends[0]);
    base::UniqueDescriptor server(ends[1]);
    const std::string bytes = ToBytes(data, size);
    if (::send(ends[0], bytes.data(), bytes.size(), MSG_DONTWAIT) !=
        static_cast<ssize_t>(bytes.size()))
        std::abort();
    ::shutdown(ends[0], SHUT_WR);
    service.Serve(std::move(server));
    if (++inputs % kInputsBetweenChecks == 0 && !service.IsSound())
        std::abort();
    return 0;
}
