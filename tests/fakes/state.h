// What the fake's own files share.
#ifndef FAKES_STATE_H
#define FAKES_STATE_H

#include "fakes/platform.h"

namespace fakes::internal {

void Record(TraceRecord record);
void ResetRegistry();
void ResetFiles();
void ResetModules();
void ResetMemory();
void ResetAgent();
void ResetLibc();

}  // namespace fakes::internal

#endif  // FAKES_STATE_H
