// The libc calls that a test controls. Each is replaced at link time where the test names it in
// velox_add_test(... WRAP function): setmntent getmntent endmntent, gethostbyname, sleep, time,
// malloc calloc, setlocale bindtextdomain textdomain dcgettext, syslog, puts, fstat read.
// All but malloc and calloc are logged as platform calls and obey FailCall.
#ifndef FAKES_LIBC_H
#define FAKES_LIBC_H

#include <ctime>
#include <string>
#include <vector>

namespace fakes {

struct Mount {
    std::string device;
    std::string directory;
};

struct Libc {
    std::vector<Mount> mounts;            // what /etc/mtab holds
    int open_mount_tables = 0;            // setmntent without endmntent
    std::string host_address;             // gethostbyname's answer, dotted; empty: not found
    std::vector<unsigned> sleeps;         // seconds of each sleep, which returns at once
    std::time_t now = 1709600000;         // 2024-03-05 00:53:20 UTC
    std::vector<std::string> system_log;  // "priority text"
    std::vector<std::string> printed;     // lines of puts
    bool short_reads = false;             // read gives a byte less than there is
    std::vector<std::pair<std::string, std::string>> catalogue;  // "domain:message" and translation
};
Libc &TheLibc();

// Makes the nth malloc or calloc from now on fail (0: none). Only calls of the code that is linked
// with the wrapper count, not those of the C++ library.
void FailAllocation(int nth);
// Allocations of the wrapped code since the last Reset.
int Allocations();

}  // namespace fakes

#endif  // FAKES_LIBC_H
