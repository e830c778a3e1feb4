#include "servers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include <base/descriptor.h>
#include <mail_support/server.h>

using mail_support::BackgroundProcess;
using mail_support::OwnLoopbackAddress;

namespace {

constexpr uid_t kNobody = 65534;
constexpr std::chrono::seconds kPatience(60);  // for a loaded machine

void Require(bool condition, const std::string &what) {
    if (!condition)
        throw std::system_error(errno, std::generic_category(), what);
}

void RequireProgram(const std::string &program, const std::string &package) {
    if (!mail_support::ProgramExists(program))
        throw std::runtime_error(program + " is missing: install the Debian package " + package);
}

bool Answers(unsigned port) {
    const base::UniqueDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_port = htons(static_cast<std::uint16_t>(port));
    ::inet_pton(AF_INET, OwnLoopbackAddress().c_str(), &where.sin_addr);
    return ::connect(socket.Get(), reinterpret_cast<const sockaddr *>(&where), sizeof where) == 0;
}

template <typename Condition>
bool WaitFor(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// Starts a server and waits until it answers on the port.
std::unique_ptr<BackgroundProcess> StartServer(const std::vector<std::string> &command,
                                               unsigned port, const std::string &output) {
    auto process = std::make_unique<BackgroundProcess>(command, output);
    const bool answers = WaitFor([&] { return !process->IsRunning() || Answers(port); });
    if (!answers || !process->IsRunning())
        throw std::runtime_error(
            command.back() + ": the server did not start: " + test_support::ReadWholeFile(output));
    return process;
}

std::size_t CountMails(const std::string &mailbox) {
    std::size_t count = mailbox.starts_with("From ") ? 1 : 0;
    for (auto at = mailbox.find("\n\nFrom "); at != std::string::npos;
         at = mailbox.find("\n\nFrom ", at + 1))
        ++count;
    return count;
}

}  // namespace

ServerFolder::ServerFolder() {
    constexpr mode_t kEnter = S_IRWXU | S_IXGRP | S_IXOTH;
    Require(::chmod((folder_ / ".").c_str(), kEnter) == 0, "chmod");
}

void ServerFolder::MakeFolder(const std::string &name) const {
    const std::string path = folder_ / name;
    Require(::mkdir(path.c_str(), S_IRWXU) == 0, path);
    Require(::geteuid() != 0 || ::chown(path.c_str(), kNobody, kNobody) == 0, path);
}

void ServerFolder::Write(const std::string &name, const std::string &content) const {
    const std::string path = folder_.Write(name, content);
    Require(::chmod(path.c_str(), S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH) == 0, path);
}

Exim::Exim(const Settings &settings) {
    RequireProgram("/usr/sbin/exim4", "exim4-daemon-light");
    folder_.MakeFolder("spool");
    if (settings.certificate != nullptr) {
        folder_.Write("certificate.pem",
                      test_support::ReadWholeFile(settings.certificate->certificate_file));
        folder_.Write("key.pem", test_support::ReadWholeFile(settings.certificate->key_file));
    }
    folder_.Write("exim.conf", Configuration(settings));
    std::vector<std::string> command;
    // Exim drops its rights for a configuration of one's own; so it runs without any.
    if (::geteuid() == 0)
        command = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--no-new-privs"};
    command.insert(command.end(), {"/usr/sbin/exim4", "-bdf", "-C", folder_ / "exim.conf"});
    process_ = StartServer(command, kPort, folder_ / "output");
}

std::string Exim::Configuration(const Settings &settings) const {
    const std::string spool = folder_ / "spool";
    const std::string account = std::to_string(::geteuid() == 0 ? kNobody : ::geteuid());
    std::string text = "spool_directory = " + spool + "\nlog_file_path = " + spool +
                       "/log-%s\npid_file_path = " + spool + "/exim.pid\nexim_user = " + account +
                       "\nexim_group = " + account + "\nlocal_interfaces = <; " +
                       OwnLoopbackAddress() + "." + std::to_string(kPort) + " ; " +
                       OwnLoopbackAddress() + "." + std::to_string(kTlsPort) + "\n";
    if (settings.certificate != nullptr)
        text += "tls_on_connect_ports = " + std::to_string(kTlsPort) +
                "\ntls_advertise_hosts = *\ntls_certificate = " + (folder_ / "certificate.pem") +
                "\ntls_privatekey = " + (folder_ / "key.pem") + "\n";
    else
        text += "tls_advertise_hosts =\n";
    text += R"(primary_hostname = mail.test.example
deliver_drop_privilege = true
keep_environment =
daemon_startup_retries = 0
host_lookup =
rfc1413_query_timeout = 0s
acl_smtp_mail = acl_mail
acl_smtp_rcpt = acl_rcpt
acl_smtp_data = acl_data
begin acl
acl_mail:
  deny message = this sender is refused
       senders = refused@server.example
)";
    if (!settings.gate.empty())
        text += "  deny message = log in by POP first\n       condition = ${if !exists{" +
                settings.gate + "}}\n";
    text += R"(  accept
acl_rcpt:
  deny message = this recipient is refused
       recipients = refused@maintenance.example
  accept
acl_data:
  deny message = this text is refused
       condition = ${if eq{$h_subject:}{Refused}}
  accept
begin routers
everybody:
  driver = accept
  transport = mailbox
begin transports
mailbox:
  driver = appendfile
  batch_max = 100
  return_path_add
  envelope_to_add
  mode_fail_narrower = false
  file = )" +
            spool + "/mailbox\n";
    return text;
}

