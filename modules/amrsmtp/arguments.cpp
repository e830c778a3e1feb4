#include "mail.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>

#include <records/mail_modules.h>

#include "subject.h"

namespace amrsmtp {

namespace {

constexpr DWORD kMostRecipients = 100;
// The standard's limits: a path of 256 bytes with its angle brackets, a line of 1000 with its end.
constexpr std::size_t kLongestAddress = 254;
constexpr std::size_t kLongestLine = 998;
constexpr std::size_t kLongestMessageId = 250;

[[noreturn]] void Refuse(const std::string &what) {
    throw BadArgument(what);
}

std::string Hexadecimal(unsigned char byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    return {kDigits[byte / 16], kDigits[byte % 16]};
}

const char *Present(const char *text, const char *name) {
    if (text == nullptr)
        Refuse(std::string(name) + " is missing");
    return text;
}

bool IsAddressByte(unsigned char byte) {
    return byte >= 0x21 && byte <= 0x7E && byte != '<' && byte != '>';
}

void CheckBytes(const std::string &text, const std::string &name) {
    const auto wrong = std::find_if_not(text.begin(), text.end(), IsAddressByte);
    if (wrong != text.end())
        Refuse(name + " holds the byte " + Hexadecimal(static_cast<unsigned char>(*wrong)) +
               " at position " + std::to_string(std::distance(text.begin(), wrong) + 1));
}

std::string ReadAddress(const char *text, const std::string &name) {
    std::string address = Present(text, name.c_str());
    if (address.empty())
        Refuse(name + " is empty");
    if (address.size() > kLongestAddress)
        Refuse(name + " is longer than " + std::to_string(kLongestAddress) + " bytes");
    CheckBytes(address, name);
    return address;
}

std::vector<std::string> ReadRecipients(const Arguments &arguments) {
    if (arguments.to == nullptr || arguments.to_count == 0)
        Refuse("no recipient");
    if (arguments.to_count > kMostRecipients)
        Refuse("more than " + std::to_string(kMostRecipients) + " recipients");
    std::vector<std::string> recipients;
    for (DWORD index = 0; index < arguments.to_count; ++index)
        recipients.push_back(
            ReadAddress(arguments.to[index], "recipient " + std::to_string(index + 1)));
    return recipients;
}

session::Host ReadServer(const char *text) {
    auto host = session::ParseHost(Present(text, "the server"));
    if (!host)
        Refuse("the server is neither an address nor a host name");
    return *std::move(host);
}

session::Protection ReadProtection(DWORD option) {
    switch (option & MAIL_OPTION_PROTECTION) {
        case MAIL_OPTION_TLS:
            return session::Protection::kFromTheFirstByte;
        case MAIL_OPTION_STARTTLS_REQUIRED:
            return session::Protection::kUpgradeRequired;
        case MAIL_OPTION_STARTTLS_OFFERED:
            return session::Protection::kUpgradeWhenOffered;
        default:
            return session::Protection::kNone;
    }
}

void CheckLines(std::string_view body) {
    std::size_t length = 0;
    for (std::size_t index = 0; index < body.size(); ++index) {
        const auto byte = static_cast<unsigned char>(body[index]);
        if (byte == 0 || byte > 0x7F)
            Refuse("the body holds the byte " + Hexadecimal(byte) + " at position " +
                   std::to_string(index + 1) + ", which is no 7-bit text");
        length = byte == '\n' || byte == '\r' ? 0 : length + 1;
        if (length > kLongestLine)
            Refuse("the body has a line longer than " + std::to_string(kLongestLine) + " bytes");
    }
}

// The size counts addresses, subject and body together.
std::string_view ReadBody(const Arguments &arguments, const std::vector<std::string> &recipients) {
    std::uint64_t others = std::strlen(arguments.subject);
    for (const std::string &recipient : recipients)
        others += recipient.size() + 2;
    if (arguments.size < others)
        Refuse("the size " + std::to_string(arguments.size) + " is less than the " +
               std::to_string(others) + " bytes of addresses and subject");
    const std::size_t length = arguments.size - static_cast<std::size_t>(others);
    if (length == 0)
        return {};
    if (arguments.body == nullptr)
        Refuse("the body is missing");
    const std::string_view body(static_cast<const char *>(arguments.body), length);
    CheckLines(body);
    return body;
}

std::string ReadMessageId(const char *text) {
    if (text == nullptr || *text == '\0')
        return {};
    std::string id = text;
    if (id.size() > kLongestMessageId || id.size() < 3 || id.front() != '<' || id.back() != '>')
        Refuse("the Message-ID is not of the form <...> with at most " +
               std::to_string(kLongestMessageId) + " bytes");
    id = id.substr(1, id.size() - 2);
    CheckBytes(id, "the Message-ID");
    if (std::ranges::count(id, '@') != 1 || id.front() == '@' || id.back() == '@')
        Refuse("the Message-ID has not exactly one @ inside");
    return id;
}

}  // namespace

Mail ReadArguments(const Arguments &arguments) {
    Mail mail;
    mail.server = ReadServer(arguments.server);
    if (arguments.port == 0 || arguments.port > UINT16_MAX)
        Refuse("port " + std::to_string(arguments.port) + " does not exist");
    mail.port = arguments.port;
    if (arguments.form != MAIL_BODY_ENCODED)
        Refuse("the body's form is " + std::to_string(arguments.form) + ", not " +
               std::to_string(MAIL_BODY_ENCODED));
    mail.protection = ReadProtection(arguments.option);
    mail.verify = (arguments.option & MAIL_OPTION_NO_VERIFICATION) == 0;
    mail.sender = ReadAddress(arguments.sender, "the sender");
    mail.envelope_sender = mail.sender;
    if (arguments.error_reply != nullptr && *arguments.error_reply != '\0')
        mail.envelope_sender = ReadAddress(arguments.error_reply, "the error-reply address");
    mail.recipients = ReadRecipients(arguments);
    mail.subject = ReadSubject(Present(arguments.subject, "the subject"));
    mail.body = ReadBody(arguments, mail.recipients);
    mail.message_id = ReadMessageId(arguments.message_id);
    return mail;
}

}  // namespace amrsmtp
