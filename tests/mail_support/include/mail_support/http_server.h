// A scripted HTTP server that takes one request a connection. Its stages are "TLS" (before a
// handshake from the first byte), "connected", "head" (the request's head is read) and "answer".
#ifndef MAIL_SUPPORT_HTTP_SERVER_H
#define MAIL_SUPPORT_HTTP_SERVER_H

#include <mutex>
#include <string>
#include <vector>

#include "mail_support/certificates.h"
#include "mail_support/misdeed.h"
#include "mail_support/server.h"

namespace mail_support {

struct HttpBehaviour {
    Misdeeds misdeeds = {};
    const Certificate *certificate = nullptr;  // with one, TLS from the first byte
    std::string answer = "HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\n\r\n";
};

struct HttpRequest {
    std::string line;
    std::vector<std::string> fields;
    std::string body;
    bool encrypted = false;
};

class HttpServer {
  public:
    explicit HttpServer(HttpBehaviour behaviour);

    unsigned Port() const { return server_.Port(); }
    void Stop() { server_.Stop(); }
    // The requests that came in whole.
    std::vector<HttpRequest> Requests();

  private:
    void Talk(Channel &channel);
    bool ReadHead(Channel &channel, HttpRequest &request) const;

    HttpBehaviour behaviour_;
    TlsContext tls_;
    std::mutex mutex_;
    std::vector<HttpRequest> requests_;
    Server server_;  // last: its thread uses the rest
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_HTTP_SERVER_H
