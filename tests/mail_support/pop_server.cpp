#include "mail_support/pop_server.h"

#include <utility>

#include "mail_support/base64.h"

namespace mail_support {

PopServer::PopServer(PopBehaviour behaviour)
    : behaviour_(std::move(behaviour)),
      tls_(MakeTlsContext(behaviour_.certificate)),
      server_([this](Channel &channel) { Talk(channel); }, behaviour_.address, behaviour_.port) {}

std::vector<std::string> PopServer::Commands() {
    const std::lock_guard lock(mutex_);
    return commands_;
}

int PopServer::LogIns() {
    const std::lock_guard lock(mutex_);
    return log_ins_;
}

int PopServer::EncryptedLogIns() {
    const std::lock_guard lock(mutex_);
    return encrypted_log_ins_;
}

void PopServer::Record(const std::string &command) {
    const std::lock_guard lock(mutex_);
    commands_.push_back(command);
}

bool PopServer::Respond(Channel &channel, const std::string &stage,
                        const std::string &right_answer) {
    return Answer(channel, behaviour_.misdeeds, stage, right_answer);
}

void PopServer::Talk(Channel &channel) {
    logged_in_ = false;
    user_.clear();
    if (!Greet(channel))
        return;
    for (;;) {
        const auto command = channel.ReadLine();
        if (!command)
            return;
        Record(*command);
        if (!Obey(channel, *command))
            return;
    }
}

bool PopServer::Greet(Channel &channel) {
    if (behaviour_.tls_from_the_first_byte &&
        (!Pass(channel, behaviour_.misdeeds, "TLS") || !channel.StartTls(tls_.get())))
        return false;
    return Respond(channel, "greeting", behaviour_.greeting + "\r\n");
}

bool PopServer::Obey(Channel &channel, const std::string &command) {
    if (command == "CAPA")
        return ListCapabilities(channel);
    if (command == "STLS")
        return Upgrade(channel);
    if (command.starts_with("USER ")) {
        user_ = command.substr(5);
        return Respond(channel, "USER", "+OK password?\r\n");
    }
    if (command.starts_with("PASS "))
        return CheckPassword(channel, command.substr(5));
    if (command.starts_with("AUTH "))
        return Authenticate(channel, command);
    if (command.starts_with("APOP "))
        return Respond(channel, "APOP", "-ERR digest refused\r\n");
    if (command == "QUIT")
        return EndLogIn(channel);
    return channel.Write("-ERR unknown command\r\n");
}

bool PopServer::ListCapabilities(Channel &channel) {
    std::string answer = "+OK\r\n";
    for (const std::string &capability : behaviour_.capabilities)
        answer += capability + "\r\n";
    if (tls_ != nullptr && !channel.IsEncrypted())
        answer += "STLS\r\n";
    return Respond(channel, "CAPA", answer + ".\r\n");
}

bool PopServer::Upgrade(Channel &channel) {
    const bool granted = !behaviour_.misdeeds.contains("STLS");
    if (!Respond(channel, "STLS", "+OK start now\r\n"))
        return false;
    if (!granted)
        return true;
    return Pass(channel, behaviour_.misdeeds, "handshake") && channel.StartTls(tls_.get());
}

bool PopServer::CheckPassword(Channel &channel, const std::string &password) {
    logged_in_ = user_ == behaviour_.account && password == behaviour_.password;
    return Respond(channel, "PASS",
                   logged_in_ ? "+OK logged in\r\n" : "-ERR [AUTH] wrong account or password\r\n");
}

bool PopServer::Authenticate(Channel &channel, const std::string &command) {
    if (command != "AUTH PLAIN")
        return channel.Write("-ERR unknown mechanism\r\n");
    if (!Respond(channel, "AUTH", "+ \r\n"))
        return false;
    const auto data = channel.ReadLine();
    if (!data)
        return false;
    Record(*data);
    const std::string expected = Base64('\0' + behaviour_.account + '\0' + behaviour_.password);
    logged_in_ = *data == expected;
    return Respond(channel, "authentication data",
                   logged_in_ ? "+OK logged in\r\n" : "-ERR [AUTH] wrong account or password\r\n");
}

bool PopServer::EndLogIn(Channel &channel) {
    if (logged_in_) {
        const std::lock_guard lock(mutex_);
        ++log_ins_;
        if (channel.IsEncrypted())
            ++encrypted_log_ins_;
    }
    Respond(channel, "QUIT", "+OK bye\r\n");
    return false;
}

}  // namespace mail_support
