// A call of amrvxmn.dll, with arguments that are right unless a test changes them.
#ifndef MAIL_SUPPORT_HANDING_OVER_H
#define MAIL_SUPPORT_HANDING_OVER_H

#include <chrono>
#include <string>

#include <records/manager.h>

namespace mail_support {

// The module's results, as docs/manager-protocol.md numbers them.
inline constexpr int kAccepted = 0;
inline constexpr int kNotPrepared = 1;
inline constexpr int kNotDelivered = 2;
inline constexpr int kRefused = 3;

struct Manager {
    std::string host = {};
    std::string address = "127.0.0.1";
    DWORD port = 0;
};

struct HandedOver {
    int result = 99;
    std::string error;
    std::chrono::milliseconds elapsed{};
};

inline constexpr VLX_MANAGER_ALERT kAlert = {
    .lpszEventId = "20261121T100000-1@server01",
    .lpszLog = "SYSTEM",
    .lpszSource = "KESHeartBeatDll",
    .lpszComputer = "server01",
    .lpszMessage = "TEST - AlertManager",
    .lpszLines = "line 1\r\nline 2\r\n",
    .qwTime = 1795255200,
    .dwLevel = 2,
    .dwCount = 1,
};

// Each loads the module, hands over and unloads it.
HandedOver HandOverOpening(const Manager &manager);
HandedOver HandOverAlert(const Manager &manager, const VLX_MANAGER_ALERT *alert = &kAlert);

}  // namespace mail_support

#endif  // MAIL_SUPPORT_HANDING_OVER_H
