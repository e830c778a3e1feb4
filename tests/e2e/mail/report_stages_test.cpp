// The report functions against a server that misbehaves at one stage: the right code, in time,
// nothing left behind, and a record in the registry only when the mail was taken.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <tuple>

#include <mail_support/census.h>
#include <mail_support/pop_server.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <velox/mail_report.h>

#include "report_fixture.h"

namespace {

using namespace mail_support;

constexpr std::chrono::seconds kDeadline(1);
constexpr std::chrono::seconds kWithTls(2);

struct Fault {
    const char *title;
    Misdeed misdeed;
};

struct Stage {
    const char *title;
    const char *name;
    const char *protection;
    int code;
    std::chrono::seconds deadline = kDeadline;
};

using Case = std::tuple<Stage, Fault>;

std::string TitleOf(const testing::TestParamInfo<Case> &info) {
    return std::string(std::get<0>(info.param).title) + std::get<1>(info.param).title;
}

struct Reported {
    int code = 0;
    std::chrono::milliseconds elapsed{};
};

Reported SendTestReport() {
    const auto start = std::chrono::steady_clock::now();
    Reported reported;
    reported.code = AMAMVeloxTestReport(nullptr, VX_REPORT_TEST, "Report",
                                        "centre@maintenance.example", nullptr);
    reported.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    return reported;
}

class ReportStagesBase : public ReportTest {
  protected:
    // Once beforehand: libraries are loaded, the registry's connection is there.
    static void WarmUp() {
        const ClosedPort port;
        UseServer("127.0.0.1", port.Port());
        ASSERT_EQ(SendTestReport().code, VX_REPORT_CONNECTION_FAILED);
    }

