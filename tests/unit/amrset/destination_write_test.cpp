// Adding, modifying and deleting report destinations.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <memory>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "support/title.h"
#include "sweep.h"
#include "velox/destination_setting.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const std::string kList = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST";
const std::string kKey = kList + "\\ID1";

using Record = std::unique_ptr<DEST_DATA>;

Record MakeRecord(DWORD action, const char *method, const char *id = "ID1") {
    auto record = std::make_unique<DEST_DATA>();
    record->nAction = action;
    EXPECT_TRUE(CopyText(record->szDestID, id));
    EXPECT_TRUE(CopyText(record->szMethod, method));
    EXPECT_TRUE(CopyText(record->szCommandLine, "/bin/mail root"));
    EXPECT_TRUE(CopyText(record->szManagerIP, "192.0.2.7"));
    record->dwPortNumber = 25150;
    EXPECT_TRUE(CopyText(record->szTelNo, "0123"));
    EXPECT_TRUE(CopyText(record->szUserName, "u"));
    EXPECT_TRUE(CopyText(record->szPassWord, "p"));
    record->dwSchedule = 0x123456;
    record->dwRetryInterval = 5;
    record->dwRetryCount = 3;
    return record;
}

// The lines of a whole destination in the registry's dump.
std::vector<std::string> Lines(const std::string &method, const std::vector<std::string> &address) {
    std::vector<std::string> lines = {kKey,
                                      kKey + " ADDRESSSET=REG_DWORD:0x1",
                                      kKey + " ATTRIBUTE=REG_DWORD:0x1",
                                      kKey + " COMMENT=REG_SZ:",
                                      kKey + " METHOD=REG_SZ:" + method,
                                      kKey + " REPORTKIND=REG_SZ:Report",
                                      kKey + "\\Address"};
    for (const std::string &value : address) {
        lines.push_back(kKey + "\\Address ");
        lines.back() += value;
    }
    const std::string schedule = kKey + "\\SCHEDULE";
    lines.push_back(schedule);
    lines.push_back(schedule + " PARAM0=REG_DWORD:0x123456");
    for (const char *param : {"1", "2", "3", "4", "5", "6"}) {
        lines.push_back(schedule + " PARAM" + param + "=REG_DWORD:0xFFFFFF");
    }
    lines.push_back(schedule + " RETRYCOUNT=REG_DWORD:0x3");
    lines.push_back(schedule + " RETRYINTERVAL=REG_DWORD:0x5");
    return lines;
}

class DestWriteTest : public fakes::PlatformTest {};

// ---- The four kinds -----------------------------------------------------------------------------

struct KindRow {
    const char *title;
    const char *kind;  // as the record spells it
    const char *stored_method;
    std::vector<std::string> address;
    const char *writer;
    std::vector<std::string> writer_trace;
};

class KindTest : public DestWriteTest, public ::testing::WithParamInterface<KindRow> {};

TEST_P(KindTest, AddWritesEveryValueInOrder) {
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, GetParam().kind).get()), 0);
    EXPECT_THAT(fakes::Dump(kKey),
                ElementsAreArray(Lines(GetParam().stored_method, GetParam().address)));
    EXPECT_THAT(fakes::TraceLinesOf("SetDestSetting"),
                ElementsAre(MatchesRegex("0 >pDestData=0x[0-9a-f]+"), "0 <return 0."));
    const auto written = fakes::TraceLinesOf(GetParam().writer);
    ASSERT_EQ(written.size(), 2U);
    EXPECT_THAT(written[0], MatchesRegex("0 >pDestData=0x[0-9a-f]+"));
    EXPECT_EQ(written[1], GetParam().writer_trace.back());
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_P(KindTest, ModifyRewritesTheWholeDestination) {
    fakes::StoreText(kKey, "METHOD", "old");
    fakes::StoreText(kKey, "Foreign", "stays");
    fakes::StoreNumber(kKey + "\\schedule", "param1", 7);
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_MODIFY, GetParam().kind).get()), 0);
    EXPECT_EQ(fakes::Text(kKey, "METHOD"), GetParam().stored_method);
    EXPECT_EQ(fakes::Text(kKey, "Foreign"), "stays");
    EXPECT_EQ(fakes::Number(kKey + "\\SCHEDULE", "PARAM1"), 0xFFFFFFU);
    EXPECT_EQ(fakes::Dump(kKey + "\\Address").size(), GetParam().address.size() + 1);
}

