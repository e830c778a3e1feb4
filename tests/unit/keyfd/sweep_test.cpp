// Every call of the platform and every allocation fails in turn, and disks of random bytes: the
// documented result, nothing left open, nothing invented, no crash.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "key_disk_fixture.h"

namespace {

class SweepTest : public KeyDiskTest {
  protected:
    static void Prepare() {
        StartAgain();
        fakes::StoreText(kSetup, "VERSION", "3.1");
        fakes::CreateKey(kDestination);
        Customer("[CONTRACT]\r\nPersonal\r\n[SUB-N-CODE 02]\r\nA\r\n");
        Heartbeat("[HEART-BEAT-INT]\r\n0\r\n");
    }

    static std::vector<std::string> CallNames() {
        std::vector<std::string> names;
        for (const fakes::Call &call : fakes::Calls()) {
            names.push_back(call.function);
        }
        return names;
    }

    // Names of the values that are in the registry.
    static std::vector<std::string> StoredNames() {
        std::vector<std::string> names;
        for (const char *key : {kSetting, kSetup, kHeartbeat, kDestination}) {
            const std::vector<std::string> values = fakes::ValueNames(key);
            names.insert(names.end(), values.begin(), values.end());
        }
        return names;
    }

    static void ExpectNothingOpen() {
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::OpenFiles(), 0);
        EXPECT_EQ(fakes::GlobalBlocks(), 0);
        EXPECT_EQ(fakes::TheLibc().open_mount_tables, 0);
    }
};

// The calls of one run in order, each with the exit status of a run in which it fails.
struct Step {
    const char *call;
    LONG status;
};

const Step kSteps[] = {
    {"getOSDistribution", 1},
    {"GetSystemDefaultLangID", 1},
    {"GetSystemDefaultLANG", 1},
    {"setlocale", 1},
    {"bindtextdomain", 1},
    {"textdomain", 1},
    {"setmntent", 200},
    {"endmntent", 1},
    // Customer file.
    {"UUCdDeCodingFromFile", 200},
    {"GlobalAlloc", 200},
    {"GlobalSize", 200},
    {"kes_AnkZen", 200},
    {"ecm_SJIStoEUC", 200},
    {"GlobalFree", 1},
    {"dcgettext", 1},
    {"dcgettext", 1},
    {"AMACRERegCreateKey", 200},
    {"RegCreateKey", 200},
    {"RegCloseKey", 1},
    {"AMACRERegWriteDword", 200},
    {"RegOpenKeyEx", 200},
    {"RegSetValueEx", 200},
    {"RegCloseKey", 1},
    {"AMACRERegCreateKey", 200},
    {"RegCreateKey", 200},
    {"RegCloseKey", 1},
    {"AMACRERegWriteSz", 200},
    {"RegOpenKeyEx", 200},
    {"RegSetValueEx", 200},
    {"RegCloseKey", 1},
    {"AMACRERegWriteDword", 200},
    {"RegOpenKeyEx", 200},
    {"RegSetValueEx", 200},
    {"RegCloseKey", 1},
    // Address file.
    {"CreateFile", 200},
    {"ReadFile", 200},
    {"ecm_SJIStoEUC", 200},
    {"ReadFile", 200},
    {"AMACRERegCreateKey", 200},
    {"RegCreateKey", 200},
    {"RegCloseKey", 1},
    {"AMACRERegWriteSz", 200},
    {"RegOpenKeyEx", 200},
    {"RegSetValueEx", 200},
    {"RegCloseKey", 1},
    {"CloseHandle", 1},
    // Heart-beat file, which may be missing.
    {"CreateFile", 1},
    {"ReadFile", 200},
    {"ecm_SJIStoEUC", 200},
    {"dcgettext", 1},
    {"ReadFile", 200},
    {"CloseHandle", 1},
    {"AMACRERegCreateKey", 200},
    {"RegCreateKey", 200},
    {"RegCloseKey", 1},
    {"AMACRERegWriteDword", 200},
    {"RegOpenKeyEx", 200},
    {"RegSetValueEx", 200},
    {"RegCloseKey", 1},
    // Mail address, version, interval (which need not be readable).
    {"RegOpenKeyEx", 0},
    {"RegQueryValueEx", 0},
    {"RegCloseKey", 1},
    {"RegOpenKeyEx", 0},
    {"RegSetValueEx", 0},
    {"RegCloseKey", 1},
    {"RegOpenKeyEx", 0},
    {"RegQueryValueEx", 0},
    {"RegCloseKey", 1},
    {"RegOpenKeyEx", 0},
    {"RegSetValueEx", 0},
    {"RegCloseKey", 1},
    {"RegOpenKeyEx", 1},
    {"RegQueryValueEx", 1},
    {"RegCloseKey", 1},
    {"RegOpenKeyEx", 0},
    {"RegSetValueEx", 0},
    {"RegCloseKey", 1},
    // The computer's name, which need not be stored.
    {"GetComputerName", 1},
    {"AMACRERegCreateKey", 1},
    {"RegCreateKey", 1},
    {"RegCloseKey", 1},
    {"AMACRERegWriteSz", 1},
    {"RegOpenKeyEx", 1},
    {"RegSetValueEx", 1},
    {"RegCloseKey", 1},
};

