// amrvxmn.dll: which server its parameters mean, with and without TLS; the module as a module.
#include <mail_support/census.h>
#include <mail_support/certificates.h>
#include <mail_support/http_server.h>
#include <mail_support/module.h>
#include <mail_support/process.h>
#include <mail_support/resolver.h>
#include <mail_support/sending.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include <cstring>

#include "manager_fixture.h"

namespace {

using namespace mail_support;
using testing::HasSubstr;

struct Reached {
    const char *title;
    std::string host;
    std::string address;
    std::string host_field;  // without port
};

class ManagerReachedTest : public ManagerTest, public testing::WithParamInterface<Reached> {};

TEST_P(ManagerReachedTest, AtTheHostOrTheAddress) {
    const Reached &row = GetParam();
    Resolver resolver;
    resolver.Know("manager.example", {"127.0.0.1"});
    HttpServer server({});
    const HandedOver handed = HandOverOpening({row.host, row.address, server.Port()});
    EXPECT_EQ(handed.result, kAccepted) << handed.error;
    ASSERT_EQ(server.Requests().size(), 1U);
    EXPECT_THAT(server.Requests()[0].fields,
                testing::Contains("Host: " + row.host_field + ":" + std::to_string(server.Port())));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ManagerReachedTest,
    testing::Values(Reached{"Address", "", "127.0.0.1", "127.0.0.1"},
                    Reached{"AddressWithZeros", "", "127.000.000.001", "127.0.0.1"},
                    Reached{"HostIsAddress", "127.0.0.1", "192.0.2.1", "127.0.0.1"},
                    Reached{"HostBeforeAddress", "manager.example", "192.0.2.1", "manager.example"},
                    Reached{"HostAlone", "manager.example", "", "manager.example"},
                    Reached{"FinalDot", "manager.example.", "", "manager.example"},
                    Reached{"Scheme", "http://manager.example", "", "manager.example"},
                    Reached{"SchemeAndSlash", "HTTP://manager.example/", "", "manager.example"}),
    test_support::Title());

struct NoManager {
    const char *title;
    Manager manager;
    const char *error;
};

class NoManagerTest : public ManagerTest, public testing::WithParamInterface<NoManager> {};

TEST_P(NoManagerTest, IsToldBeforeAnyConnection) {
    const TraceRecorder trace;
    const HandedOver handed = HandOverOpening(GetParam().manager);
    EXPECT_EQ(handed.result, kNotPrepared);
    EXPECT_EQ(handed.error, GetParam().error);
    EXPECT_FALSE(trace.Has(0, "connecting to"));
}

constexpr char kNone[] = "no manager is set";
constexpr char kNoHost[] = "the manager's host is neither a host name nor an address";
constexpr char kNoPort[] = "the manager's port is not between 1 and 65535";

INSTANTIATE_TEST_SUITE_P(
    Each, NoManagerTest,
    testing::Values(NoManager{"Nothing", {"", "", 80}, kNone},
                    NoManager{"NoAddress", {"", "0.0.0.0", 80}, kNone},
                    NoManager{"SchemeAlone", {"https://", "127.0.0.1", 80}, kNoHost},
                    NoManager{"Path", {"manager.example/x", "", 80}, kNoHost},
                    NoManager{"PortInTheHost", {"manager.example:80", "", 80}, kNoHost},
                    NoManager{"UserInTheHost", {"a@manager.example", "", 80}, kNoHost},
                    NoManager{"Blank", {"manager example", "", 80}, kNoHost},
                    NoManager{"LineEnd", {"manager\r\nX: y", "", 80}, kNoHost},
                    NoManager{"OtherScheme", {"ftp://manager.example", "", 80}, kNoHost},
                    NoManager{"ShortAddress", {"", "127.1", 80}, kNoHost},
                    NoManager{"LongHost", {std::string(600, 'x'), "", 80}, kNoHost},
                    NoManager{"NoPort", {"", "127.0.0.1", 0}, kNoPort},
                    NoManager{"LargePort", {"", "127.0.0.1", 65536}, kNoPort}),
    test_support::Title());

TEST_F(ManagerTest, NullParametersAreTold) {
    const Module module(AMRVXMN_MODULE);
    auto *open = module.Get<AMVLXMANREPORT_OPEN>(AMVLXMANREPORT_OPEN_NAME);
    char error[VLX_ALERT_ERROR_CAPACITY] = {};
    VLX_ALERT_DATA alert = {};
    alert.lpszErrorMessage = error;
    VLX_MANAGER_PARAM empty = {};
    EXPECT_EQ(open(&alert, nullptr), kNotPrepared);
    EXPECT_STREQ(error, "there are no manager parameters");
    EXPECT_EQ(open(&alert, &empty), kNotPrepared);
    EXPECT_STREQ(error, kNone);
    alert.lpszErrorMessage = nullptr;
    EXPECT_EQ(open(&alert, &empty), kNotPrepared);
    EXPECT_EQ(open(nullptr, &empty), kNotPrepared);
}

TEST_F(ManagerTest, NamesThatDoNotResolveAreTold) {
    Resolver resolver;
    HandedOver handed = HandOverOpening({"manager.example", "", 80});
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_THAT(handed.error, testing::StartsWith("name look-up: "));
    SetDeadline(kShort);
    resolver.StallAt("slow.example");
    handed = InTime(kShort, [] { return HandOverOpening({"slow.example", "", 80}); });
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_EQ(handed.error, "name look-up: not finished within the deadline");
    EXPECT_LT(handed.elapsed, LongestCall(kShort));
}

class ManagerTlsTest : public ManagerTest {
  protected:
    void SetUp() override {
        ManagerTest::SetUp();
        resolver_.Know("manager.example", {"127.0.0.1"});
        authority_.Set(issuer_.File());
    }

