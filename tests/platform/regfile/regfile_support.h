// What the tests of .reg files share: short texts to whole files, changes to comparable texts.
#ifndef REGFILE_SUPPORT_H
#define REGFILE_SUPPORT_H

#include <regfile/regfile.h>

#include <cstdio>
#include <string>
#include <vector>

namespace regfile {

inline std::string WithHeader(const std::string &lines) {
    return "Windows Registry Editor Version 5.00\r\n" + lines;
}

// One change as "create path", "delete path", "set path|name|type|hex", "remove path|name".
inline std::string Describe(const Change &change) {
    std::string text;
    switch (change.kind) {
        case Change::Kind::kCreateKey:
            return "create " + *change.path;
        case Change::Kind::kDeleteTree:
            return "delete " + *change.path;
        case Change::Kind::kDeleteValue:
            return "remove " + *change.path + "|" + change.name;
        case Change::Kind::kSetValue:
            text =
                "set " + *change.path + "|" + change.name + "|" + std::to_string(change.type) + "|";
            break;
    }
    for (const std::uint8_t byte : change.data) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        text += digits;
    }
    return text;
}

inline std::vector<std::string> Describe(const std::vector<Change> &changes) {
    std::vector<std::string> texts;
    texts.reserve(changes.size());
    for (const Change &change : changes) {
        texts.push_back(Describe(change));
    }
    return texts;
}

inline std::string Describe(const Problem &problem) {
    return std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": " +
           problem.cause;
}

}  // namespace regfile

#endif  // REGFILE_SUPPORT_H
