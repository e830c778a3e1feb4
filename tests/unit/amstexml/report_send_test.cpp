// Logging in, sending and recording: every code from -12 on, and what each success leaves.
#include <gmock/gmock.h>

#include <algorithm>

#include "fakes/registry.h"
#include "mailer.h"
#include "support/title.h"
#include "transport.h"

extern "C" int ReportedFromC(const char *list);

namespace {

using mailer::kAddress;
using mailer::kSetup;
using mailer::OwnTrace;
using mailer::TheModule;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class ReportSendTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mailer::StoreSettings();
        mailer::Add();
    }
};

TEST_F(ReportSendTest, TracesAWholeReport) {
    fakes::StoreText(kAddress, "ETo", "centre@centre.example");
    EXPECT_EQ(ReportedFromC(nullptr), 0);
    EXPECT_THAT(OwnTrace(),
                ElementsAre("0 >", "0 VX_REG_TO:centre@centre.example", "0 szSubject_d:Subject",
                            "0 g_szIP_reg:127.0.0.9", "0 g_szAddress_reg:sender@host.example",
                            "0 g_dwSMTPPort:2525", "0 lpszTo[0]:centre@centre.example",
                            "0 szSubject_d:Subject", "0 <return 0."));
    for (const auto &record : fakes::Trace()) {
        EXPECT_EQ(record.source,
                  record.function == "GetVlxServiceInfo_Mail" ? "vxgetinf" : "amstexml");
    }
}

struct Status {
    DWORD status;
    int result;
};

TEST_F(ReportSendTest, TheStatusWordDecidesTheCode) {
    for (const auto &[status, result] :
         {Status{0, 0}, Status{1, -14}, Status{2, -15}, Status{3, -16}, Status{4, -17},
          Status{7, -17}, Status{0xFFFFFFFF, -17}}) {
        SetUp();
        TheModule().status = status;
        TheModule().result = status == 0 ? 99 : 0;  // the function's own result does not count
        const auto before = fakes::Dump();
        EXPECT_EQ(mailer::Send(1), result);
        EXPECT_EQ(OwnTrace().back(), "0 <return " + std::to_string(result) + ".");
        EXPECT_EQ(fakes::TraceLinesOf("GetEOpening").size(), 1U) << "read after every send";
        EXPECT_EQ(fakes::Dump() == before, result != 0);
        EXPECT_EQ(fakes::LoadedModules(), 0);
    }
}

TEST_F(ReportSendTest, ThePopLogInComesFirst) {
    transport::StoreSettings();
    transport::Add();
    EXPECT_EQ(mailer::Send(1), 0);
    EXPECT_EQ(transport::TheModule().calls.size(), 4U);
    std::vector<std::string> loaded;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "LoadLibrary" && !call.detail.ends_with("amcregac.dll")) {
            loaded.push_back(call.detail);
        }
    }
    EXPECT_THAT(loaded, ElementsAre("amrpop.dll", mailer::kModule));
}

TEST_F(ReportSendTest, AFailedPopLogInSendsNothing) {
    transport::StoreSettings();
    transport::Add();
    transport::TheModule().connect = false;
    const auto before = fakes::Dump();
    EXPECT_EQ(mailer::Send(1), -18);
    EXPECT_THAT(OwnTrace(),
                ElementsAre("0 >", "0 VX_REG_TO:centre@centre.example", "0 szSubject_d:Subject",
                            "1 Err: POP before SMTP get authentication", "0 <return -18."));
    EXPECT_TRUE(TheModule().mails.empty());
    EXPECT_TRUE(fakes::TraceLinesOf("GetEOpening").empty());
    EXPECT_FALSE(std::any_of(fakes::Calls().begin(), fakes::Calls().end(), [](const auto &call) {
        return call.function == "LoadLibrary" && call.detail == mailer::kModule;
    }));
    EXPECT_EQ(fakes::Dump(), before);
}

TEST_F(ReportSendTest, TheFolderCannotBeExpanded) {
    fakes::FailCall("ExpandEnvironmentStrings", 3);  // twice for the base path
    EXPECT_EQ(mailer::Send(1), -20);
    EXPECT_EQ(OwnTrace().back(), "1 <ExpandEnvironmentStrings() failed.return -20.");
    SetUp();
    EXPECT_EQ(mailer::Send(1), 0);
    EXPECT_TRUE(std::any_of(fakes::Calls().begin(), fakes::Calls().end(),
                            [](const auto &call) { return call.detail == "%KesDir% 4096"; }));
    fakes::TheSystem().kes_directory = std::string(4096, 'd');
    EXPECT_EQ(mailer::Send(1), -20);
    fakes::TheSystem().kes_directory.pop_back();
    EXPECT_EQ(mailer::Send(1), -12) << "a folder of 4095 bytes fits";
}

