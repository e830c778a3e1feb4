// The report's body: header, service information, opening message; its bounds and its subject.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <algorithm>
#include <cstdlib>

#include "fakes/libc.h"
#include "fakes/registry.h"
#include "mailer.h"
#include "support/title.h"

namespace {

using mailer::Body;
using mailer::kSetting;
using mailer::kSetup;
using mailer::OwnTrace;
using mailer::TheModule;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ReportBodyTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mailer::StoreSettings();
        mailer::Add();
    }
    static std::string SentBody(DWORD kind, const char *message = nullptr) {
        EXPECT_EQ(mailer::Send(kind, message), 0);
        return TheModule().mails.back().body;
    }
    static void ExpectNotComposed(const std::string &trace) {
        EXPECT_EQ(mailer::Send(1), -10);
        EXPECT_EQ(OwnTrace().back(), trace);
        EXPECT_TRUE(TheModule().mails.empty());
    }
};

TEST_F(ReportBodyTest, TheKindDecidesTheIdentifierAndTheMessage) {
    const char message[] = "Opened today.\nUnchanged";
    EXPECT_EQ(SentBody(0, message), fakes::FakeEncode(Body("X", message)));
    EXPECT_EQ(SentBody(1, message), fakes::FakeEncode(Body("C")));
    EXPECT_EQ(SentBody(2, message), fakes::FakeEncode(Body("A")));
    EXPECT_EQ(SentBody(3, message), fakes::FakeEncode(Body("")));
    EXPECT_EQ(SentBody(0xFFFFFFFF, message), fakes::FakeEncode(Body("")));
}

TEST_F(ReportBodyTest, ANullOrEmptyOpeningMessageAddsNothing) {
    EXPECT_EQ(SentBody(0, nullptr), fakes::FakeEncode(Body("X")));
    EXPECT_EQ(SentBody(0, ""), fakes::FakeEncode(Body("X")));
}

TEST_F(ReportBodyTest, ALongOpeningMessageIsSentWhole) {
    const std::string message(1 << 20, 'm');
    EXPECT_EQ(SentBody(0, message.c_str()), fakes::FakeEncode(Body("X", message)));
}

TEST_F(ReportBodyTest, TheServiceInformationIsThatOfMails) {
    fakes::StoreText("SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT", "ReportProduct", "PRODUCT-1");
    EXPECT_THAT(SentBody(2), HasSubstr("[N-CODE]\r\nPRODUCT-1\r\n[SERIAL-NUMBER]"));
}

TEST_F(ReportBodyTest, ItsWordsComeFromTheCatalogue) {
    fakes::TheLibc().catalogue = {
        {"velox:*****START*****", "**ANFANG**"}, {"velox:[REVISION]", "[STAND]"},
        {"velox:[MESSAGE-ID]", "[NR]"},          {"velox:C", "c"},
        {"velox:3.1/LINUX(RH)", "wrong"},        {"velox:", "Content-Type: text/plain"}};
    EXPECT_THAT(SentBody(1), StartsWith("begin{**ANFANG**\r\n[STAND]\r\n3.1/LINUX(RH)\r\n[NR]\r\n"
                                        "c\r\n[CONTRACT]\r\n"));
    EXPECT_THAT(SentBody(7), HasSubstr("[NR]\r\n\r\n[CONTRACT]")) << "empty: never looked up";
    for (const fakes::Call &call : fakes::Calls()) {
        EXPECT_NE(call.detail, "velox: 5") << call.function;
    }
}

TEST_F(ReportBodyTest, TheMessageLocaleIsTheSystems) {
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(fakes::Calls()[0].function, "GetSystemDefaultLANG");
    EXPECT_EQ(fakes::Calls()[1].detail, "6 ja_JP.eucJP");
    EXPECT_EQ(fakes::Calls()[2].detail, "velox /opt/xev/kestro_sa/data/mo");
    EXPECT_EQ(fakes::Calls()[3].detail, "velox");
    fakes::Reset();
    SetUp();
    fakes::FailCall("GetSystemDefaultLANG");
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(fakes::Calls()[1].detail, "6 en_US");
}

TEST_F(ReportBodyTest, VersionMayHave19BytesAndNotMore) {
    fakes::StoreText(kSetup, "VERSION", "1234567890123456789");
    EXPECT_THAT(SentBody(1), HasSubstr("[REVISION]\r\n1234567890123456789\r\n"));
    TheModule().mails.clear();
    fakes::StoreText(kSetup, "VERSION", "12345678901234567890");
    ExpectNotComposed("1 <AMAMRegReadEx VERSION failed.return -10.");
    fakes::StoreBytes(kSetup, "VERSION", REG_SZ, "12345678901234567890");
    EXPECT_THAT(SentBody(1), HasSubstr("[REVISION]\r\n12345678901234567890\r\n"))
        << "without terminator";
}

TEST_F(ReportBodyTest, AMissingVersionFails) {
    fakes::DeleteValue(kSetup, "VERSION");
    ExpectNotComposed("1 <AMAMRegReadEx VERSION failed.return -10.");
}

TEST_F(ReportBodyTest, AnEmptyVersionIsAnEmptyLine) {
    fakes::StoreText(kSetup, "VERSION", "");
    EXPECT_THAT(SentBody(1), HasSubstr("[REVISION]\r\n\r\n[MESSAGE-ID]"));
}

