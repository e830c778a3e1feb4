#include "item_import.h"

#include <amcrtcpy.h>
#include <ntwin32/registry.h>
#include <records/customer_items.h>

#include <cstring>

#include "registry/catalogue.h"
#include "steps.h"

static bool Refuse(const char *lpszMessage) noexcept {
    TRACE_STEP(TRACE_FAILURE, "%s", lpszMessage);
    return false;
}

// The number that stands for a customer kind's text; 0 for a text that is none.
static DWORD CustomerKind(const char *lpszText) noexcept {
    if (std::strcmp(lpszText, CatalogueText("Corporate")) == 0) {
        return CUSTOMER_KIND_CORPORATE;
    }
    return std::strcmp(lpszText, CatalogueText("Personal")) == 0 ? CUSTOMER_KIND_PERSONAL : 0;
}

static bool StoreNumber(const char *lpszKey, const ITEM_VALUE &value,
                        const STORE_MESSAGES &messages) noexcept {
    const DWORD dwKind = CustomerKind(value.lpszText);
    if (dwKind == 0) {
        return Refuse(messages.lpszMismatch);
    }
    if (AMACRERegCreateKey(HKEY_LOCAL_MACHINE, lpszKey) == FALSE) {
        return Refuse(messages.lpszCreateKeyForNumber);
    }
    if (AMACRERegWriteDword(HKEY_LOCAL_MACHINE, lpszKey, value.lpRow->lpszValueName, dwKind) ==
        FALSE) {
        return Refuse(messages.lpszWriteNumber);
    }
    return true;
}

static bool StoreText(const char *lpszKey, const ITEM_VALUE &value,
                      const STORE_MESSAGES &messages) noexcept {
    if (AMACRERegCreateKey(HKEY_LOCAL_MACHINE, lpszKey) == FALSE) {
        return Refuse(messages.lpszCreateKeyForText);
    }
    char szName[32];
    if (!FormatText(szName, sizeof szName, "%s%s", value.lpRow->lpszValueName, value.lpszNumber) ||
        AMACRERegWriteSz(HKEY_LOCAL_MACHINE, lpszKey, szName, value.lpszText) == FALSE) {
        return Refuse(messages.lpszWriteText);
    }
    return true;
}

bool StoreItem(const ITEM_VALUE &value, void *lpContext) noexcept {
    const auto &rules = *static_cast<const STORE_RULES *>(lpContext);
    const STORE_MESSAGES &messages = value.bLast ? rules.last : rules.during;
    return value.lpRow->dwType == REG_DWORD ? StoreNumber(rules.lpszKey, value, messages)
                                            : StoreText(rules.lpszKey, value, messages);
}

void TraceParseFailure(const ITEM_PARSER &parser) noexcept {
    TRACE_STEP(TRACE_NOTE, "Status = %d", static_cast<int>(parser.eState));
    TRACE_STEP(TRACE_NOTE, "chBuf :%s", parser.line.szText);
    TRACE_STEP(TRACE_NOTE, "ItemName : %s", IsItemLine(parser.line) ? "TRUE" : "FALSE");
}
