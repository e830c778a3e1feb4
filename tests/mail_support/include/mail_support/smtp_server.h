// A scripted SMTP server. Its stages are "TLS" (before a handshake from the first byte), "banner",
// "EHLO", "HELO", "STARTTLS", "handshake" (after STARTTLS was granted), "MAIL", "RCPT", "DATA",
// "end of data" and "QUIT". The stage of the second and later recipients is "RCPT 2" and so on.
#ifndef MAIL_SUPPORT_SMTP_SERVER_H
#define MAIL_SUPPORT_SMTP_SERVER_H

#include <mutex>
#include <string>
#include <vector>

#include "mail_support/certificates.h"
#include "mail_support/misdeed.h"
#include "mail_support/server.h"

namespace mail_support {

struct SmtpBehaviour {
    Misdeeds misdeeds = {};
    std::vector<std::string> extensions = {"SIZE 10000000", "8BITMIME"};
    const Certificate *certificate = nullptr;  // with one, STARTTLS is offered
    bool tls_from_the_first_byte = false;
    int slow_reader_milliseconds = 0;  // pause before the mail's text is read
};

struct ReceivedMail {
    std::string sender;  // with what follows it in the command
    std::vector<std::string> recipients;
    std::string text;  // without the dots of transparency
    bool encrypted = false;
};

class SmtpServer {
  public:
    explicit SmtpServer(SmtpBehaviour behaviour);

    unsigned Port() const { return server_.Port(); }
    void Stop() { server_.Stop(); }
    // What was taken over with a final 250.
    std::vector<ReceivedMail> Mails();
    std::vector<std::string> Commands();
    int Connections();

  private:
    void Talk(Channel &channel);
    bool Greet(Channel &channel);
    bool Obey(Channel &channel, const std::string &command, ReceivedMail &mail);
    bool SayHello(Channel &channel);
    bool Upgrade(Channel &channel);
    bool TakeRecipient(Channel &channel, const std::string &command, ReceivedMail &mail);
    bool TakeText(Channel &channel, ReceivedMail &mail);
    bool Respond(Channel &channel, const std::string &stage, const std::string &right_answer);

    SmtpBehaviour behaviour_;
    TlsContext tls_;
    std::mutex mutex_;
    std::vector<ReceivedMail> mails_;
    std::vector<std::string> commands_;
    int connections_ = 0;
    Server server_;  // last: its thread uses the rest
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_SMTP_SERVER_H
