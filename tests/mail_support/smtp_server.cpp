#include "mail_support/smtp_server.h"

#include <utility>

namespace mail_support {

SmtpServer::SmtpServer(SmtpBehaviour behaviour)
    : behaviour_(std::move(behaviour)),
      tls_(MakeTlsContext(behaviour_.certificate)),
      server_([this](Channel &channel) { Talk(channel); }) {}

std::vector<ReceivedMail> SmtpServer::Mails() {
    const std::lock_guard lock(mutex_);
    return mails_;
}

std::vector<std::string> SmtpServer::Commands() {
    const std::lock_guard lock(mutex_);
    return commands_;
}

int SmtpServer::Connections() {
    const std::lock_guard lock(mutex_);
    return connections_;
}

bool SmtpServer::Respond(Channel &channel, const std::string &stage,
                         const std::string &right_answer) {
    return Answer(channel, behaviour_.misdeeds, stage, right_answer);
}

void SmtpServer::Talk(Channel &channel) {
    {
        const std::lock_guard lock(mutex_);
        ++connections_;
    }
    if (!Greet(channel))
        return;
    ReceivedMail mail;
    for (;;) {
        const auto command = channel.ReadLine();
        if (!command)
            return;
        {
            const std::lock_guard lock(mutex_);
            commands_.push_back(*command);
        }
        if (!Obey(channel, *command, mail))
            return;
    }
}

bool SmtpServer::Greet(Channel &channel) {
    if (behaviour_.tls_from_the_first_byte &&
        (!Pass(channel, behaviour_.misdeeds, "TLS") || !channel.StartTls(tls_.get())))
        return false;
    return Respond(channel, "banner", "220 mail.test.example ready\r\n");
}

bool SmtpServer::Obey(Channel &channel, const std::string &command, ReceivedMail &mail) {
    if (command.starts_with("EHLO "))
        return SayHello(channel);
    if (command.starts_with("HELO "))
        return Respond(channel, "HELO", "250 mail.test.example\r\n");
    if (command == "STARTTLS")
        return Upgrade(channel);
    if (command.starts_with("MAIL FROM:")) {
        mail.sender = command.substr(10);
        return Respond(channel, "MAIL", "250 sender accepted\r\n");
    }
    if (command.starts_with("RCPT TO:"))
        return TakeRecipient(channel, command, mail);
    if (command == "DATA")
        return Respond(channel, "DATA", "354 go ahead\r\n") &&
               (behaviour_.misdeeds.contains("DATA") || TakeText(channel, mail));
    if (command == "QUIT") {
        Respond(channel, "QUIT", "221 goodbye\r\n");
        return false;
    }
    return channel.Write("500 unknown command\r\n");
}

bool SmtpServer::SayHello(Channel &channel) {
    std::string answer;
    for (const std::string &extension : behaviour_.extensions)
        answer += "250-" + extension + "\r\n";
    if (tls_ != nullptr && !channel.IsEncrypted())
        answer += "250-STARTTLS\r\n";
    return Respond(channel, "EHLO", answer + "250 HELP\r\n");
}

bool SmtpServer::Upgrade(Channel &channel) {
    const bool granted = !behaviour_.misdeeds.contains("STARTTLS");
    if (!Respond(channel, "STARTTLS", "220 start now\r\n"))
        return false;
    if (!granted)
        return true;
    return Pass(channel, behaviour_.misdeeds, "handshake") && channel.StartTls(tls_.get());
}

bool SmtpServer::TakeRecipient(Channel &channel, const std::string &command, ReceivedMail &mail) {
    mail.recipients.push_back(command.substr(8));
    const std::size_t count = mail.recipients.size();
    return Respond(channel, count == 1 ? "RCPT" : "RCPT " + std::to_string(count),
                   "250 recipient accepted\r\n");
}

bool SmtpServer::TakeText(Channel &channel, ReceivedMail &mail) {
    if (!channel.Pause(behaviour_.slow_reader_milliseconds))
        return false;
    mail.text.clear();
    for (;;) {
        const auto line = channel.ReadLine();
        if (!line)
            return false;
        if (*line == ".")
            break;
        mail.text += line->starts_with('.') ? line->substr(1) : *line;
        mail.text += "\r\n";
    }
    mail.encrypted = channel.IsEncrypted();
    if (!behaviour_.misdeeds.contains("end of data")) {
        const std::lock_guard lock(mutex_);
        mails_.push_back(mail);
    }
    return Respond(channel, "end of data", "250 taken\r\n");
}

}  // namespace mail_support