    static HandedOver HandOverTo(HttpServer &server, const std::string &host = "manager.example") {
        return HandOverOpening({"https://" + host, "192.0.2.1", server.Port()});
    }

    Resolver resolver_;
    Authority issuer_;
};

TEST_F(ManagerTlsTest, GoodCertificate) {
    const TraceRecorder trace;
    const Certificate certificate = issuer_.Issue("DNS:manager.example,IP:127.0.0.1");
    HttpServer server({.certificate = &certificate});
    EXPECT_EQ(HandOverTo(server).result, kAccepted);
    EXPECT_EQ(HandOverTo(server, "127.0.0.1").result, kAccepted);
    ASSERT_EQ(server.Requests().size(), 2U);
    EXPECT_TRUE(server.Requests()[0].encrypted);
    EXPECT_TRUE(trace.Has(0, "the connection is encrypted"));
}

TEST_F(ManagerTlsTest, BadCertificatesAreRefused) {
    const Authority foreign;
    const Certificate certificates[] = {
        issuer_.IssueExpired("DNS:manager.example"),
        foreign.Issue("DNS:manager.example"),
        issuer_.Issue("DNS:other.example"),
    };
    for (const Certificate &certificate : certificates) {
        HttpServer server({.certificate = &certificate});
        const HandedOver handed = HandOverTo(server);
        EXPECT_EQ(handed.result, kNotDelivered);
        EXPECT_THAT(handed.error, testing::StartsWith("TLS: SSL"));
        EXPECT_TRUE(server.Requests().empty());
    }
}

TEST_F(ManagerTlsTest, ReasonOfTheExpiredCertificateIsTold) {
    const Certificate certificate = issuer_.IssueExpired("DNS:manager.example");
    HttpServer server({.certificate = &certificate});
    EXPECT_THAT(HandOverTo(server).error, HasSubstr("certificate has expired"));
}

TEST_F(ManagerTlsTest, StallBeforeTheHandshakeIsBounded) {
    SetDeadline(kShort);
    const Certificate certificate = issuer_.Issue("DNS:manager.example");
    HttpServer server({.misdeeds = {{"TLS", {"", Then::kStall}}}, .certificate = &certificate});
    const HandedOver handed = InTime(kShort, [&] { return HandOverTo(server); });
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_EQ(handed.error, "TLS: not finished within the deadline");
    EXPECT_LT(handed.elapsed, LongestCall(kShort));
}

TEST_F(ManagerTlsTest, PlainServerGetsNothing) {
    HttpServer server({.misdeeds = {{"connected", {"HTTP/1.1 200 OK\r\n\r\n", Then::kClose}}}});
    const HandedOver handed = HandOverTo(server);
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_THAT(handed.error, testing::StartsWith("TLS: "));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(ManagerTest, ExportsAreTheTwoEntries) {
    const Finished nm = mail_support::Run(
        {"nm", "-D", "--defined-only", "--format=posix", ModulePath(AMRVXMN_MODULE)});
    ASSERT_EQ(nm.status, 0) << nm.output;
    EXPECT_THAT(nm.output, testing::MatchesRegex("AMVlxManReport_Open T [^\n]*\n"
                                                 "KesManReport_Alert T [^\n]*\n"));
}

TEST_F(ManagerTest, LoadedUsedAndUnloadedThreeTimes) {
    HttpServer server({});
    HandOverOpening({.port = server.Port()});
    const Census before;
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(HandOverOpening({.port = server.Port()}).result, kAccepted);
        EXPECT_EQ(HandOverAlert({.port = server.Port()}).result, kAccepted);
        EXPECT_TRUE(NothingLeftSince(before));
    }
    EXPECT_EQ(server.Requests().size(), 7U);
}

TEST_F(ManagerTest, ProxiesOfTheEnvironmentAreNotUsed) {
    const ClosedPort nobody;
    const std::string proxy = "http://127.0.0.1:" + std::to_string(nobody.Port());
    const test_support::EnvironmentVariable all("ALL_PROXY", proxy);
    const test_support::EnvironmentVariable http("http_proxy", proxy);
    HttpServer server({});
    EXPECT_EQ(HandOverOpening({.port = server.Port()}).result, kAccepted);
}

}  // namespace
