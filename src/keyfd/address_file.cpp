// The second stage of the import: the address file into "SOFTWARE\XEV\VLXService\SETUP".
#include <cstring>

#include "item_import.h"
#include "keyfd/disk_lines.h"
#include "keyfd/keyfd.h"
#include "registry/keys.h"
#include "steps.h"

static constexpr STORE_RULES STORE_ADDRESSES = {
    VLX_KEY_SETUP,
    {"CreateKey Error5!", "WriteSz Error3!", nullptr, nullptr, nullptr},
    {"CreateKey Error6!", "WriteSz Error4!", nullptr, nullptr, nullptr},
};

static bool WalkAddressFile(DISK_LINES *lpLines, ITEM_PARSER *lpParser) noexcept {
    DISK_LINE_RESULT eResult = NextDiskLine(lpLines);
    while (eResult == DISK_LINE_READ) {
        if (!TakeItemLine(lpParser, lpLines->szText, std::strlen(lpLines->szText))) {
            return false;
        }
        eResult = NextDiskLine(lpLines);
    }
    return eResult == DISK_LINE_END && TakeItemsEnd(lpParser);
}

DWORD ImportAddressFile(const char *lpszPath, ITEM_LANGUAGE eLanguage) noexcept {
    DISK_LINES lines = {{},
                        "GetFileLine AMVLXADR.INF Error1!",
                        "GetFileLine AMVLXADR.INF Error2!",
                        "GetFileLine AMVLXADR.INF Error3!",
                        false,
                        {}};
    if (!OpenDiskLines(&lines, lpszPath)) {
        TRACE_STEP(TRACE_FAILURE, "Create AMVLXADR.INF Failed!");
        return KEYFD_FAILED;
    }
    STORE_RULES rules = STORE_ADDRESSES;
    ITEM_PARSER parser;
    StartItems(&parser, ADDRESS_RULES, eLanguage, StoreItem, &rules);
    if (!WalkAddressFile(&lines, &parser)) {
        TraceParseFailure(parser);
        return KEYFD_FAILED;
    }
    return KEYFD_IMPORTED;
}