TEST_F(ReportSendTest, TheModuleIsMissing) {
    fakes::FailCall("LoadLibrary", 3);
    const auto before = fakes::Dump();
    EXPECT_EQ(mailer::Send(1), -12);
    EXPECT_EQ(OwnTrace().back(), "1 <LoadLibrary amrsmtp.dll failed.return -12.");
    EXPECT_EQ(fakes::Dump(), before);
}

TEST_F(ReportSendTest, TheFunctionIsMissing) {
    fakes::AddModule(mailer::kModule, {});
    const auto before = fakes::Dump();
    EXPECT_EQ(mailer::Send(1), -13);
    EXPECT_EQ(OwnTrace().back(), "1 <GetProcAddress(SendMailWithSMTP) failed.return -13.");
    EXPECT_EQ(fakes::Dump(), before);
}

// ---- What a success records ---------------------------------------------------------------------

struct Record {
    const char *title;
    DWORD kind;
    int opening;  // before; -1: missing
    int setting;
    int opening_after;
    int setting_after;
};

class RecordTest : public ReportSendTest, public ::testing::WithParamInterface<Record> {
  protected:
    static void Store(const char *path, const char *name, int number) {
        if (number < 0) {
            fakes::DeleteValue(path, name);
        } else {
            fakes::StoreNumber(path, name, static_cast<DWORD>(number));
        }
    }
    static int Stored(const char *path, const char *name) {
        const auto number = fakes::Number(path, name);
        return number ? static_cast<int>(*number) : -1;
    }
};

TEST_P(RecordTest, OfASuccess) {
    Store(kAddress, "EOpening", GetParam().opening);
    Store(kSetup, "SETTING", GetParam().setting);
    EXPECT_EQ(mailer::Send(GetParam().kind), 0);
    EXPECT_EQ(Stored(kAddress, "EOpening"), GetParam().opening_after);
    EXPECT_EQ(Stored(kSetup, "SETTING"), GetParam().setting_after);
}

TEST_P(RecordTest, NoneOfAFailure) {
    Store(kAddress, "EOpening", GetParam().opening);
    Store(kSetup, "SETTING", GetParam().setting);
    TheModule().status = 3;
    EXPECT_EQ(mailer::Send(GetParam().kind), -16);
    EXPECT_EQ(Stored(kAddress, "EOpening"), GetParam().opening);
    EXPECT_EQ(Stored(kSetup, "SETTING"), GetParam().setting);
}

INSTANTIATE_TEST_SUITE_P(
    Records, RecordTest,
    ::testing::Values(
        Record{"OpeningFirst", 0, 0, 0, 1, 0}, Record{"OpeningWithoutAState", 0, -1, -1, 1, -1},
        Record{"OpeningAgain", 0, 1, 0, 1, 0}, Record{"OpeningAfterATest", 0, 2, 1, 2, 1},
        Record{"OpeningAfterAHigherState", 0, 3, 0, 3, 0}, Record{"TestFirst", 1, 0, 0, 2, 1},
        Record{"TestWithoutAState", 1, -1, -1, 2, 1}, Record{"TestAfterAnOpening", 1, 1, 0, 2, 1},
        Record{"TestAfterATest", 1, 2, 1, 2, 1}, Record{"TestOverAHigherState", 1, 7, 5, 2, 5},
        Record{"Alert", 2, 0, 0, 0, 0}, Record{"AlertLeavesWhatIs", 2, 1, 7, 1, 7},
        Record{"AnyOther", 3, -1, -1, -1, -1}),
    test_support::Title());

TEST_F(ReportSendTest, AFailedRecordIsTracedAndChangesNoResult) {
    fakes::FailEveryCall("RegSetValueEx");
    EXPECT_EQ(mailer::Send(0), 0);
    EXPECT_THAT(OwnTrace(), Contains("1 AMAMRegWrite EOpening failed."));
    EXPECT_EQ(OwnTrace().back(), "0 <return 0.");
    fakes::ClearTrace();
    EXPECT_EQ(mailer::Send(1), 0);
    const auto trace = OwnTrace();
    EXPECT_EQ(trace[trace.size() - 3], "1 AMAMRegWrite EOpening failed.");
    EXPECT_EQ(trace[trace.size() - 2], "1 AMAMRegWrite SETTING failed.");
    EXPECT_EQ(fakes::Number(kAddress, "EOpening"), 0U);
    EXPECT_EQ(fakes::Number(kSetup, "SETTING"), 0U);
}

