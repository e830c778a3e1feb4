// Items into the registry: what the imports of the customer file and of the address file share.
#ifndef KEYFD_ITEM_IMPORT_H
#define KEYFD_ITEM_IMPORT_H

#include "keyfd/item_parser.h"

// The messages of one item's failures; the customer kind's (a number) are null where there is none.
struct STORE_MESSAGES {
    const char *lpszCreateKeyForText;
    const char *lpszWriteText;
    const char *lpszMismatch;
    const char *lpszCreateKeyForNumber;
    const char *lpszWriteNumber;
};

struct STORE_RULES {
    const char *lpszKey;
    STORE_MESSAGES during;  // items followed by another one
    STORE_MESSAGES last;
};

// An ITEM_SINK whose context is a const STORE_RULES.
bool StoreItem(const ITEM_VALUE &value, void *lpContext) noexcept;

// The rows that follow every failure inside a parse: state, line, and whether it is an item line.
void TraceParseFailure(const ITEM_PARSER &parser) noexcept;

#endif  // KEYFD_ITEM_IMPORT_H
