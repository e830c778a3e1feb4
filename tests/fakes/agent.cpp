// libamcrtcpy and libamcregac. The codecs are visible marks around the text, so that a test sees
// what was encoded; ecm_SJIStoEUC converts for real, kes_AnkZen copies.
#include <amcregac.h>
#include <amcrtcpy.h>
#include <iconv.h>
#include <ntwin32/memory.h>
#include <ntwin32/registry.h>

#include <cstdlib>
#include <cstring>
#include <map>

#include "fakes/registry.h"
#include "state.h"

namespace fakes {

namespace {

constexpr std::string_view kEncodedBegin = "begin{";
constexpr std::string_view kEncodedEnd = "}end";
constexpr std::string_view kPasswordMark = "encoded:";

std::map<std::string, std::string> &EncodedFiles() {
    static std::map<std::string, std::string> files;
    return files;
}

HGLOBAL BlockOf(std::string_view bytes) {
    const HGLOBAL block = GlobalAlloc(GMEM_FIXED, bytes.size());
    if (block != nullptr) {
        std::memcpy(block, bytes.data(), bytes.size());
    }
    return block;
}

std::string_view Source(const char *source, DWORD length) {
    return {source, strnlen(source, length)};
}

// The conversions' common end: the text, and a terminator where there is room.
int Deliver(std::string_view text, DWORD capacity, char *destination) {
    if (text.size() > capacity) {
        return 0;
    }
    std::memcpy(destination, text.data(), text.size());
    if (text.size() < capacity) {
        destination[text.size()] = '\0';
    }
    return 1;
}

BOOL WriteValue(HKEY root, const char *key, const char *name, DWORD type, std::string_view bytes) {
    HKEY handle = 0;
    if (RegOpenKeyEx(root, key, 0, KEY_SET_VALUE, &handle) != ERROR_SUCCESS) {
        return FALSE;
    }
    const LONG error =
        RegSetValueEx(handle, name, 0, type, reinterpret_cast<const BYTE *>(bytes.data()),
                      static_cast<DWORD>(bytes.size()));
    RegCloseKey(handle);
    return error == ERROR_SUCCESS;
}

}  // namespace

void AddEncodedFile(const std::string &path, std::string decoded) {
    EncodedFiles()[path] = std::move(decoded);
}

std::string FakeEncode(std::string_view decoded) {
    return std::string(kEncodedBegin).append(decoded).append(kEncodedEnd);
}

std::string FakePassword(std::string_view password) {
    return std::string(kPasswordMark).append(password);
}

namespace internal {

void ResetAgent() {
    EncodedFiles().clear();
}

}  // namespace internal

}  // namespace fakes

using namespace fakes;

BOOL AMACRERegCreateKey(HKEY hRoot, const char *lpKey) noexcept {
    HKEY handle = 0;
    if (Enter("AMACRERegCreateKey", lpKey) != 0 ||
        RegCreateKey(hRoot, lpKey, &handle) != ERROR_SUCCESS) {
        return FALSE;
    }
    RegCloseKey(handle);
    return TRUE;
}

BOOL AMACRERegWriteSz(HKEY hRoot, const char *lpKey, const char *lpValueName,
                      const char *lpText) noexcept {
    return Enter("AMACRERegWriteSz", std::string(lpKey) + " " + lpValueName + "=" + lpText) == 0 &&
           WriteValue(hRoot, lpKey, lpValueName, REG_SZ, {lpText, std::strlen(lpText) + 1});
}

BOOL AMACRERegWriteDword(HKEY hRoot, const char *lpKey, const char *lpValueName,
                         DWORD dwNumber) noexcept {
    return Enter("AMACRERegWriteDword",
                 std::string(lpKey) + " " + lpValueName + "=" + std::to_string(dwNumber)) == 0 &&
           WriteValue(hRoot, lpKey, lpValueName, REG_DWORD,
                      {reinterpret_cast<const char *>(&dwNumber), sizeof dwNumber});
}

BOOL UUCdDeCodingFromFile(const char *lpPath, HGLOBAL *lphDecoded, DWORD *lpdwSize) noexcept {
    const auto found = EncodedFiles().find(lpPath);
    if (Enter("UUCdDeCodingFromFile", lpPath) != 0 || found == EncodedFiles().end()) {
        return FALSE;
    }
    const HGLOBAL block = BlockOf(found->second);
    if (block == nullptr) {
        return FALSE;
    }
    *lphDecoded = block;
    *lpdwSize = static_cast<DWORD>(found->second.size());
    return TRUE;
}

