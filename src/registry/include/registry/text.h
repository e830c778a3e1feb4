// Text in fixed arrays: one bounded copy and one bounded format, whose results must be looked at.
#ifndef REGISTRY_TEXT_H
#define REGISTRY_TEXT_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

// For traces, which show a null text as "NULL".
inline const char *TextOrNull(const char *lpszText) noexcept {
    return lpszText == nullptr ? "NULL" : lpszText;
}

// Copies a text with its terminator into dwCapacity bytes. False when it does not fit: the
// destination is then an empty text (of a capacity of at least 1).
[[nodiscard]] inline bool CopyText(char *lpszDest, std::size_t dwCapacity,
                                   const char *lpszSource) noexcept {
    const std::size_t dwLength = strnlen(lpszSource, dwCapacity);
    if (dwLength >= dwCapacity) {
        if (dwCapacity > 0) {
            lpszDest[0] = '\0';
        }
        return false;
    }
    std::memmove(lpszDest, lpszSource, dwLength + 1);
    return true;
}

template <std::size_t N>
[[nodiscard]] bool CopyText(char (&szDest)[N], const char *lpszSource) noexcept {
    return CopyText(szDest, N, lpszSource);
}

// Formats into dwCapacity bytes. False when the text does not fit: the destination is then empty.
[[nodiscard]] __attribute__((format(printf, 3, 4))) inline bool FormatText(char *lpszDest,
                                                                           std::size_t dwCapacity,
                                                                           const char *lpszFormat,
                                                                           ...) noexcept {
    va_list arguments;
    va_start(arguments, lpszFormat);
    const int nLength = std::vsnprintf(lpszDest, dwCapacity, lpszFormat, arguments);
    va_end(arguments);
    if (nLength < 0 || static_cast<std::size_t>(nLength) >= dwCapacity) {
        if (dwCapacity > 0) {
            lpszDest[0] = '\0';
        }
        return false;
    }
    return true;
}

// Length of the longest beginning of an EUC-JP text that takes at most dwLimit of its dwLength
// bytes and ends with a whole character.
[[nodiscard]] inline std::size_t WholeCharacters(const char *lpszText, std::size_t dwLength,
                                                 std::size_t dwLimit) noexcept {
    std::size_t dwEnd = 0;
    while (dwEnd < dwLength) {
        const auto byLead = static_cast<unsigned char>(lpszText[dwEnd]);
        const bool bDouble = byLead == 0x8E || (byLead >= 0xA1 && byLead <= 0xFE);
        const std::size_t dwNext = dwEnd + (byLead == 0x8F ? 3 : bDouble ? 2 : 1);
        if (dwNext > dwLimit || dwNext > dwLength) {
            break;
        }
        dwEnd = dwNext;
    }
    return dwEnd;
}

// The deliberate cut: copies as many whole EUC-JP characters as dwCapacity bytes (at least 1) hold
// with a terminator. False when the text did not fit. Reads at most dwCapacity bytes, so that a
// full buffer without terminator can be given one in place.
inline bool CutText(char *lpszDest, std::size_t dwCapacity, const char *lpszSource) noexcept {
    const std::size_t dwLength = strnlen(lpszSource, dwCapacity);
    const bool bFits = dwLength < dwCapacity;
    const std::size_t dwKept =
        bFits ? dwLength : WholeCharacters(lpszSource, dwLength, dwCapacity - 1);
    std::memmove(lpszDest, lpszSource, dwKept);
    lpszDest[dwKept] = '\0';
    return bFits;
}

template <std::size_t N>
bool CutText(char (&szDest)[N], const char *lpszSource) noexcept {
    return CutText(szDest, N, lpszSource);
}

#endif  // REGISTRY_TEXT_H
