#include "mail_support/logging_in.h"

#include <algorithm>
#include <cstddef>

namespace mail_support {

namespace {

template <std::size_t capacity>
void Fill(char (&field)[capacity], const std::string &text) {
    std::copy_n(text.data(), std::min(text.size(), capacity), field);
}

}  // namespace

TRANSPORTINFO MakeInfo(const Account &account) {
    TRANSPORTINFO info{};
    Fill(info.szServer, account.server);
    Fill(info.szAccount, account.name);
    Fill(info.szPassword, account.password);
    info.dwPort = account.port;
    return info;
}

LoggedIn LogIn(const Account &account) {
    const PopModule pop;
    const TRANSPORTINFO info = MakeInfo(account);
    const auto start = std::chrono::steady_clock::now();
    LoggedIn result;
    HTRANSPORT transport = 0;
    result.init = pop.init(&transport, &info) != 0;
    result.connect = result.init && pop.connect(transport) != 0;
    result.disconnect = result.connect && pop.disconnect(transport) != 0;
    result.release = transport != 0 && pop.release(transport) != 0;
    result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    return result;
}

}  // namespace mail_support
