// One use of amrpop.dll as its caller makes it: init, connect, disconnect, release.
#ifndef MAIL_SUPPORT_LOGGING_IN_H
#define MAIL_SUPPORT_LOGGING_IN_H

#include <chrono>
#include <string>

#include <records/mail_modules.h>

#include "mail_support/module.h"

namespace mail_support {

// The functions of a loaded amrpop.dll.
struct PopModule {
    Module module{AMRPOP_MODULE};
    TRANSPORTINIT *init = module.Get<TRANSPORTINIT>(TRANSPORTINIT_NAME);
    TRANSPORTCONNECT *connect = module.Get<TRANSPORTCONNECT>(TRANSPORTCONNECT_NAME);
    TRANSPORTDISCONNECT *disconnect = module.Get<TRANSPORTDISCONNECT>(TRANSPORTDISCONNECT_NAME);
    TRANSPORTRELEASE *release = module.Get<TRANSPORTRELEASE>(TRANSPORTRELEASE_NAME);
};

struct Account {
    std::string server = "127.0.0.1";
    std::string name = "monitor";
    std::string password = "secret";
    DWORD port = 0;
};

// A record; texts that do not fit fill their field without an end.
TRANSPORTINFO MakeInfo(const Account &account);

struct LoggedIn {
    bool init = false;
    bool connect = false;
    bool disconnect = false;
    bool release = false;
    std::chrono::milliseconds elapsed{};
};

// Loads the module, goes as far as the calls succeed, releases and unloads it.
LoggedIn LogIn(const Account &account);

}  // namespace mail_support

#endif  // MAIL_SUPPORT_LOGGING_IN_H
