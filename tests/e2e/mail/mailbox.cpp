#include "mailbox.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>

#include <mail_support/process.h>

namespace {

std::string LowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char byte) {
        return static_cast<char>(std::tolower(byte));
    });
    return text;
}

// Reads one header line; a line that begins with a blank continues the header before.
void AddHeader(DeliveredMail &mail, std::string &name, const std::string &line) {
    if (line.starts_with(' ') || line.starts_with('\t')) {
        mail.headers[name] += " " + line.substr(1);
        return;
    }
    const auto colon = line.find(": ");
    name = LowerCase(line.substr(0, colon));
    mail.headers[name] = colon == std::string::npos ? "" : line.substr(colon + 2);
}

std::string RunOrThrow(const std::vector<std::string> &command, const std::string &input) {
    if (!mail_support::ProgramExists(command[0]))
        throw std::runtime_error(command[0] + " is missing: install the Debian package sharutils");
    const mail_support::Finished finished = mail_support::Run(command, input);
    if (finished.status != 0)
        throw std::runtime_error(command[0] + " failed: " + finished.output);
    return finished.output;
}

}  // namespace

std::vector<DeliveredMail> ReadMailbox(const std::string &text) {
    std::vector<DeliveredMail> mails;
    std::istringstream lines(text);
    std::string name;
    bool in_headers = false;
    bool after_empty_line = true;
    for (std::string line; std::getline(lines, line);) {
        if (after_empty_line && line.starts_with("From ")) {
            mails.emplace_back();
            in_headers = true;
        } else if (in_headers && line.empty()) {
            in_headers = false;
        } else if (in_headers) {
            AddHeader(mails.back(), name, line);
        } else {
            mails.back().body += line + "\n";
        }
        after_empty_line = line.empty();
    }
    for (DeliveredMail &mail : mails)
        if (mail.body.ends_with('\n'))
            mail.body.pop_back();  // the empty line that ends the mail
    return mails;
}

std::string Decode(const DeliveredMail &mail) {
    return RunOrThrow({"uudecode", "-o", "/dev/stdout"}, mail.body);
}

std::string Encode(const std::string &text) {
    return RunOrThrow({"uuencode", "report"}, text);
}
