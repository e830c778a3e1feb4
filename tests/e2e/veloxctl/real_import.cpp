#include "real_import.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "support/server.h"
#include "support/temp_folder.h"

namespace veloxctl_test {

namespace {

constexpr int kNotMounted = 99;

[[noreturn]] void MountAndImport(const std::string &folder, const std::string &place,
                                 const std::string &language) {
    ::setenv("KES_LANG", language.c_str(), 1);
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount(folder.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) != 0) {
        ::_exit(kNotMounted);
    }
    const std::string program = test_support::ProductRoot() + "/bin/vlxfd";
    ::execl(program.c_str(), "vlxfd", nullptr);
    ::_exit(127);
}

}  // namespace

int ImportStatus(const std::string &folder, const std::string &language,
                 const std::string &mounted_on) {
    const test_support::TempFolder parent;
    const std::string place = parent / mounted_on;
    std::filesystem::create_directory(place);
    const pid_t process = ::fork();
    if (process == 0) {
        MountAndImport(folder, place, language);
    }
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace veloxctl_test
