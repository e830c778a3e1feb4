// Report destinations in a real registry.
#include <support/title.h>
#include <velox/destination_setting.h>

#include <memory>

#include "settings_fixture.h"

namespace settings_test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsSupersetOf;

using Record = std::unique_ptr<DEST_DATA>;

Record MakeRecord(DWORD action, const std::string &id, const std::string &method) {
    auto record = std::make_unique<DEST_DATA>();
    record->nAction = action;
    Fill(record->szDestID, id);
    Fill(record->szMethod, method);
    Fill(record->szCommandLine, "/usr/bin/true -x");
    Fill(record->szManagerIP, "10.0.0.9");
    record->dwPortNumber = 4711;
    Fill(record->szTelNo, "0123");
    Fill(record->szUserName, "u");
    Fill(record->szPassWord, "p");
    record->dwSchedule = 0x12;
    record->dwRetryInterval = 5;
    record->dwRetryCount = 3;
    return record;
}

struct Kind {
    const char *title;
    const char *method;
    const char *stored_method;
    std::vector<std::string> address;
};

std::vector<std::string> WrittenLines(const Kind &kind) {
    std::vector<std::string> lines = {
        "ADDRESSSET=0x1",    "ATTRIBUTE=0x1",
        "COMMENT=",          std::string("METHOD=") + kind.stored_method,
        "REPORTKIND=Report", "Address"};
    for (const std::string &line : kind.address) {
        lines.push_back("Address " + line);
    }
    lines.insert(lines.end(), {"SCHEDULE", "SCHEDULE PARAM0=0x12"});
    for (int i = 1; i <= 6; ++i) {
        lines.push_back("SCHEDULE PARAM" + std::to_string(i) + "=0xffffff");
    }
    lines.insert(lines.end(), {"SCHEDULE RETRYCOUNT=0x3", "SCHEDULE RETRYINTERVAL=0x5"});
    return lines;
}

class Destinations : public SettingsTest {};
class Kinds : public SettingsTest, public testing::WithParamInterface<Kind> {};

TEST_P(Kinds, IsAddedReadModifiedAndDeleted) {
    const Kind &kind = GetParam();
    const Record added = MakeRecord(DEST_ACTION_ADD, "ONE", kind.method);
    ASSERT_EQ(SetDestSetting(added.get()), 0);
    EXPECT_THAT(Lines(kDestinations + "\\ONE"), ElementsAreArray(WrittenLines(kind)));
    EXPECT_EQ(SetDestSetting(added.get()), -3);

    auto read = std::make_unique<DEST_DATA>();
    Fill(read->szDestID, "one");
    ASSERT_EQ(GetDestSetting(read.get()), 0);
    EXPECT_STREQ(read->szMethod, kind.stored_method);
    EXPECT_EQ(read->dwSchedule, 0x12U);
    EXPECT_EQ(read->dwRetryInterval, 5U);
    EXPECT_EQ(read->dwRetryCount, 3U);

    const Record modified = MakeRecord(DEST_ACTION_MODIFY, "ONE", kind.method);
    modified->dwRetryCount = 9;
    ASSERT_EQ(SetDestSetting(modified.get()), 0);
    EXPECT_THAT(Lines(kDestinations + "\\ONE"), IsSupersetOf({"SCHEDULE RETRYCOUNT=0x9"}));

    const Record deleted = MakeRecord(DEST_ACTION_DELETE, "ONE", kind.method);
    ASSERT_EQ(SetDestSetting(deleted.get()), 0);
    EXPECT_FALSE(KeyExists(kDestinations + "\\ONE"));
    EXPECT_EQ(SetDestSetting(modified.get()), -2);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Kinds,
    testing::Values(Kind{"Command",
                         "Run Command",
                         "Run Command",
                         {"DisplayFlag=0x1", "CommandLine=/usr/bin/true -x"}},
                    Kind{"InBand",
                         "manager (tcp_ip in-band)",
                         "Manager (TCP_IP IN-BAND)",
                         {"ManagerIP=10.0.0.9", "IPorHost=10.0.0.9", "PortNumber=0x1267"}},
                    Kind{"OutOfBand",
                         "MANAGER (TCP_IP OUT-OF-BAND)",
                         "Manager (TCP_IP Out-of-Band)",
                         {"RASENTRY=0123 u p", "ManagerIP=10.0.0.9", "IPorHost=10.0.0.9",
                          "PortNumber=0x1267", "TelNo=0123", "UserName=u", "PassWord=p"}},
                    Kind{"Snmp", "manager (snmp)", "Manager (SNMP)", {}}),
    test_support::Title());

TEST_F(Destinations, DeletingTheEmptyIdLeavesTheListWhole) {
    ASSERT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, "ONE", "RUN COMMAND").get()), 0);
    const std::vector<std::string> before = Lines(kDestinations);
    for (const char *id : {"", "ONE\\Address", "\\", "ONE\\"}) {
        EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_DELETE, id, "RUN COMMAND").get()), 0);
        EXPECT_THAT(Lines(kDestinations), ElementsAreArray(before)) << id;
    }
}

TEST_F(Destinations, TheWholeListIsRead) {
    for (const char *id : {"B", "a", "C"}) {
        ASSERT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, id, "RUN COMMAND").get()), 0);
    }
    std::vector<Record> records;
    std::vector<DEST_DATA *> list;
    for (int i = 0; i < 3; ++i) {
        records.push_back(std::make_unique<DEST_DATA>());
        list.push_back(records.back().get());
    }
    DWORD count = 0;
    EXPECT_EQ(GetAllDestSettingBounded(list.data(), 2, &count), 3);
    EXPECT_EQ(count, 2U);
    ASSERT_EQ(GetAllDestSetting(list.data(), &count), 0);
    ASSERT_EQ(count, 3U);
    EXPECT_STREQ(list[0]->szDestID, "a");
    EXPECT_STREQ(list[1]->szDestID, "B");
    EXPECT_STREQ(list[2]->szCommandLine, "/usr/bin/true -x");
}

TEST_F(Destinations, NamesOf255BytesAreTakenAndLongerOnesAreNot) {
    const std::string longest(KES_REG_MAX_KEY_NAME, 'x');
    ASSERT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, longest, "RUN COMMAND").get()), 0);
    EXPECT_TRUE(KeyExists(kDestinations + "\\" + longest));
    const std::vector<std::string> before = Lines(kDestinations);
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, longest + "x", "RUN COMMAND").get()), 0)
        << "the writer's refusal is not passed up";
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_MODIFY, longest + "x", "RUN COMMAND").get()),
              -2);
    EXPECT_THAT(Lines(kDestinations), ElementsAreArray(before));
}

}  // namespace
}  // namespace settings_test
