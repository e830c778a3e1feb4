// Whatever a mail server says: no answer may crash the session, keep it beyond its deadline, or
// bring the password into the trace. The first byte chooses protocol and protection; the rest is
// what the server says, all at once, before it closes.
#include <session/connection.h>
#include <session/conversation.h>
#include <session/deadline.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <tracelog.h>
#include <unistd.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "secret.h"

namespace {

constexpr char kAccount[] = "monitor";
constexpr char kPassword[] = "Marked-7f3a";
constexpr std::size_t kMostBytes = 100'000;  // fits into the socket

// Listens on a socket without a file and says the same words to everyone who connects.
class Server {
  public:
    Server() : listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un where = {};
        where.sun_family = AF_UNIX;
        std::memcpy(where.sun_path + 1, name_.data(), name_.size());
        const auto size =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name_.size());
        if (::bind(listener_, reinterpret_cast<const sockaddr *>(&where), size) != 0 ||
            ::listen(listener_, 16) != 0) {
            std::abort();
        }
        std::thread([this] { Serve(); }).detach();
    }

    const char *Name() const { return name_.c_str(); }
    void Prepare(std::string_view words) {
        const std::lock_guard lock(mutex_);
        words_ = words.substr(0, kMostBytes);
    }

  private:
    [[noreturn]] void Serve() {
        for (;;) {
            const int client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            {
                const std::lock_guard lock(mutex_);
                (void)::send(client, words_.data(), words_.size(), MSG_NOSIGNAL);
            }
            ::shutdown(client, SHUT_WR);
            char ignored[4096];
            while (::recv(client, ignored, sizeof ignored, 0) > 0) {
            }
            ::close(client);
        }
    }

    const std::string name_ = "velox-fuzz-" + std::to_string(::getpid());
    const int listener_;
    std::mutex mutex_;
    std::string words_;
};

Server &TheServer() {
    static auto *const server = new Server;  // its thread never ends
    return *server;
}

size_t ReadNothing(char *, size_t, size_t, void *) {
    return 0;
}

struct FreeList {
    void operator()(curl_slist *list) const noexcept { curl_slist_free_all(list); }
};

void SetMail(session::Connection &connection, curl_slist *recipients) {
    connection.Set(CURLOPT_FORBID_REUSE, 1L);
    connection.Set(CURLOPT_MAIL_FROM, "agent@server.example");
    connection.Set(CURLOPT_MAIL_RCPT, recipients);
    connection.Set(CURLOPT_UPLOAD, 1L);
    connection.Set(CURLOPT_READFUNCTION, &ReadNothing);
}

void SetLogIn(session::Connection &connection) {
    connection.Set(CURLOPT_CONNECT_ONLY, 1L);
    connection.Set(CURLOPT_USERNAME, kAccount);
    connection.Set(CURLOPT_PASSWORD, kPassword);
}

void Talk(std::uint8_t choice, std::string_view words) {
    constexpr session::Protection kProtections[] = {session::Protection::kNone,
                                                    session::Protection::kUpgradeRequired,
                                                    session::Protection::kUpgradeWhenOffered};
    const bool pop = choice % 2 != 0;
    const session::Deadline deadline(std::chrono::seconds(2));
    const amrpop::Discretion discretion(kAccount, kPassword);
    session::Conversation conversation(
        "fuzzer", "Talk", deadline,
        {pop ? amrpop::Discretion::ShowCommand : session::AsItStands,
         [&](std::string_view line) { return discretion.ShowAnswer(line); }});
    TheServer().Prepare(words);
    const std::unique_ptr<curl_slist, FreeList> recipients(
        curl_slist_append(nullptr, "centre@maintenance.example"));
    session::Connection connection({.protocol = pop ? "pop3" : "smtp",
                                    .host = "127.0.0.1",
                                    .address = "",
                                    .port = 4711,
                                    .path = "",
                                    .protection = kProtections[choice / 2 % 3],
                                    .verify = choice / 6 % 2 != 0},
                                   conversation);
    connection.Set(CURLOPT_ABSTRACT_UNIX_SOCKET, TheServer().Name());
    if (pop) {
        SetLogIn(connection);
    } else {
        SetMail(connection, recipients.get());
    }
    const CURLcode result = connection.Perform();
    if (result != CURLE_OK) {
        conversation.Complain(connection.Describe(result));
    }
    if (deadline.Elapsed() > std::chrono::seconds(5)) {
        std::abort();
    }
}

}  // namespace

void TraceLog(int, const char *, const char *, int, const char *szFormat, ...) noexcept {
    static char text[TRACELOG_MAX_TEXT];
    va_list arguments;
    va_start(arguments, szFormat);
    (void)std::vsnprintf(text, sizeof text, szFormat, arguments);
    va_end(arguments);
    if (std::strstr(text, kPassword) != nullptr) {
        std::abort();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size != 0) {
        Talk(data[0], {reinterpret_cast<const char *>(data) + 1, size - 1});
    }
    return 0;
}
