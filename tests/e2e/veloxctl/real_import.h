// The import itself, for comparison: runs vlxfd on a folder, in a mount namespace of its own.
#ifndef VELOXCTL_TEST_REAL_IMPORT_H
#define VELOXCTL_TEST_REAL_IMPORT_H

#include <string>

namespace veloxctl_test {

// The exit status of vlxfd with the folder mounted on a folder of the given name, which is the key
// disk's; language is en or ja.
int ImportStatus(const std::string &folder, const std::string &language,
                 const std::string &mounted_on = "floppy");

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_REAL_IMPORT_H
