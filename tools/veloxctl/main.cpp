// veloxctl: the groups that must start at once; every other one is veloxctl-all's.
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include "failure.h"
#include "groups.h"
#include "program.h"

namespace {

// Becomes veloxctl-all, which stands in the product's lib folder beside this program's bin.
int StartAll(char **argv) {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    std::string folder(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    folder.resize(folder.find_last_of('/') + 1);
    const std::string program = folder + "../lib/veloxctl/veloxctl-all";
    execv(program.c_str(), argv);
    veloxctl::Fail(EX_OSFILE, "cannot start " + program + ": " + std::strerror(errno));
}

}  // namespace

int main(int argc, char **argv) {
    return veloxctl::RunProgram(veloxctl::kQuickGroups, argc, argv, StartAll);
}