TEST_F(SweepTest, TheCallsOfARun) {
    Prepare();
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    std::vector<std::string> expected;
    for (const Step &step : kSteps) {
        expected.emplace_back(step.call);
    }
    EXPECT_EQ(CallNames(), expected);
}

TEST_F(SweepTest, EachCallFailsInTurn) {
    Prepare();
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    const std::vector<std::string> all = StoredNames();
    int nth = 0;
    for (const Step &step : kSteps) {
        ++nth;
        SCOPED_TRACE(std::to_string(nth) + " " + step.call);
        Prepare();
        fakes::FailAnyCall(nth);
        EXPECT_EQ(GetOpenMsgfromFD(), step.status);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
        EXPECT_THAT(all, ::testing::IsSupersetOf(StoredNames()));
        ExpectNothingOpen();
    }
}

// A failed write ends the import: what was stored before it stays, nothing after it is tried.
TEST_F(SweepTest, EachImportedValueFailsInTurn) {
    Prepare();
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    const std::vector<std::string> all = Writes();
    ASSERT_EQ(all.size(), 5U);
    for (std::size_t i = 0; i < all.size(); ++i) {
        Prepare();
        fakes::FailCall("RegSetValueEx", static_cast<int>(i) + 1);
        EXPECT_EQ(Import(), KEYFD_FAILED);
        EXPECT_EQ(Writes(), std::vector<std::string>(
                                all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i) + 1));
        // The version was there before the import.
        EXPECT_EQ(StoredNames().size(), i + 1);
    }
}

TEST_F(SweepTest, EachAllocationFailsInTurn) {
    Prepare();
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    const int allocations = fakes::Allocations();
    EXPECT_EQ(allocations, 2) << "the two buffers of the customer file";
    for (int nth = 1; nth <= allocations; ++nth) {
        Prepare();
        fakes::FailAllocation(nth);
        EXPECT_EQ(GetOpenMsgfromFD(), SETUP_IMPORT_FAILED) << nth;
        ExpectNothingOpen();
    }
}

// Text of the grammar's own pieces and bytes that break them, so that random disks get far.
std::string RandomText(std::mt19937 &random) {
    static const std::vector<std::string> pieces = {"[",
                                                    "]",
                                                    "\r\n",
                                                    "\n",
                                                    "\r",
                                                    "\x1A",
                                                    "CONTRACT",
                                                    "*",
                                                    "USER-NAME",
                                                    "SUB-N-CODE ",
                                                    "01",
                                                    "Personal",
                                                    "E-MAIL",
                                                    "PHONENO",
                                                    "\x88\x9F",
                                                    "\x83\x5D",
                                                    "\xB1",
                                                    "\x81",
                                                    "\xFF",
                                                    std::string(1, '\0'),
                                                    " ",
                                                    "\t",
                                                    "7",
                                                    "[HEART-BEAT-INT]\r\n",
                                                    "[USER-NAME]\r\n",
                                                    "[E-MAIL]\r\n",
                                                    std::string(1000, 'x')};
    std::string text;
    if (random() % 4 != 0) {
        text = pieces[23 + random() % 3];
    }
    for (std::size_t count = random() % 24; count > 0; --count) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST_F(SweepTest, DisksOfRandomBytes) {
    std::mt19937 random(12648430);
    int imported = 0;
    for (int round = 0; round < 1500; ++round) {
        Prepare();
        if (random() % 8 == 0) {
            Japanese();
        }
        Customer(random() % 2 == 0 ? "[*]\r\nA\r\n" : RandomText(random));
        Address(random() % 2 == 0 ? "" : RandomText(random));
        Heartbeat(RandomText(random));
        fakes::LimitReads(static_cast<DWORD>(1 + random() % 2000));
        const DWORD result = Import();
        ASSERT_TRUE(result == KEYFD_IMPORTED || result == KEYFD_FAILED) << round;
        imported += result == KEYFD_IMPORTED ? 1 : 0;
        EXPECT_EQ(fakes::Trace().back().text, "<return " + std::to_string(result) + ".");
        ExpectNothingOpen();
    }
    EXPECT_GT(imported, 20) << "the texts are too wild to reach the last file";
}

}  // namespace
