#include "velox/service_info.h"

#include <ntwin32/system.h>
#include <records/customer_items.h>

#include <cstdlib>

#include "registry/catalogue.h"
#include "registry/keys.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "service_text.h"
#include "velox/contract_items.h"

namespace {

constexpr char TRACE_SOURCE[] = "vxgetinf";

// What the two exported functions do differently. All trace records carry the exported name.
struct VARIANT {
    const char *lpszFunction;
    const char *lpszLineEnd;
    int nKindLevel;  // trace level of a customer kind that is missing or unknown
    const char *lpszMemoryTrace;
    bool bReportProduct;
};

constexpr VARIANT VARIANT_PLAIN = {"GetVlxServiceInfo", "\n", TRACE_FAILURE,
                                   "<malloc *lphData failed.return FALSE.", false};
constexpr VARIANT VARIANT_MAIL = {"GetVlxServiceInfo_Mail", "\r\n", TRACE_NOTE,
                                  "<malloc *lphData error", true};

// The most of one value that is read, and one byte for the end of an unterminated one.
using VALUE = char[4096 + 1];

void SelectHeadings() noexcept {
    const bool bJapanese = GetSystemDefaultLangID() == LANGID_JAPANESE;
    VX_TEXT_USER = bJapanese ? VX_TEXT_USER_jp : VX_TEXT_USER_en;
    VX_TEXT_MACHINE = bJapanese ? VX_TEXT_MACHINE_jp : VX_TEXT_MACHINE_en;
    VX_TEXT_OPTION = bJapanese ? VX_TEXT_OPTION_jp : VX_TEXT_OPTION_en;
    VX_TEXT_SHOP = bJapanese ? VX_TEXT_SHOP_jp : VX_TEXT_SHOP_en;
}

bool AppendContract(const VARIANT &variant, SERVICE_TEXT &text) noexcept {
    const char *lpszValue = VX_REG_USER[VX_REG_USER_KIND];
    DWORD dwKind = 0;
    if (!ReadNumber(VLX_KEY_SETTING, lpszValue, &dwKind)) {
        TRACE_AS(variant.lpszFunction, variant.nKindLevel, "<AMAMRegReadEx %s/%s failed.",
                 VLX_KEY_SETTING, lpszValue);
        return false;
    }
    text.AppendLine(CatalogueText("[CONTRACT]"));
    switch (dwKind) {
        case CUSTOMER_KIND_CORPORATE:
            text.AppendLine(CatalogueText("Corporate"));
            return true;
        case CUSTOMER_KIND_PERSONAL:
            text.AppendLine(CatalogueText("Personal"));
            return true;
        default:
            TRACE_AS(variant.lpszFunction, variant.nKindLevel, "<[KAISHAKBN error]%d",
                     static_cast<int>(dwKind));
            return false;
    }
}

// The value line of an item whose heading line stands already; its value is in szValue.
void AppendValue(const VARIANT &variant, const char *lpszHeading, const VALUE &szValue,
                 SERVICE_TEXT &text) noexcept {
    text.AppendLine(szValue);
    TRACE_AS(variant.lpszFunction, TRACE_NOTE, "%s:%s", lpszHeading, szValue);
}

void AppendItem(const VARIANT &variant, const char *lpszHeading, const char *lpszValue,
                SERVICE_TEXT &text) noexcept {
    VALUE szValue;
    text.AppendLine(lpszHeading);
    if (!ReadText(VLX_KEY_SETTING, lpszValue, szValue)) {
        TRACE_AS(variant.lpszFunction, TRACE_FAILURE, "AMAMRegReadEx %s failed.", lpszValue);
    }
    AppendValue(variant, lpszHeading, szValue, text);
}

void AppendUser(const VARIANT &variant, SERVICE_TEXT &text) noexcept {
    for (int nItem = 0; nItem < VX_USER_ITEMS; ++nItem) {
        if (VX_TEXT_USER[nItem][0] != '\0') {
            AppendItem(variant, VX_TEXT_USER[nItem], VX_REG_USER[nItem + 1], text);
        }
    }
}

// The product code that is reported in place of the device code, where one is set.
bool ReadReportProduct(VALUE &szValue) noexcept {
    char szProduct[512 + 1];
    return ReadText(AM_KEY_ALERTREPORT, "ReportProduct", szProduct) && szProduct[0] != '\0' &&
           CopyText(szValue, szProduct);
}

void AppendMachine(const VARIANT &variant, SERVICE_TEXT &text) noexcept {
    for (int nItem = 0; nItem < VX_MACHINE_ITEMS; ++nItem) {
        const char *lpszHeading = VX_TEXT_MACHINE[nItem];
        VALUE szProduct;
        if (variant.bReportProduct && nItem == VX_REG_MACHINE_PRODUCT &&
            ReadReportProduct(szProduct)) {
            text.AppendLine(lpszHeading);
            AppendValue(variant, lpszHeading, szProduct, text);
        } else {
            AppendItem(variant, lpszHeading, VX_REG_MACHINE[nItem], text);
        }
    }
}

// A count that no buffer could hold ends with the buffer, not after four thousand million reads.
bool AppendOptions(const VARIANT &variant, SERVICE_TEXT &text) noexcept {
    const char *lpszCount = VX_REG_OPTION[VX_REG_OPTION_COUNT];
    DWORD dwCount = 0;
    if (!ReadNumber(VLX_KEY_SETTING, lpszCount, &dwCount)) {
        TRACE_AS(variant.lpszFunction, TRACE_FAILURE, "<AMAMRegReadEx %s failed.", lpszCount);
        return false;
    }
    for (DWORD dwOption = 1; dwOption <= dwCount && text.IsComplete(); ++dwOption) {
        const int nOption = static_cast<int>(dwOption);
        char szHeading[sizeof(VX_ITEM_TEXT) + 16];  // a row and the digits of any number
        char szValueName[sizeof(VX_ITEM_TEXT) + 16];
        if (!FormatText(szHeading, sizeof szHeading, VX_TEXT_OPTION[0], nOption) ||
            !FormatText(szValueName, sizeof szValueName, "%s%02d",
                        VX_REG_OPTION[VX_REG_OPTION_CODE], nOption)) {
            return false;
        }
        AppendItem(variant, szHeading, szValueName, text);
    }
    return true;
}

void AppendShop(const VARIANT &variant, SERVICE_TEXT &text) noexcept {
    for (int nItem = 0; nItem < VX_SHOP_ITEMS; ++nItem) {
        AppendItem(variant, VX_TEXT_SHOP[nItem], VX_REG_SHOP[nItem], text);
    }
}

// A copy of the text in zeroed memory; null when the text is incomplete or there is no memory. The
// block has at least 17 bytes more than the text and a size that is a multiple of 16.
char *CopyToCaller(const VARIANT &variant, const SERVICE_TEXT &text) noexcept {
    if (!text.IsComplete()) {
        TRACE_AS(variant.lpszFunction, TRACE_FAILURE,
                 "the text does not fit the buffer of %d bytes.", VX_SERVICE_INFO_CAPACITY);
    } else {
        const std::size_t dwSize = (text.Length() + 33) / 16 * 16;
        if (auto *lpCopy = static_cast<char *>(std::calloc(1, dwSize)); lpCopy != nullptr) {
            std::memcpy(lpCopy, text.Text(), text.Length());
            return lpCopy;
        }
    }
    TRACE_AS(variant.lpszFunction, TRACE_MEMORY, "%s", variant.lpszMemoryTrace);
    return nullptr;
}

BOOL BuildServiceInfo(const VARIANT &variant, char **lphData, DWORD *lpdwLen) noexcept {
    TRACE_AS(variant.lpszFunction, TRACE_NOTE, ">lphData=%p,lpdwLen=%p",
             static_cast<void *>(lphData), static_cast<void *>(lpdwLen));
    SelectHeadings();
    UseCatalogue("en_US", CATALOGUE_VELOX);
    *lpdwLen = 0;

    SERVICE_TEXT text(variant.lpszLineEnd);
    if (!AppendContract(variant, text)) {
        return FALSE;
    }
    AppendUser(variant, text);
    AppendMachine(variant, text);
    if (!AppendOptions(variant, text)) {
        return FALSE;
    }
    AppendShop(variant, text);

    char *lpCopy = CopyToCaller(variant, text);
    if (lpCopy == nullptr) {
        return FALSE;
    }
    *lphData = lpCopy;
    *lpdwLen = static_cast<DWORD>(text.Length());
    TRACE_AS(variant.lpszFunction, TRACE_NOTE, "<*lphData=%s,return TRUE.", *lphData);
    return TRUE;
}

}  // namespace

BOOL GetVlxServiceInfo(char **lphData, DWORD *lpdwLen) noexcept {
    return BuildServiceInfo(VARIANT_PLAIN, lphData, lpdwLen);
}

BOOL GetVlxServiceInfo_Mail(char **lphData, DWORD *lpdwLen) noexcept {
    return BuildServiceInfo(VARIANT_MAIL, lphData, lpdwLen);
}