TEST_P(KindTest, EachRefusedCallLeavesWhatWasWrittenBefore) {
    int result = 0;
    const Record record = MakeRecord(DEST_ACTION_ADD, GetParam().kind);
    sweep::RefuseEachCall(
        [] {}, [&] { result = SetDestSetting(record.get()); },
        [&](const fakes::Call &refused) {
            // The open that looks for the id fails in the unharmed run as well.
            EXPECT_EQ(result, 0);
            EXPECT_TRUE(fakes::HasTrace(0, "<return 0."));
            const bool created = refused.function == "RegCreateKeyEx";
            EXPECT_EQ(fakes::TraceLines(1).size(), created ? 1U : 0U);
            if (created) {
                const auto path = refused.detail.substr(0, refused.detail.find(" sam="));
                EXPECT_FALSE(fakes::KeyExists(path));
                EXPECT_THAT(fakes::TraceLines(1)[0],
                            StartsWith("1 <RegCreateKeyEx " + path + " failed."));
            }
            const auto whole = Lines(GetParam().stored_method, GetParam().address);
            EXPECT_THAT(fakes::Dump(kKey), ::testing::IsSubsetOf(whole));
        });
}

TEST_P(KindTest, KeysAreCreatedWithFullAccessAndWithoutOptions) {
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, GetParam().kind).get()), 0);
    std::vector<std::string> created;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "RegCreateKeyEx") {
            created.push_back(call.detail);
        }
    }
    EXPECT_THAT(created, ElementsAre(kKey + " sam=0xF003F options=0",
                                     kKey + "\\Address sam=0xF003F options=0",
                                     kKey + "\\SCHEDULE sam=0xF003F options=0"));
    EXPECT_EQ(fakes::Calls()[0].detail, kKey + " sam=0x20019");
}

const std::vector<std::string> kManager = {
    "ManagerIP=REG_SZ:192.0.2.7", "IPorHost=REG_SZ:192.0.2.7", "PortNumber=REG_DWORD:0x623E"};
const std::vector<std::string> kDialUp = {
    "RASENTRY=REG_SZ:0123 u p",  "ManagerIP=REG_SZ:192.0.2.7",
    "IPorHost=REG_SZ:192.0.2.7", "PortNumber=REG_DWORD:0x623E",
    "TelNo=REG_SZ:0123",         "UserName=REG_SZ:u",
    "PassWord=REG_SZ:p"};

INSTANTIATE_TEST_SUITE_P(
    Rows, KindTest,
    ::testing::Values(KindRow{"RunCommand",
                              "RUN COMMAND",
                              "RUN COMMAND",
                              {"DisplayFlag=REG_DWORD:0x1", "CommandLine=REG_SZ:/bin/mail root"},
                              "SetCmdDestSetting",
                              {"0 <return 0."}},
                      KindRow{"RunCommandInLowerCase",
                              "run command",
                              "run command",
                              {"DisplayFlag=REG_DWORD:0x1", "CommandLine=REG_SZ:/bin/mail root"},
                              "SetCmdDestSetting",
                              {"0 <return 0."}},
                      KindRow{"InBand",
                              "MANAGER (TCP_IP IN-BAND)",
                              "Manager (TCP_IP IN-BAND)",
                              kManager,
                              "SetTcpInDestSetting",
                              {"0 <"}},
                      KindRow{"OutOfBand",
                              "MANAGER (TCP_IP OUT-OF-BAND)",
                              "Manager (TCP_IP Out-of-Band)",
                              kDialUp,
                              "SetTcpOutDestSetting",
                              {"0 <"}},
                      KindRow{"SnmpInLowerCase",
                              "manager (snmp)",
                              "Manager (SNMP)",
                              {},
                              "SetSnmpDestSetting",
                              {"0 <"}}),
    test_support::Title());

TEST_F(DestWriteTest, TextsAreStoredWithTheirTerminator) {
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, "RUN COMMAND").get()), 0);
    EXPECT_EQ(fakes::Bytes(kKey, "COMMENT")->second, std::string(1, '\0'));
    EXPECT_EQ(fakes::Bytes(kKey + "\\Address", "CommandLine")->second.size(), 15U);
}

// ---- The cut record start -----------------------------------------------------------------------