// 88 bytes of text: four words and a version of 13 bytes, five line ends of two.
TEST_F(ReportBodyTest, TheHeaderMayHave88BytesAndNotMore) {
    fakes::TheLibc().catalogue = {
        {"velox:*****START*****", std::string(88 - 10 - 13 - 10 - 12 - 1, 's')}};
    EXPECT_EQ(mailer::Send(1), 0);
    TheModule().mails.clear();
    fakes::TheLibc().catalogue[0].second += 's';
    ExpectNotComposed("1 <the header has more than 88 bytes.return -10.");
}

TEST_F(ReportBodyTest, AFailingServiceInformationFails) {
    fakes::StoreNumber(kSetting, "KAISHAKBN", 2);
    ExpectNotComposed("1 <GetVlxServiceInfo_Mail() failed.return -10.");
}

TEST_F(ReportBodyTest, EachAllocationFailingInTurn) {
    EXPECT_EQ(mailer::Send(0, "message"), 0);
    const int allocations = fakes::Allocations();
    EXPECT_EQ(allocations, 2) << "service information and body";
    const char *traces[] = {"1 <GetVlxServiceInfo_Mail() failed.return -10.",
                            "2 <malloc hTotalMem failed.return -10."};
    TheModule().mails.clear();
    for (int nth = 1; nth <= allocations; ++nth) {
        fakes::FailAllocation(nth);
        const auto before = fakes::Dump();
        ExpectNotComposed(traces[nth - 1]);
        EXPECT_EQ(fakes::Dump(), before);
    }
}

TEST_F(ReportBodyTest, AFailedEncodingFails) {
    fakes::FailCall("UUCdEnCodingToMemory");
    EXPECT_EQ(mailer::Send(1), -11);
    EXPECT_EQ(OwnTrace().back(), "1 <UUCdEnCodingToMemory() failed.return -11.");
}

TEST_F(ReportBodyTest, TheBodyIsNotTerminated) {
    EXPECT_EQ(mailer::Send(1), 0);
    const auto encode =
        std::find_if(fakes::Calls().begin(), fakes::Calls().end(),
                     [](const auto &call) { return call.function == "UUCdEnCodingToMemory"; });
    ASSERT_NE(encode, fakes::Calls().end());
    EXPECT_EQ(encode->detail, std::to_string(Body("C").size()));
}

struct Subject {
    const char *title;
    const char *subject;
    std::string sent;
    bool cut;
};

class SubjectTest : public ReportBodyTest, public ::testing::WithParamInterface<Subject> {};

TEST_P(SubjectTest, HasAtMost31BytesInWholeCharacters) {
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, 2, GetParam().subject, "a@b", nullptr), 0);
    EXPECT_EQ(TheModule().mails[0].subject, GetParam().sent);
    EXPECT_EQ(TheModule().mails[0].body, fakes::FakeEncode(Body("A")))
        << "the size counts the subject as it is sent";
    const auto trace = OwnTrace();
    const std::string cut = "1 the subject has more than 31 bytes and is cut.";
    if (GetParam().cut) {
        EXPECT_THAT(trace, Contains(cut));
    } else {
        EXPECT_THAT(trace, Not(Contains(cut)));
    }
    EXPECT_EQ(std::count(trace.begin(), trace.end(), "0 szSubject_d:" + GetParam().sent), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Subjects, SubjectTest,
    ::testing::Values(
        Subject{"Short", "Velox Alert Notification", "Velox Alert Notification", false},
        Subject{"Null", nullptr, "", false}, Subject{"Empty", "", "", false},
        Subject{"31Bytes", "1234567890123456789012345678901", "1234567890123456789012345678901",
                false},
        Subject{"32Bytes", "12345678901234567890123456789012", "1234567890123456789012345678901",
                true},
        Subject{"CutBeforeADoubleByteCharacter", "123456789012345678901234567890\xA4\xA2",
                "123456789012345678901234567890", true},
        Subject{"CutBehindADoubleByteCharacter", "12345678901234567890123456789\xA4\xA2\xA4\xA4",
                "12345678901234567890123456789\xA4\xA2", true},
        Subject{"CutBeforeATripleByteCharacter", "12345678901234567890123456789\x8F\xB0\xA1",
                "12345678901234567890123456789", true}),
    test_support::Title());

// ---- KesComposeReport ---------------------------------------------------------------------------

class ComposeTest : public ReportBodyTest {};

TEST_F(ComposeTest, GivesTheBodyThatIsSentAndSendsNothing) {
    const auto before = fakes::Dump();
    for (const auto &[kind, expected] : std::vector<std::pair<DWORD, std::string>>{
             {0, Body("X", "message")}, {1, Body("C")}, {2, Body("A")}, {9, Body("")}}) {
        char *body = nullptr;
        DWORD size = 0;
        ASSERT_EQ(KesComposeReport(kind, "message", &body, &size), 0);
        EXPECT_EQ(std::string(body, size), expected);
        EXPECT_EQ(body[size], '\0');
        std::free(body);
    }
    EXPECT_TRUE(TheModule().mails.empty());
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 0);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_EQ(fakes::TraceLinesOf("KesComposeReport").front(), "0 >dwKind=0");
    EXPECT_EQ(fakes::TraceLinesOf("KesComposeReport").back(), "0 <return 0.");
}

TEST_F(ComposeTest, AFailureTouchesNothing) {
    fakes::DeleteValue(kSetup, "VERSION");
    char nothing = 0;
    char *body = &nothing;
    DWORD size = 77;
    EXPECT_EQ(KesComposeReport(1, nullptr, &body, &size), -10);
    EXPECT_EQ(body, &nothing);
    EXPECT_EQ(size, 77U);
    EXPECT_EQ(fakes::TraceLinesOf("KesComposeReport").back(),
              "1 <AMAMRegReadEx VERSION failed.return -10.");
}

}  // namespace