    void Try(int code, std::chrono::seconds deadline) {
        deadline_.Set(std::to_string(deadline.count()));
        const Census before;
        const Reported reported = InTime(deadline, SendTestReport);
        EXPECT_TRUE(NothingLeftSince(before));
        EXPECT_EQ(reported.code, code);
        EXPECT_LT(reported.elapsed, LongestCall(deadline));
        EXPECT_EQ(Opening(), code == VX_REPORT_SENT ? 2U : 0U);
        EXPECT_EQ(Registered(), code == VX_REPORT_SENT ? 1U : 0U);
    }
};

class ReportStagesTest : public ReportStagesBase, public testing::WithParamInterface<Case> {};

const auto kFaults =
    testing::Values(Fault{"Stalls", {"", Then::kStall}}, Fault{"Closes", {"", Then::kClose}},
                    Fault{"TalksNonsense", {"\x01\xff what?\r\n", Then::kStall}});

class SmtpReportStagesTest : public ReportStagesTest {};

TEST_P(SmtpReportStagesTest, GivesItsCodeInTime) {
    const auto &[stage, fault] = GetParam();
    WarmUp();
    SmtpServer server({.misdeeds = {{stage.name, fault.misdeed}},
                       .certificate = &certificate_,
                       .tls_from_the_first_byte = std::string(stage.protection) == "tls"});
    UseServer("127.0.0.1", server.Port(), stage.protection);
    Try(stage.code, stage.deadline);
}

INSTANTIATE_TEST_SUITE_P(
    Each, SmtpReportStagesTest,
    testing::Combine(
        testing::Values(
            Stage{"Tls", "TLS", "tls", VX_REPORT_CONNECTION_FAILED, kWithTls},
            Stage{"Banner", "banner", "plain", VX_REPORT_CONNECTION_FAILED},
            Stage{"Ehlo", "EHLO", "plain", VX_REPORT_CONNECTION_FAILED},
            Stage{"Starttls", "STARTTLS", "starttls", VX_REPORT_CONNECTION_FAILED, kWithTls},
            Stage{"Handshake", "handshake", "starttls", VX_REPORT_CONNECTION_FAILED, kWithTls},
            Stage{"Mail", "MAIL", "plain", VX_REPORT_ENVELOPE_REFUSED},
            Stage{"Rcpt", "RCPT", "plain", VX_REPORT_ENVELOPE_REFUSED},
            Stage{"Data", "DATA", "plain", VX_REPORT_DATA_REFUSED},
            Stage{"EndOfData", "end of data", "plain", VX_REPORT_DATA_REFUSED},
            Stage{"Quit", "QUIT", "plain", VX_REPORT_SENT, kWithTls}),
        kFaults),
    TitleOf);

class PopReportStagesTest : public ReportStagesTest {};

TEST_P(PopReportStagesTest, GivesItsCodeInTimeAndSendsNothing) {
    const auto &[stage, fault] = GetParam();
    WarmUp();
    const bool tls = std::string(stage.protection) != "plain";
    const bool sasl = std::string(stage.name).starts_with("AUTH") ||
                      std::string(stage.name) == "authentication data";
    PopBehaviour behaviour = {.misdeeds = {{stage.name, fault.misdeed}},
                              .certificate = tls ? &certificate_ : nullptr,
                              .tls_from_the_first_byte = std::string(stage.protection) == "tls",
                              .address = OwnLoopbackAddress(),
                              .port = std::string(stage.protection) == "tls" ? 995U : 0U};
    if (sasl)
        behaviour.capabilities = {"SASL PLAIN"};
    PopServer server(behaviour);
    SmtpServer smtp({});
    UseServer("127.0.0.1", smtp.Port());
    UsePop(OwnLoopbackAddress(), server.Port(), "monitor", "secret");
    Try(stage.code, stage.deadline);
    EXPECT_EQ(smtp.Connections(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Each, PopReportStagesTest,
    testing::Combine(
        testing::Values(Stage{"Tls", "TLS", "tls", VX_REPORT_POP_FAILED, kWithTls},
                        Stage{"Greeting", "greeting", "plain", VX_REPORT_POP_FAILED},
                        Stage{"Capa", "CAPA", "plain", VX_REPORT_POP_FAILED},
                        Stage{"Stls", "STLS", "stls", VX_REPORT_POP_FAILED, kWithTls},
                        Stage{"Handshake", "handshake", "stls", VX_REPORT_POP_FAILED, kWithTls},
                        Stage{"User", "USER", "plain", VX_REPORT_POP_FAILED},
                        Stage{"Pass", "PASS", "plain", VX_REPORT_POP_FAILED},
                        Stage{"Auth", "AUTH", "plain", VX_REPORT_POP_FAILED},
                        Stage{"AuthData", "authentication data", "plain", VX_REPORT_POP_FAILED},
                        Stage{"Quit", "QUIT", "plain", VX_REPORT_POP_FAILED}),
        kFaults),
    TitleOf);

class ReportConnectTest : public ReportStagesTest {};

TEST_P(ReportConnectTest, Stalls) {
    const auto &[stage, fault] = GetParam();
    WarmUp();
    const DeafPort deaf;
    UseServer("127.0.0.1", deaf.Port());
    if (stage.code == VX_REPORT_POP_FAILED)
        UsePop("127.0.0.1", deaf.Port(), "monitor", "secret");
    Try(stage.code, stage.deadline);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ReportConnectTest,
    testing::Combine(testing::Values(Stage{"Smtp", "", "", VX_REPORT_CONNECTION_FAILED},
                                     Stage{"Pop", "", "", VX_REPORT_POP_FAILED}),
                     testing::Values(Fault{"Connect", {}})),
    TitleOf);

using ReportLifetimeTest = ReportStagesBase;

// Every report loads amcregac.dll, amrpop.dll and amrsmtp.dll, uses them and unloads them.
TEST_F(ReportLifetimeTest, SeveralReportsOfOneProcess) {
    WarmUp();
    SmtpServer smtp({});
    PopServer pop({});
    UseServer("127.0.0.1", smtp.Port());
    UsePop("127.0.0.1", pop.Port(), "monitor", "secret");
    const Census before;
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(SendTestReport().code, VX_REPORT_SENT);
        EXPECT_TRUE(NothingLeftSince(before));
    }
    EXPECT_EQ(smtp.Mails().size(), 3U);
    EXPECT_EQ(pop.LogIns(), 3);
}

}  // namespace
