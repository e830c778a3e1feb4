// A POP transport module for tests, and the POP settings that lead to it.
#ifndef AMSTEXML_TRANSPORT_H
#define AMSTEXML_TRANSPORT_H

#include <records/mail_modules.h>

#include <string>
#include <vector>

namespace transport {

inline constexpr char kPassword[] = "Tr4nsp0rt-secret";

// What the module does and what it was asked.
struct Module {
    bool init = true;
    bool connect = true;
    bool disconnect = true;
    bool release = true;
    HTRANSPORT handle = 0x77;  // what init stores, success or not
    std::vector<std::string> calls;
    TRANSPORTINFO info = {};
};
Module &TheModule();

// Lets amrpop.dll be loaded with all four functions, or without the one named.
void Add(const std::string &without = {});

// POP settings under the default mail base key: a server, an account, kPassword and no wait.
void StoreSettings();

}  // namespace transport

#endif  // AMSTEXML_TRANSPORT_H
