// The server's end of one connection: lines over a socket, with or without TLS. Every wait ends
// when the server is stopped.
#ifndef MAIL_SUPPORT_CHANNEL_H
#define MAIL_SUPPORT_CHANNEL_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <base/descriptor.h>
#include <openssl/ssl.h>

namespace mail_support {

class Channel {
  public:
    // stop becomes readable when the server is to end.
    Channel(base::UniqueDescriptor socket, int stop);
    Channel(const Channel &) = delete;
    Channel &operator=(const Channel &) = delete;
    ~Channel();

    // A line without its end; nothing when the client is gone or the server is stopped.
    std::optional<std::string> ReadLine();
    // That many bytes; nothing when the client is gone before, or the server is stopped.
    std::optional<std::string> Read(std::size_t size);
    bool Write(std::string_view text);
    bool StartTls(SSL_CTX *context);
    bool IsEncrypted() const { return tls_ != nullptr; }

    // Returns when the client is gone, or when the server is stopped.
    void Stall();
    // Waits this long; false when the server is stopped.
    bool Pause(int milliseconds);

  private:
    struct FreeSsl {
        void operator()(SSL *ssl) const { SSL_free(ssl); }
    };

    bool Wait(short events, int milliseconds = -1);
    // Waits as the failed TLS operation asks; false when it failed for good.
    bool WaitForTls(int result);
    // Waits for more and keeps it as unread; false at the end.
    bool ReceiveMore();
    long Receive(char *buffer, std::size_t capacity);
    long Send(std::string_view text);

    base::UniqueDescriptor socket_;
    int stop_;
    std::unique_ptr<SSL, FreeSsl> tls_;
    std::string unread_;
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_CHANNEL_H
