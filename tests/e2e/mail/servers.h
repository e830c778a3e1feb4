// Real mail servers on loopback, each configured and started for one test and ended with it. A
// server whose Debian package is missing makes the test fail and say so.
#ifndef SERVERS_H
#define SERVERS_H

#include <memory>
#include <string>

#include <mail_support/certificates.h>
#include <mail_support/process.h>
#include <support/temp_folder.h>

// A private folder that a server's own accounts may enter.
class ServerFolder {
  public:
    ServerFolder();
    std::string operator/(const std::string &name) const { return folder_ / name; }
    // Makes a folder inside that belongs to the account of the mail transfer agent.
    void MakeFolder(const std::string &name) const;
    // Writes a file inside; any account may read it.
    void Write(const std::string &name, const std::string &content) const;

  private:
    test_support::TempFolder folder_;
};

// The SMTP server Exim. It refuses the sender refused@server.example, the recipient
// refused@maintenance.example and a mail with "Subject: Refused"; what it takes, it delivers at
// once into one mailbox file.
class Exim {
  public:
    struct Settings {
        const mail_support::Certificate *certificate = nullptr;  // null: no TLS at all
        std::string gate = {};  // with a path: only while this file exists a mail is taken
    };
    static constexpr unsigned kPort = 2525;
    static constexpr unsigned kTlsPort = 4465;

    explicit Exim(const Settings &settings);

    // The content of the mailbox file once it holds this many mails.
    std::string Mailbox(std::size_t mails) const;
    // What the server wrote about itself.
    std::string Log() const;

  private:
    std::string Configuration(const Settings &settings) const;

    ServerFolder folder_;
    std::unique_ptr<mail_support::BackgroundProcess> process_;
};

// The POP3 server Dovecot, which knows one account. A log-in creates the file LogInMark().
class Dovecot {
  public:
    static constexpr unsigned kPort = 1110;
    static constexpr unsigned kTlsPort = 995;

    // Without certificate it knows no TLS.
    Dovecot(const std::string &account, const std::string &password,
            const mail_support::Certificate *certificate);

    std::string LogInMark() const { return folder_ / "logged-in"; }
    std::string Log() const;
    // The log once it tells this, or as it is when it does not in time: the server writes it beside
    // what it answers.
    std::string LogWith(const std::string &text) const;

  private:
    std::string Configuration(const mail_support::Certificate *certificate) const;

    ServerFolder folder_;
    std::unique_ptr<mail_support::BackgroundProcess> process_;
};

#endif  // SERVERS_H
