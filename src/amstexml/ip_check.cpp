#include <cstring>

#include "registry/text.h"
#include "registry/trace.h"
#include "velox/mail_base.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";
constexpr char FUNCTION[] = "AMBIMyIPCheck";

constexpr int FIELDS = 4;
constexpr int FIELD_LENGTH = 3;

// The text cut at its dots. The scan ends with the text or with the dot behind the fourth field.
struct IP_FIELDS {
    char szField[FIELDS][FIELD_LENGTH + 1];
    int nDots;
};

// False when the text has not the shape of a dotted address.
bool SplitFields(const char *lpszText, IP_FIELDS &fields) noexcept {
    int nLength = 0;
    for (; *lpszText != '\0' && fields.nDots < FIELDS; ++lpszText) {
        if (*lpszText == '.') {
            if (nLength == 0) {
                return false;
            }
            ++fields.nDots;
            nLength = 0;
        } else if (nLength == FIELD_LENGTH) {
            return false;
        } else {
            fields.szField[fields.nDots][nLength++] = *lpszText;
        }
    }
    return true;
}

bool IsDecimal(const char *lpszField) noexcept {
    return std::strspn(lpszField, "0123456789") == std::strlen(lpszField);
}

int DecimalValue(const char *lpszField) noexcept {
    int nValue = 0;
    for (; *lpszField != '\0'; ++lpszField) {
        nValue = nValue * 10 + (*lpszField - '0');
    }
    return nValue;
}

int CheckNumbers(const IP_FIELDS &fields) noexcept {
    for (const char *lpszField : fields.szField) {
        if (!IsDecimal(lpszField)) {
            TRACE_AS(FUNCTION, TRACE_FAILURE, "<invalid char.return 2.");
            return AMBI_IP_INVALID;
        }
    }
    for (const char *lpszField : fields.szField) {
        if (DecimalValue(lpszField) > 255) {
            TRACE_AS(FUNCTION, TRACE_FAILURE, "<invalid number.return 2.");
            return AMBI_IP_INVALID;
        }
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "<return 1.");
    return AMBI_IP_ADDRESS;
}

}  // namespace

int AMBIMyIPCheck(const char *szMyIPString) noexcept {
    TRACE(TRACE_NOTE, ">szMyIPString=%s", TextOrNull(szMyIPString));
    IP_FIELDS fields = {};
    if (!SplitFields(szMyIPString, fields)) {
        TRACE(TRACE_FAILURE, "<invalid IP.return 0.");
        return AMBI_IP_HOST_NAME;
    }
    if (fields.nDots != FIELDS - 1 || fields.szField[FIELDS - 1][0] == '\0') {
        TRACE(TRACE_FAILURE, "<invalid IP.return 2.");
        return AMBI_IP_INVALID;
    }
    return CheckNumbers(fields);
}