// ---- Each platform call failing in turn ---------------------------------------------------------

TEST_F(ReportSendTest, EachCallFailingInTurn) {
    const auto prepare = [] {
        mailer::StoreSettings();
        mailer::Add();
        transport::StoreSettings();
        transport::Add();
    };
    prepare();
    ASSERT_EQ(mailer::Send(1), 0);
    const std::size_t calls = fakes::Calls().size();
    std::vector<int> results;
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        fakes::Reset();
        prepare();
        const auto before = fakes::Dump();
        fakes::FailAnyCall(static_cast<int>(nth));
        const int result = mailer::Send(1);
        SCOPED_TRACE(fakes::Calls()[nth - 1].function + " " + fakes::Calls()[nth - 1].detail);
        results.push_back(result);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::LoadedModules(), 0);
        EXPECT_EQ(TheModule().mails.size(), result == 0 ? 1U : 0U);
        if (result != 0) {
            EXPECT_EQ(fakes::Dump(), before);
        }
    }
    for (const int code : {-7, -8, -9, -10, -11, -12, -13, -18, -20, 0}) {
        EXPECT_THAT(results, Contains(code));
    }
}

// ---- GetVlxTo and GetEOpening -------------------------------------------------------------------

TEST_F(ReportSendTest, GetVlxToReadsTheList) {
    char list[VX_DESTINATION_LIST_LENGTH + 1] = "old";
    fakes::StoreText(kAddress, "ETo", "a@b,c@d");
    EXPECT_EQ(GetVlxTo(list), TRUE);
    EXPECT_STREQ(list, "a@b,c@d");
    EXPECT_THAT(
        fakes::TraceLinesOf("GetVlxTo"),
        ElementsAre(MatchesRegex("0 >szMailTo=0x[0-9a-f]+"), "0 <[To:]a@b,c@d.return TRUE."));
}

TEST_F(ReportSendTest, GetVlxToReadsAnEmptyList) {
    char list[VX_DESTINATION_LIST_LENGTH + 1] = "old";
    fakes::StoreText(kAddress, "ETo", "");
    EXPECT_EQ(GetVlxTo(list), TRUE);
    EXPECT_STREQ(list, "");
}

TEST_F(ReportSendTest, GetVlxToReads512BytesAndNotMore) {
    char list[VX_DESTINATION_LIST_LENGTH + 1] = "old";
    fakes::StoreText(kAddress, "ETo", std::string(512, 'x'));
    EXPECT_EQ(GetVlxTo(list), TRUE);
    EXPECT_EQ(list, std::string(512, 'x'));

    (void)std::snprintf(list, sizeof list, "old");
    fakes::StoreText(kAddress, "ETo", std::string(513, 'x'));
    EXPECT_EQ(GetVlxTo(list), FALSE);
    EXPECT_STREQ(list, "old");
    fakes::StoreBytes(kAddress, "ETo", 1, std::string(513, 'x'));
    EXPECT_EQ(GetVlxTo(list), FALSE) << "without terminator";
    EXPECT_STREQ(list, "old");
    EXPECT_EQ(fakes::TraceLinesOf("GetVlxTo").back(), "1 <AMAMRegReadEx ETo failed.return FALSE.");
}

TEST_F(ReportSendTest, GetVlxToOfAMissingListFails) {
    char list[VX_DESTINATION_LIST_LENGTH + 1] = "old";
    EXPECT_EQ(GetVlxTo(list), FALSE);
    EXPECT_STREQ(list, "old");
    EXPECT_EQ(fakes::TraceLinesOf("GetVlxTo").back(), "1 <AMAMRegReadEx ETo failed.return FALSE.");
}

TEST_F(ReportSendTest, GetEOpeningReadsTheState) {
    fakes::StoreNumber(kAddress, "EOpening", 2);
    EXPECT_EQ(GetEOpening(), 2U);
    EXPECT_THAT(fakes::TraceLinesOf("GetEOpening"), ElementsAre("0 <return 2"));
}

TEST_F(ReportSendTest, GetEOpeningIs0WhenItCannotBeRead) {
    fakes::DeleteValue(kAddress, "EOpening");
    EXPECT_EQ(GetEOpening(), 0U);
    EXPECT_THAT(fakes::TraceLinesOf("GetEOpening"),
                ElementsAre("1 AMAMRegReadEx EOpening failed.", "0 <return 0"));
}

}  // namespace
