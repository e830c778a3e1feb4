// Colon-separated lists with a bound; velox/sub_key.h has the public function without one.
#ifndef AMRSET_SEPARATED_LIST_H
#define AMRSET_SEPARATED_LIST_H

#include <ntwin32/types.h>

// SeperateString for an array of dwCapacity pointers: fields beyond it are cut off the list, but
// not stored. Its trace records are those of SeperateString.
void SeperateStringBounded(char *lpInString, char **lplpOutString, DWORD dwCapacity) noexcept;

#endif  // AMRSET_SEPARATED_LIST_H
