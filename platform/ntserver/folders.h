// The daemon's folders and the locks that keep a second daemon away.
#ifndef NTSERVER_FOLDERS_H
#define NTSERVER_FOLDERS_H

#include <string>

#include "base/descriptor.h"

namespace ntserver {

struct Folders {
    std::string root;   // of the product
    std::string store;  // below the state folder, 0700
    std::string run;    // holds the socket
};

// Where they are; false with *problem when a variable holds no absolute path.
bool FindFolders(Folders *folders, std::string *problem);

// Makes what is missing and gives the store's folder its mode.
bool PrepareFolders(const Folders &folders, std::string *problem);

// Takes the lock file `name` of a folder for as long as the descriptor lives. Fails when another
// process holds it.
bool LockFolder(const std::string &folder, const char *name, const char *holder_does,
                base::UniqueDescriptor *lock, std::string *problem);

// Makes a renamed or new file of a folder durable.
bool SyncFolder(const std::string &folder) noexcept;

}  // namespace ntserver

#endif  // NTSERVER_FOLDERS_H