BOOL UUCdDeCodingFromMemory(const void *lpData, DWORD dwSize, HGLOBAL *lphDecoded,
                            DWORD *lpdwDecodedSize) noexcept {
    std::string_view text(static_cast<const char *>(lpData), dwSize);
    if (Enter("UUCdDeCodingFromMemory", std::to_string(dwSize)) != 0 ||
        !text.starts_with(kEncodedBegin) || !text.ends_with(kEncodedEnd)) {
        return FALSE;
    }
    text.remove_prefix(kEncodedBegin.size());
    text.remove_suffix(kEncodedEnd.size());
    const HGLOBAL block = BlockOf(text);
    if (block == nullptr) {
        return FALSE;
    }
    *lphDecoded = block;
    *lpdwDecodedSize = static_cast<DWORD>(text.size());
    return TRUE;
}

BOOL UUCdEnCodingToMemory(const void *lpData, DWORD dwSize, void **lplpEncoded,
                          DWORD *lpdwEncodedSize) noexcept {
    if (Enter("UUCdEnCodingToMemory", std::to_string(dwSize)) != 0) {
        return FALSE;
    }
    const std::string encoded = FakeEncode({static_cast<const char *>(lpData), dwSize});
    *lplpEncoded = strdup(encoded.c_str());
    *lpdwEncodedSize = static_cast<DWORD>(encoded.size());
    return TRUE;
}

int kes_AnkZen(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
               char *lpDest) noexcept {
    if (Enter("kes_AnkZen", std::to_string(dwSourceLength) + " " + std::to_string(dwDestSize)) !=
        0) {
        return 0;
    }
    return Deliver(Source(lpSource, dwSourceLength), dwDestSize, lpDest);
}

int ecm_SJIStoEUC(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
                  char *lpDest) noexcept {
    if (Enter("ecm_SJIStoEUC", std::to_string(dwSourceLength) + " " + std::to_string(dwDestSize)) !=
        0) {
        return 0;
    }
    std::string source(Source(lpSource, dwSourceLength));
    std::string converted(source.size() * 2 + 1, '\0');
    char *in = source.data();
    char *out = converted.data();
    std::size_t in_left = source.size();
    std::size_t out_left = converted.size();
    const iconv_t conversion = iconv_open("EUC-JP-MS", "CP932");
    const bool done = iconv(conversion, &in, &in_left, &out, &out_left) != static_cast<size_t>(-1);
    iconv_close(conversion);
    converted.resize(converted.size() - out_left);
    return done ? Deliver(converted, dwDestSize, lpDest) : 0;
}

BOOL Ras_Encode(const char *lpPassword, char *lpEncoded, DWORD dwCapacity) noexcept {
    return Enter("Ras_Encode") == 0 &&
           Deliver(FakePassword(lpPassword) + '\0', dwCapacity, lpEncoded);
}

BOOL Ras_Decode(char *lpText, int nLength) noexcept {
    const std::string text(lpText, static_cast<std::size_t>(nLength));
    if (Enter("Ras_Decode", std::to_string(nLength)) != 0 || !text.starts_with(kPasswordMark)) {
        lpText[0] = '\0';
        return FALSE;
    }
    std::memcpy(lpText, text.c_str() + kPasswordMark.size(), text.size() - kPasswordMark.size());
    lpText[text.size() - kPasswordMark.size()] = '\0';
    return TRUE;
}

BOOL AMACEXSetRegistryNumber(DWORD dwNumber) noexcept {
    return Enter("AMACEXSetRegistryNumber", std::to_string(dwNumber)) == 0 && dwNumber == 0;
}

BOOL AMACDSGetIDRegistryPath(const char *lpDestinationId, HKEY *lphKey, char *lpPath,
                             DWORD *lpdwSize) noexcept {
    const std::string path =
        std::string("SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\") + lpDestinationId;
    if (Enter("AMACDSGetIDRegistryPath", lpDestinationId) != 0 || !KeyExists(path) ||
        *lpdwSize <= path.size()) {
        return FALSE;
    }
    std::memcpy(lpPath, path.c_str(), path.size() + 1);
    *lpdwSize = static_cast<DWORD>(path.size() + 1);
    if (lphKey != nullptr) {
        *lphKey = HKEY_LOCAL_MACHINE;
    }
    return TRUE;
}
