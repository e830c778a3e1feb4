// amrpop.dll: the module that logs in to a POP server and out again. Here is its C boundary.
#include <exception>
#include <memory>
#include <type_traits>

#include <records/mail_modules.h>
#include <tracelog.h>

#include "login.h"
#include "transports.h"

namespace amrpop {

namespace {

constexpr char kSource[] = "amrpop";
constexpr int kFailure = 1;

Transports &TheTransports() {
    static Transports transports;
    return transports;
}

// Runs one exported function; whatever it throws becomes a failure with a trace.
template <typename Work>
BOOL Guarded(const char *function, Work work) noexcept {
    try {
        return work() ? TRUE : FALSE;
    } catch (const std::exception &error) {
        TraceLog(kFailure, kSource, function, __LINE__, "%s", error.what());
        return FALSE;
    }
}

std::shared_ptr<LogIn> FindOrComplain(HTRANSPORT handle, const char *function) {
    auto log_in = TheTransports().Find(handle);
    if (log_in == nullptr)
        TraceLog(kFailure, kSource, function, __LINE__, "no such transport");
    return log_in;
}

}  // namespace

}  // namespace amrpop

using amrpop::FindOrComplain;
using amrpop::Guarded;
using amrpop::TheTransports;

extern "C" {

NTWIN32_API BOOL TransportInit(HTRANSPORT *lphTransport, const TRANSPORTINFO *lpInfo) noexcept {
    return Guarded(TRANSPORTINIT_NAME, [&] {
        if (lphTransport == nullptr || lpInfo == nullptr)
            return false;
        *lphTransport = 0;
        *lphTransport = TheTransports().Add(std::make_shared<amrpop::LogIn>(*lpInfo));
        return true;
    });
}

NTWIN32_API BOOL TransportConnect(HTRANSPORT hTransport) noexcept {
    return Guarded(TRANSPORTCONNECT_NAME, [&] {
        const auto log_in = FindOrComplain(hTransport, TRANSPORTCONNECT_NAME);
        return log_in != nullptr && log_in->Connect();
    });
}

NTWIN32_API BOOL TransportDisconnect(HTRANSPORT hTransport) noexcept {
    return Guarded(TRANSPORTDISCONNECT_NAME, [&] {
        const auto log_in = FindOrComplain(hTransport, TRANSPORTDISCONNECT_NAME);
        return log_in != nullptr && log_in->Disconnect();
    });
}

NTWIN32_API BOOL TransportRelease(HTRANSPORT hTransport) noexcept {
    return Guarded(TRANSPORTRELEASE_NAME, [&] { return TheTransports().Remove(hTransport); });
}

}  // extern "C"

static_assert(std::is_same_v<decltype(TransportInit), TRANSPORTINIT>);
static_assert(std::is_same_v<decltype(TransportConnect), TRANSPORTCONNECT>);
static_assert(std::is_same_v<decltype(TransportDisconnect), TRANSPORTDISCONNECT>);
static_assert(std::is_same_v<decltype(TransportRelease), TRANSPORTRELEASE>);
