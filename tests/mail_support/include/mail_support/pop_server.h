// A scripted POP3 server. Its stages are "TLS" (before a handshake from the first byte),
// "greeting", "CAPA", "STLS", "handshake" (after STLS was granted), "USER", "PASS", "AUTH" (the
// command), "authentication data", "APOP" and "QUIT".
#ifndef MAIL_SUPPORT_POP_SERVER_H
#define MAIL_SUPPORT_POP_SERVER_H

#include <mutex>
#include <string>
#include <vector>

#include "mail_support/certificates.h"
#include "mail_support/misdeed.h"
#include "mail_support/server.h"

namespace mail_support {

struct PopBehaviour {
    Misdeeds misdeeds = {};
    std::string greeting = "+OK ready";
    std::vector<std::string> capabilities = {"TOP", "UIDL", "USER"};
    const Certificate *certificate = nullptr;  // with one, STLS is offered
    bool tls_from_the_first_byte = false;
    std::string address = "127.0.0.1";
    unsigned port = 0;
    std::string account = "monitor";
    std::string password = "secret";
};

class PopServer {
  public:
    explicit PopServer(PopBehaviour behaviour);

    unsigned Port() const { return server_.Port(); }
    void Stop() { server_.Stop(); }
    std::vector<std::string> Commands();
    // Log-ins that were completed and ended with QUIT, and those of them that TLS protected.
    int LogIns();
    int EncryptedLogIns();

  private:
    void Talk(Channel &channel);
    bool Greet(Channel &channel);
    bool Obey(Channel &channel, const std::string &command);
    bool ListCapabilities(Channel &channel);
    bool Upgrade(Channel &channel);
    bool CheckPassword(Channel &channel, const std::string &password);
    bool Authenticate(Channel &channel, const std::string &command);
    bool EndLogIn(Channel &channel);
    bool Respond(Channel &channel, const std::string &stage, const std::string &right_answer);
    void Record(const std::string &command);

    PopBehaviour behaviour_;
    TlsContext tls_;
    std::mutex mutex_;
    std::vector<std::string> commands_;
    std::string user_;
    bool logged_in_ = false;
    int log_ins_ = 0;
    int encrypted_log_ins_ = 0;
    Server server_;  // last: its thread uses the rest
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_POP_SERVER_H
