// The bounded buffer in which the service information text grows.
#ifndef VXGETINF_SERVICE_TEXT_H
#define VXGETINF_SERVICE_TEXT_H

#include <cstddef>
#include <cstring>

#include "velox/service_info.h"

// A text that outgrows the buffer stays as it was before the piece that did not fit, and
// IsComplete() is false from then on.
class SERVICE_TEXT {
  public:
    explicit SERVICE_TEXT(const char *lpszLineEnd) noexcept : m_lpszLineEnd(lpszLineEnd) {}

    void AppendLine(const char *lpszLine) noexcept {
        Append(lpszLine);
        Append(m_lpszLineEnd);
    }
    [[nodiscard]] bool IsComplete() const noexcept { return m_bComplete; }
    [[nodiscard]] const char *Text() const noexcept { return m_szText; }
    [[nodiscard]] std::size_t Length() const noexcept { return m_dwLength; }

  private:
    void Append(const char *lpszPiece) noexcept {
        const std::size_t dwPiece = std::strlen(lpszPiece);
        if (!m_bComplete || dwPiece >= sizeof m_szText - m_dwLength) {
            m_bComplete = false;
            return;
        }
        std::memcpy(m_szText + m_dwLength, lpszPiece, dwPiece + 1);
        m_dwLength += dwPiece;
    }

    const char *m_lpszLineEnd;
    std::size_t m_dwLength = 0;
    bool m_bComplete = true;
    char m_szText[VX_SERVICE_INFO_CAPACITY] = {};
};

#endif  // VXGETINF_SERVICE_TEXT_H
