// A key disk on the fake platform: mounted on /mnt/floppy, with the files that the test gives it.
#ifndef TESTS_UNIT_KEYFD_KEY_DISK_FIXTURE_H
#define TESTS_UNIT_KEYFD_KEY_DISK_FIXTURE_H

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "keyfd/keyfd.h"
#include "support/encoding.h"

inline constexpr char kSetting[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
inline constexpr char kSetup[] = "SOFTWARE\\XEV\\VLXService\\SETUP";
inline constexpr char kHeartbeat[] = "SOFTWARE\\XEV\\VLXService\\HEARTBEAT";
inline constexpr char kDestination[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";

// A file of items that the import refuses, and the rows of its failure.
struct RefusedFile {
    std::string title;
    std::string text;
    std::string message;
    int state = 0;
    std::string line = {};
    bool item_line = false;
    std::vector<std::string> written_before = {};
    bool japanese = false;
};

class KeyDiskTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        PutDiskIn();
    }

    void TearDown() override {
        EXPECT_EQ(fakes::TheLibc().open_mount_tables, 0) << "mount table left open";
        PlatformTest::TearDown();
    }

    // A mounted disk with the two files that must be there.
    static void PutDiskIn() {
        fakes::TheLibc().mounts = {{"/dev/sda1", "/"}, {"/dev/fd0", "/mnt/floppy"}};
        Customer("[USER-NAME]\r\nEXAMPLE\r\n");
        Address("[E-MAIL]\r\na@b.example\r\n");
    }

    // A run on an untouched platform, for tests that import several disks.
    static void StartAgain() {
        fakes::Reset();
        PutDiskIn();
    }

    static void Japanese() { fakes::TheSystem().language_id = 1041; }

    // The customer file's decoded bytes.
    static void Customer(const std::string &bytes) {
        fakes::AddEncodedFile("/mnt/floppy/AMVLXUSR.INF", bytes);
    }
    static void Address(const std::string &bytes) {
        fakes::AddFile("/mnt/floppy/AMVLXADR.INF", bytes);
    }
    static void Heartbeat(const std::string &bytes) {
        fakes::AddFile("/mnt/floppy/AMVLXHBI.INF", bytes);
    }

    static DWORD Import() { return CheckKeyFD('A'); }

    // The records of CheckKeyFD itself, without those of the reader's functions.
    static std::vector<std::string> ImportTrace() { return fakes::TraceLinesOf("CheckKeyFD"); }

    // The last `count` records of CheckKeyFD.
    static std::vector<std::string> LastTrace(std::size_t count) {
        std::vector<std::string> lines = ImportTrace();
        if (lines.size() > count) {
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
        }
        return lines;
    }

    // What follows a failure inside a parse.
    static std::vector<std::string> FailureTrace(const std::string &message, int state,
                                                 const std::string &line, bool item_line) {
        return {"1 " + message, "0 Status = " + std::to_string(state), "0 chBuf :" + line,
                std::string("0 ItemName : ") + (item_line ? "TRUE" : "FALSE"), "0 <return 1."};
    }

    // The values of the import in the order in which they were written, as "name=value".
    static std::vector<std::string> Writes() {
        std::vector<std::string> writes;
        for (const fakes::Call &call : fakes::Calls()) {
            if (call.function == "AMACRERegWriteSz" || call.function == "AMACRERegWriteDword") {
                writes.push_back(call.detail.substr(call.detail.find(' ') + 1));
            }
        }
        return writes;
    }
};

#endif  // TESTS_UNIT_KEYFD_KEY_DISK_FIXTURE_H