TEST_F(DestWriteTest, TwoWritersSeparateACopyOfTheRecordsStart) {
    for (const char *kind : {"MANAGER (TCP_IP OUT-OF-BAND)", "MANAGER (SNMP)"}) {
        fakes::ClearTrace();
        fakes::DeleteTree(kKey);
        const Record record = MakeRecord(DEST_ACTION_ADD, kind);
        const DEST_DATA before = *record;
        EXPECT_EQ(SetDestSetting(record.get()), 0);
        EXPECT_EQ(std::memcmp(&before, record.get(), sizeof before), 0);
        EXPECT_THAT(fakes::TraceLinesOf("SeperateString"),
                    ElementsAre(StartsWith("0 >lpInString=\x01,lplpOutString=0x"), "0 <"));
    }
    for (const char *kind : {"RUN COMMAND", "MANAGER (TCP_IP IN-BAND)"}) {
        fakes::ClearTrace();
        fakes::DeleteTree(kKey);
        EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, kind).get()), 0);
        EXPECT_THAT(fakes::TraceLinesOf("SeperateString"), IsEmpty());
    }
}

TEST_F(DestWriteTest, AnActionWithoutZeroBytesAndManyColonsStayInside) {
    const Record record = MakeRecord(0x01010101, "MANAGER (SNMP)");
    std::memset(record->szDestID, ':', sizeof record->szDestID);
    SetSnmpDestSetting(record.get());
    EXPECT_EQ(record->szDestID[sizeof record->szDestID - 1], ':');
    EXPECT_THAT(fakes::Dump(), IsEmpty());
}

// ---- SetDestSetting -----------------------------------------------------------------------------

TEST_F(DestWriteTest, AddOfAnExistingIdChangesNothing) {
    fakes::StoreText(kKey, "METHOD", "old");
    const auto before = fakes::Dump();
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, "RUN COMMAND", "id1").get()), -3);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(StartsWith("0 >pDestData="),
                            "1 <RegOpenKeyEx " + kList + "\\id1 failed.return -3."));
}

TEST_F(DestWriteTest, ModifyOfAMissingIdCreatesNothing) {
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_MODIFY, "RUN COMMAND").get()), -2);
    EXPECT_THAT(fakes::Dump(), IsEmpty());
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kKey + " failed.return -2."));
}

TEST_F(DestWriteTest, AnUnknownKindIsRefused) {
    fakes::CreateKey(kKey);
    for (const DWORD action : {DEST_ACTION_ADD, DEST_ACTION_MODIFY}) {
        fakes::ClearTrace();
        const char *id = action == DEST_ACTION_ADD ? "NEW" : "ID1";
        EXPECT_EQ(SetDestSetting(MakeRecord(action, "VeloxReport(Internet Mail)", id).get()), -1);
        EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <unsupport method.return -1."));
    }
    EXPECT_THAT(fakes::SubKeys(kList), ElementsAre("ID1"));
}

TEST_F(DestWriteTest, AnUnknownActionIsRefused) {
    EXPECT_EQ(SetDestSetting(MakeRecord(3, "RUN COMMAND").get()), -1);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <unsupport action.return -1."));
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

TEST_F(DestWriteTest, DeleteRemovesTheWholeSubtree) {
    ASSERT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, "RUN COMMAND").get()), 0);
    fakes::CreateKey(kList + "\\ID10");
    fakes::ClearTrace();
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_DELETE, "").get()), 0);
    EXPECT_THAT(fakes::SubKeys(kList), ElementsAre("ID10"));
    EXPECT_THAT(fakes::TraceLines(), ElementsAre(StartsWith("0 >pDestData="), "0 <return 0."));
}

TEST_F(DestWriteTest, DeleteOfAMissingIdIsNoFailure) {
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_DELETE, "").get()), 0);
}

TEST_F(DestWriteTest, EachRefusedCallOfADeleteIsSilent) {
    int result = 0;
    const Record record = MakeRecord(DEST_ACTION_DELETE, "");
    sweep::RefuseEachCall(
        [] {
            fakes::CreateKey(kKey + "\\Address");
            fakes::CreateKey(kKey + "\\SCHEDULE");
            fakes::CreateKey(kList + "\\OTHER");
        },
        [&] { result = SetDestSetting(record.get()); },
        [&](const fakes::Call &) {
            EXPECT_EQ(result, 0);
            EXPECT_THAT(fakes::TraceLines(1), IsEmpty());
            EXPECT_TRUE(fakes::KeyExists(kList + "\\OTHER"));
        });
}

// ---- Ids that are no key names ------------------------------------------------------------------

struct IdRow {
    const char *title;
    std::string id;
};

