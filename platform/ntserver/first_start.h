// The first start: a store with the default registry.
#ifndef NTSERVER_FIRST_START_H
#define NTSERVER_FIRST_START_H

#include <string>

#include "folders.h"

namespace ntserver {

// Makes the store from data/defaults.reg of the product root when there is none; leaves one that is
// there as it is, whatever it holds. It is made beside and renamed in, so that a start that is cut
// short leaves nothing that looks like a damaged store.
bool MakeStoreIfAbsent(const Folders &folders, std::string *problem);

}  // namespace ntserver

#endif  // NTSERVER_FIRST_START_H
