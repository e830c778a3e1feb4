// What libNTwin32 tells about the machine, the product and the language: TheSystem().
#include <ntwin32/system.h>

#include <cstring>

#include "state.h"

using namespace fakes;

namespace {

bool CopyText(const std::string &text, char *buffer, DWORD capacity) {
    if (text.size() >= capacity) {
        return false;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

}  // namespace

BOOL GetComputerName(char *lpBuffer, DWORD *nSize) noexcept {
    const std::string &name = TheSystem().computer_name;
    if (Enter("GetComputerName", std::to_string(*nSize)) != 0 ||
        !CopyText(name, lpBuffer, *nSize)) {
        return FALSE;
    }
    *nSize = static_cast<DWORD>(name.size());
    return TRUE;
}

DWORD ExpandEnvironmentStrings(const char *lpSrc, char *lpDst, DWORD nSize) noexcept {
    if (Enter("ExpandEnvironmentStrings", std::string(lpSrc) + " " + std::to_string(nSize)) != 0) {
        return 0;
    }
    std::string text = lpSrc;
    if (const std::size_t at = text.find("%KesDir%"); at != std::string::npos) {
        text.replace(at, std::strlen("%KesDir%"), TheSystem().kes_directory);
    }
    if (!CopyText(text, lpDst, nSize) && nSize > 0) {
        lpDst[0] = '\0';
    }
    return static_cast<DWORD>(text.size() + 1);
}

LANGID GetSystemDefaultLangID() noexcept {
    Enter("GetSystemDefaultLangID");
    return TheSystem().language_id;
}

BOOL GetSystemDefaultLANG(char *lpBuffer, DWORD cbBuffer) noexcept {
    return Enter("GetSystemDefaultLANG", std::to_string(cbBuffer)) == 0 &&
           CopyText(TheSystem().language_name, lpBuffer, cbBuffer);
}

BOOL IsDBCSLeadByte(BYTE TestChar) noexcept {
    return (TestChar >= 0x81 && TestChar <= 0x9F) || (TestChar >= 0xE0 && TestChar <= 0xFC);
}

int CheckNTserverReady() noexcept {
    return Enter("CheckNTserverReady") != 0 ? -1 : TheSystem().server_ready;
}

BOOL GetKesRootPath(char *lpBuffer, DWORD cbBuffer) noexcept {
    return Enter("GetKesRootPath", std::to_string(cbBuffer)) == 0 &&
           CopyText(TheSystem().root_path, lpBuffer, cbBuffer);
}

BOOL getOSDistribution(char *lpBuffer, DWORD cbBuffer) noexcept {
    if (Enter("getOSDistribution", std::to_string(cbBuffer)) != 0) {
        return FALSE;
    }
    return CopyText(TheSystem().distribution.substr(0, cbBuffer - 1), lpBuffer, cbBuffer);
}