class BadIdTest : public DestWriteTest, public ::testing::WithParamInterface<IdRow> {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreText(kKey, "METHOD", "RUN COMMAND");
        fakes::StoreText(kKey + "\\Address", "CommandLine", "x");
        before_ = fakes::Dump();
    }

    static Record MakeBadRecord(DWORD action) {
        Record record = MakeRecord(action, "RUN COMMAND", "");
        std::memcpy(record->szDestID, GetParam().id.data(), GetParam().id.size());
        return record;
    }

    std::vector<std::string> before_;
};

TEST_P(BadIdTest, DeleteLeavesTheListWhole) {
    EXPECT_EQ(SetDestSetting(MakeBadRecord(DEST_ACTION_DELETE).get()), 0);
    EXPECT_EQ(fakes::Dump(), before_);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

TEST_P(BadIdTest, ModifyFindsNoSuchDestination) {
    EXPECT_EQ(SetDestSetting(MakeBadRecord(DEST_ACTION_MODIFY).get()), -2);
    EXPECT_EQ(fakes::Dump(), before_);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kList + "\\" + GetParam().id.substr(0, 255) +
                            " failed.return -2."));
}

TEST_P(BadIdTest, AddCreatesNothing) {
    EXPECT_EQ(SetDestSetting(MakeBadRecord(DEST_ACTION_ADD).get()), 0);
    EXPECT_EQ(SetCmdDestSetting(MakeBadRecord(DEST_ACTION_ADD).get()), -1);
    EXPECT_EQ(fakes::Dump(), before_);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
    const std::string failure =
        "1 <RegCreateKeyEx " + kList + "\\" + GetParam().id.substr(0, 255) + " failed.return -1.";
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre(failure, failure));
}

TEST_P(BadIdTest, GetFindsNoSuchDestination) {
    EXPECT_EQ(GetDestSetting(MakeBadRecord(0).get()), -1);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadIdTest,
    ::testing::Values(IdRow{"Empty", ""}, IdRow{"Backslash", "ID1\\Address"},
                      IdRow{"OnlyABackslash", "\\"}, IdRow{"TooLong", std::string(256, 'i')},
                      IdRow{"WithoutEnd", std::string(DEST_TEXT_CAPACITY, 'i')}),
    test_support::Title());

TEST_F(DestWriteTest, TheLongestIdIsAccepted) {
    const std::string id(KES_REG_MAX_KEY_NAME, 'i');
    EXPECT_EQ(SetDestSetting(MakeRecord(DEST_ACTION_ADD, "RUN COMMAND", id.c_str()).get()), 0);
    EXPECT_THAT(fakes::SubKeys(kList + "\\" + id), ElementsAre("Address", "SCHEDULE"));
}

// ---- Texts at their capacity --------------------------------------------------------------------

TEST_F(DestWriteTest, TheLongestTextsAreStoredWhole) {
    const Record record = MakeRecord(DEST_ACTION_ADD, "MANAGER (TCP_IP OUT-OF-BAND)");
    const std::string longest(DEST_TEXT_CAPACITY - 1, 'x');
    for (char *text : {record->szTelNo, record->szUserName, record->szPassWord}) {
        std::memcpy(text, longest.c_str(), longest.size() + 1);
    }
    EXPECT_EQ(SetDestSetting(record.get()), 0);
    EXPECT_EQ(fakes::Text(kKey + "\\Address", "TelNo"), longest);
    EXPECT_EQ(fakes::Text(kKey + "\\Address", "RASENTRY"), longest + " " + longest + " " + longest);
}

TEST_F(DestWriteTest, ATextWithoutEndIsTracedAndNotStored) {
    const Record record = MakeRecord(DEST_ACTION_ADD, "RUN COMMAND");
    std::memset(record->szCommandLine, 'x', sizeof record->szCommandLine);
    EXPECT_EQ(SetDestSetting(record.get()), 0);
    EXPECT_THAT(fakes::ValueNames(kKey + "\\Address"), ElementsAre("DisplayFlag"));
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 The text for CommandLine has no end."));
}

TEST_F(DestWriteTest, NoPasswordReachesATrace) {
    const Record record = MakeRecord(DEST_ACTION_ADD, "MANAGER (TCP_IP OUT-OF-BAND)");
    ASSERT_TRUE(CopyText(record->szPassWord, "geheim"));
    EXPECT_EQ(SetDestSetting(record.get()), 0);
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    for (const fakes::TraceRecord &trace : fakes::Trace()) {
        EXPECT_EQ(trace.text.find("geheim"), std::string::npos);
    }
}

}  // namespace
