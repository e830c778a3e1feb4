// Mails as a server delivered them.
#ifndef MAILBOX_H
#define MAILBOX_H

#include <map>
#include <string>
#include <vector>

struct DeliveredMail {
    std::map<std::string, std::string> headers;  // by lower-case name, folded lines joined
    std::string body;
};

// Reads a mailbox file: each mail begins with a line "From ..." and ends with an empty line.
std::vector<DeliveredMail> ReadMailbox(const std::string &text);

// What the command uudecode makes of a mail's body. Throws std::runtime_error when it refuses.
std::string Decode(const DeliveredMail &mail);

// A report's body for the line: the text in uuencode form.
std::string Encode(const std::string &text);

#endif  // MAILBOX_H
