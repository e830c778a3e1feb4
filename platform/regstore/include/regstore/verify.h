// Proving a store sound before anything trusts it.
//
// The store's file is read page by page, without LMDB and without a map, so that no content and no
// missing page can crash or mislead the reader: every page that is in use is there, is what its
// place in the tree says, belongs to the tree once and is not on the list of free pages. Every
// record then holds its checksum and agrees with its neighbours: each key hangs below its parent
// under its name, and all counts and orders are right.
#ifndef REGSTORE_VERIFY_H
#define REGSTORE_VERIFY_H

#include <cstdint>
#include <string>

#include "regstore/tree_check.h"
#include "regstore/writer.h"

namespace regstore {

struct Verdict {
    bool sound = false;
    std::string damage;  // one sentence, when not sound
    Totals totals;
};

// Verifies the state that `heads` tell of, in the file behind a descriptor.
Verdict Verify(int descriptor, const Heads &heads);

}  // namespace regstore

#endif  // REGSTORE_VERIFY_H
