#include "regstore/verify.h"

#include "regstore/record_check.h"

namespace regstore {

Verdict Verify(int descriptor, const Heads &heads) {
    Verdict verdict;
    RecordCheck records;
    verdict.sound =
        CheckTrees(descriptor, heads, &records, &verdict.damage) && records.Finish(&verdict.damage);
    verdict.totals = records.Counted();
    return verdict;
}

}  // namespace regstore
