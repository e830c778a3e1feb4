// The items of a customer file's text, for GetUSRInfo. The grammar's words are those of the import
// (keyfd/item_text.h); what the two do differently stands in user_items.cpp.
#ifndef SECGETINF_USER_ITEMS_H
#define SECGETINF_USER_ITEMS_H

#include <ntwin32/types.h>

#include <cstddef>

#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "secgetinf";

// The records of every step name the function "GetUSRInfo".
#define TRACE_STEP(nLevel, ...) TRACE_AS("GetUSRInfo", (nLevel), __VA_ARGS__)

// Stores the items of the text (dwSize bytes of EUC-JP) in lplpszItems, USR_INFO_ITEM_COUNT places
// that are null or hold malloc blocks. Gives GetUSRInfo's result.
LONG ReadUserItems(const char *lpText, DWORD dwSize, char **lplpszItems) noexcept;

#endif  // SECGETINF_USER_ITEMS_H
