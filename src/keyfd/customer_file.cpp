// The first stage of the import: the customer file into "SOFTWARE\XEV\VLXService\SETTING".
#include <amcrtcpy.h>
#include <ntwin32/registry.h>

#include "item_import.h"
#include "keyfd/customer_text.h"
#include "keyfd/keyfd.h"
#include "registry/keys.h"
#include "steps.h"

static constexpr STORE_RULES STORE_CUSTOMER = {
    VLX_KEY_SETTING,
    {"CreateKey Error1!", "WriteSz Error1!", "Mismatch data1 error!", "CreateKey Error2!",
     "WriteData Error1!"},
    {"CreateKey Error3!", "WriteSz Error2!", "Mismatch data error!", "CreateKey Error4!",
     "WriteData Error2!"},
};

// The highest option number, once every item is stored.
static bool StoreOptionCount(int nHighest) noexcept {
    if (nHighest == 0) {
        return true;
    }
    TRACE_STEP(TRACE_NOTE, "dwOptNum : %d", nHighest);
    if (AMACRERegWriteDword(HKEY_LOCAL_MACHINE, VLX_KEY_SETTING, CUSTOMER_OPTION_COUNT_VALUE,
                            static_cast<DWORD>(nHighest)) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "WriteData Error3!");
        return false;
    }
    return true;
}

DWORD ImportCustomerFile(const char *lpszPath, ITEM_LANGUAGE eLanguage) noexcept {
    CUSTOMER_TEXT text = {};
    if (!ReadCustomerText(lpszPath, &text)) {
        return KEYFD_FAILED;
    }
    STORE_RULES rules = STORE_CUSTOMER;
    ITEM_PARSER parser;
    StartItems(&parser, CUSTOMER_RULES, eLanguage, StoreItem, &rules);
    if (!WalkCustomerText(text.text.Get(), text.dwSize, &parser) ||
        !StoreOptionCount(parser.nHighestNumber)) {
        TraceParseFailure(parser);
        return KEYFD_FAILED;
    }
    return KEYFD_IMPORTED;
}