std::string Exim::Mailbox(std::size_t mails) const {
    std::string mailbox;
    const bool there = WaitFor([&] {
        mailbox = test_support::ReadWholeFile(folder_ / "spool/mailbox");
        return CountMails(mailbox) >= mails && mailbox.ends_with("\n\n");
    });
    if (!there)
        throw std::runtime_error("the mail was not delivered: " + Log());
    return mailbox;
}

std::string Exim::Log() const {
    std::string log;
    for (const char *name : {"output", "spool/log-main", "spool/log-reject", "spool/log-panic"})
        log += test_support::ReadWholeFile(folder_ / name);
    return log;
}

Dovecot::Dovecot(const std::string &account, const std::string &password,
                 const mail_support::Certificate *certificate) {
    RequireProgram("/usr/sbin/dovecot", "dovecot-pop3d");
    RequireProgram("/usr/lib/dovecot/pop3", "dovecot-pop3d");
    folder_.MakeFolder("mail");
    folder_.Write("accounts", account + ":{PLAIN}" + password + "\n");
    folder_.Write("log-in", "#!/bin/sh\n: > " + LogInMark() + "\nexec \"$@\"\n");
    folder_.Write("dovecot.conf", Configuration(certificate));
    process_ = StartServer({"/usr/sbin/dovecot", "-F", "-c", folder_ / "dovecot.conf"}, kPort,
                           folder_ / "output");
}

std::string Dovecot::Configuration(const mail_support::Certificate *certificate) const {
    std::string text = "base_dir = " + (folder_ / "run") + "\nlog_path = " + (folder_ / "log") +
                       "\nlisten = " + OwnLoopbackAddress() +
                       "\nmail_location = maildir:" + (folder_ / "mail") + "\n";
    if (certificate != nullptr)
        text += "ssl = yes\nssl_cert = <" + certificate->certificate_file + "\nssl_key = <" +
                certificate->key_file + "\n";
    else
        text += "ssl = no\n";
    text += "service pop3-login {\n  inet_listener pop3 {\n    port = " + std::to_string(kPort) +
            "\n  }\n  inet_listener pop3s {\n    ssl = yes\n    port = " +
            std::to_string(certificate != nullptr ? kTlsPort : 0) + "\n  }\n}\n";
    text += R"(protocols = pop3
disable_plaintext_auth = no
auth_failure_delay = 0
first_valid_uid = 1
service anvil {
  unix_listener anvil-auth-penalty {
    mode = 0
  }
}
service pop3 {
  executable = pop3 pop3-postlogin
}
service pop3-postlogin {
  user = root
  unix_listener pop3-postlogin {
  }
  executable = script-login )" +
            (folder_ / "log-in") + R"(
}
userdb {
  driver = static
  args = uid=nobody gid=nogroup home=)" +
            (folder_ / "mail") + R"(
}
passdb {
  driver = passwd-file
  args = )" +
            (folder_ / "accounts") + "\n}\n";
    return text;
}

std::string Dovecot::Log() const {
    return test_support::ReadWholeFile(folder_ / "output") +
           test_support::ReadWholeFile(folder_ / "log");
}

std::string Dovecot::LogWith(const std::string &text) const {
    std::string log;
    (void)WaitFor([&] {
        log = Log();
        return log.find(text) != std::string::npos;
    });
    return log;
}
