// A folder with a customer file, read by GetUSRInfo on the fake platform.
#ifndef TESTS_UNIT_SECGETINF_USER_INFORMATION_H
#define TESTS_UNIT_SECGETINF_USER_INFORMATION_H

#include "velox/user_information.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <optional>
#include <string>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "support/encoding.h"
#include "support/temp_folder.h"

class UserInformationTest : public fakes::PlatformTest {
  protected:
    void TearDown() override {
        FreeUSRInfo(&information_);
        PlatformTest::TearDown();
    }

    std::string Folder() const { return folder_ / ""; }
    std::string File() const { return folder_ / "AMVLXUSR.INF"; }

    // The file's bytes as they stand on the disk, and its decoded ones.
    void PutBytes(const std::string &bytes) const {
        std::ofstream(File(), std::ios::binary) << bytes;
    }
    void PutText(const std::string &decoded) const { PutBytes(fakes::FakeEncode(decoded)); }

    LONG Read() { return GetUSRInfo(Folder().c_str(), &information_); }
    LONG ReadText(const std::string &decoded) {
        PutText(decoded);
        return Read();
    }

    // The items that were handed out, by index.
    std::map<int, std::string> Items() const {
        std::map<int, std::string> items;
        for (int index = 0; information_ != nullptr && index < USR_INFO_ITEM_COUNT; ++index) {
            if (information_[index] != nullptr) {
                items[index] = information_[index];
            }
        }
        return items;
    }

    // The failures' records, "level text".
    static std::vector<std::string> Failures() { return fakes::TraceLines(1); }

    test_support::TempFolder folder_;
    char **information_ = nullptr;
};

#endif  // TESTS_UNIT_SECGETINF_USER_INFORMATION_H
