// The code conversion's exported functions.
#include <amcrtcpy.h>

#include <cstring>

#include "boundary.h"
#include "conversion.h"

namespace {

// What is read of a source: up to its length or to the first zero byte.
std::string_view SourceText(const char *source, DWORD length) {
    return {source, ::strnlen(source, length)};
}

// Stores a whole result, terminated when there is room for that.
bool Store(std::string_view text, char *destination, DWORD capacity) {
    if (text.size() > capacity) {
        return false;
    }
    std::memcpy(destination, text.data(), text.size());
    if (text.size() < capacity) {
        destination[text.size()] = '\0';
    }
    return true;
}

}  // namespace

extern "C" {

int kes_AnkZen(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
               char *lpDest) noexcept {
    return agent::AtBoundary([&] {
        return lpSource != nullptr && lpDest != nullptr &&
               Store(agent::WidenKatakana(SourceText(lpSource, dwSourceLength)), lpDest,
                     dwDestSize);
    });
}

int ecm_SJIStoEUC(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
                  char *lpDest) noexcept {
    return agent::AtBoundary([&] {
        if (lpSource == nullptr || lpDest == nullptr) {
            return false;
        }
        const auto euc = agent::SjisToEuc(SourceText(lpSource, dwSourceLength));
        return euc && Store(*euc, lpDest, dwDestSize);
    });
}

}  // extern "C"
