#include "velox/pop_connect.h"

#include <amcrtcpy.h>
#include <records/mail_modules.h>
#include <unistd.h>

#include <cstring>

#include "registry/handles.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/mail_base.h"
#include "wiped.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";
constexpr char FUNCTION[] = "AMPBSConnect";

// The functions of amrpop.dll: all of them, or none.
struct TRANSPORT {
    TRANSPORTINIT *pfnInit;
    TRANSPORTCONNECT *pfnConnect;
    TRANSPORTDISCONNECT *pfnDisconnect;
    TRANSPORTRELEASE *pfnRelease;
};

// The password in plain text. One that does not decode is empty: the stored form never goes out.
template <std::size_t N>
bool ReadPassword(const char *lpszPath, char (&szField)[N]) noexcept {
    WIPED<char[N + 1]> password;
    if (!ReadText(lpszPath, "POPPass", password.value) ||
        std::strlen(password.value) >= sizeof szField) {
        return false;
    }
    if (Ras_Decode(password.value, static_cast<int>(std::strlen(password.value))) == FALSE) {
        password.value[0] = '\0';
    }
    return CopyText(szField, password.value);
}

// The trace of the first setting that cannot be read; null when all were.
const char *ReadSettings(const char *lpszPath, TRANSPORTINFO &info) noexcept {
    if (!ReadNumber(lpszPath, "POPPort", &info.dwPort)) {
        return "<Err: reg read POPPort";
    }
    if (!ReadField(lpszPath, "POPServer", info.szServer)) {
        return "<Err: reg read POPServer";
    }
    if (!ReadField(lpszPath, "POPUser", info.szAccount)) {
        return "<Err: reg read POPUser";
    }
    if (!ReadPassword(lpszPath, info.szPassword)) {
        return "<Err: reg read POPPass";
    }
    return nullptr;
}

template <typename T>
bool LookUp(HMODULE hModule, const char *lpszName, T *&pfnFunction) noexcept {
    pfnFunction = reinterpret_cast<T *>(GetProcAddress(hModule, lpszName));
    return pfnFunction != nullptr;
}

bool LookUpTransport(HMODULE hModule, TRANSPORT &transport) noexcept {
    const bool bInit = LookUp(hModule, TRANSPORTINIT_NAME, transport.pfnInit);
    const bool bConnect = LookUp(hModule, TRANSPORTCONNECT_NAME, transport.pfnConnect);
    const bool bDisconnect = LookUp(hModule, TRANSPORTDISCONNECT_NAME, transport.pfnDisconnect);
    const bool bRelease = LookUp(hModule, TRANSPORTRELEASE_NAME, transport.pfnRelease);
    if (!bInit || !bConnect || !bDisconnect || !bRelease) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "Err: GetProcAddress (Transport...)");
        return false;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "GetProcAddress Success");
    return true;
}

void WaitForServer(const char *lpszPath) noexcept {
    DWORD dwSeconds = 0;
    if (ReadNumber(lpszPath, "POPTime", &dwSeconds) && dwSeconds != 0) {
        TRACE_AS(FUNCTION, TRACE_NOTE, "Sleep %u seconds for waiting server auth", dwSeconds);
        (void)sleep(dwSeconds);
    }
}

// Logs in and out. The transport that it leaves in *lphTransport is the caller's to release,
// whether the log-in succeeded or not.
bool LogIn(const TRANSPORT &transport, const TRANSPORTINFO &info, const char *lpszPath,
           HTRANSPORT *lphTransport) noexcept {
    if (transport.pfnInit(lphTransport, &info) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "TransportInit Error");
        return false;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "TransportInit OK ");
    if (transport.pfnConnect(*lphTransport) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "TransportConnect Error");
        return false;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "TransportConnect OK");
    if (transport.pfnDisconnect(*lphTransport) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "TransPortDisconnect Error");
        return false;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "TransPortDisconnect OK");
    WaitForServer(lpszPath);
    TRACE_AS(FUNCTION, TRACE_NOTE, "POP AUTH Success");
    return true;
}

void Release(const TRANSPORT &transport, HTRANSPORT hTransport) noexcept {
    if (hTransport == 0) {
        return;
    }
    if (transport.pfnRelease(hTransport) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "TransPortRelease Error");
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "TransPortRelease OK");
}

int Authenticate(const TRANSPORTINFO &info, const char *lpszPath) noexcept {
    TRACE_AS(FUNCTION, TRACE_NOTE, "Load amrpop.dll");
    AutoModule module(LoadLibrary(AMRPOP_MODULE));
    if (!module.IsValid()) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<Err: LoadLibrary (amrpop.dll)");
        return 0;
    }
    int nResult = 0;
    TRANSPORT transport = {};
    if (LookUpTransport(module.Get(), transport)) {
        HTRANSPORT hTransport = 0;
        nResult = LogIn(transport, info, lpszPath, &hTransport) ? 1 : 0;
        Release(transport, hTransport);
    }
    module.Reset();
    TRACE_AS(FUNCTION, TRACE_NOTE, "<%d", nResult);
    return nResult;
}

}  // namespace

int AMPBSConnect() noexcept {
    TRACE(TRACE_NOTE, ">");
    WIPED<TRANSPORTINFO> info;
    char szPath[AMAM_BASE_PATH_CAPACITY];
    if (AMAMGetBaseRegPath(szPath) != 1) {
        TRACE(TRACE_FAILURE, "<Can't get base reg of internet mail");
        return 0;
    }
    DWORD dwFlag = 0;
    if (!ReadNumber(szPath, "POPFlag", &dwFlag)) {
        TRACE(TRACE_FAILURE, "<Err: reg read POPFlag");
        return 0;
    }
    if (dwFlag == 0) {
        TRACE(TRACE_NOTE, "<\"get authentication\" is not set. PASS");
        return 1;
    }
    const char *lpszFailure = ReadSettings(szPath, info.value);
    if (lpszFailure != nullptr) {
        TRACE(TRACE_FAILURE, "%s", lpszFailure);
        return 0;
    }
    TRACE(TRACE_NOTE, "TRANSPORTINFO Srv:(%s),Account:(%s),Port:(%u)", info.value.szServer,
          info.value.szAccount, info.value.dwPort);
    return Authenticate(info.value, szPath);
}
