// "veloxctl queue" and "veloxctl report queue-test" against a mail server on loopback.
#include "queue_case.h"

#include <gmock/gmock.h>
#include <mail_support/server.h>

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using mail_support::ClosedPort;
using mail_support::SmtpServer;
using nlohmann::json;
using queuestore::Entry;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using veloxctl_test::HeaderOf;
using veloxctl_test::QueueTest;
using veloxctl_test::ReportIn;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

constexpr std::int64_t kMinute = 60;

TEST_F(QueueTest, AnEmptyQueueIsEmptyToEveryCommand) {
    EXPECT_EQ(Veloxctl({"queue", "list"}).output, "");
    EXPECT_EQ(Veloxctl({"queue", "list", "--json"}).output, "[]\n");
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, 0);
    const Result shown = Veloxctl({"queue", "show", "x"});
    EXPECT_EQ(shown.status, EX_NOINPUT);
    EXPECT_EQ(shown.errors, "veloxctl: x: there is no such alert in the queue\n");
    EXPECT_EQ(Veloxctl({"queue", "drop", "x", "--force"}).status, EX_NOINPUT);
    EXPECT_EQ(Veloxctl({"queue", "deliver", "x"}).status, EX_NOINPUT);
}

TEST_F(QueueTest, ATestAlertGoesOutOnceTheServerAnswers) {
    const Result queued = Veloxctl({"report", "queue-test"});
    ASSERT_EQ(queued.status, 0) << queued.errors;
    ASSERT_THAT(Ids(), SizeIs(1));
    const std::string id = Ids()[0];
    EXPECT_EQ(Veloxctl({"queue", "list"}).output, id + "  KESHeartBeatDll: TEST - AlertManager\n");

    const ClosedPort closed;
    UsePort(closed.Port());
    const std::int64_t before = std::time(nullptr);
    Result delivered = Veloxctl({"queue", "deliver"});
    EXPECT_EQ(delivered.status, EX_TEMPFAIL);
    EXPECT_THAT(delivered.errors, HasSubstr(id + ": the SMTP server cannot be reached"));
    const Entry waiting = Load(id);
    EXPECT_EQ(waiting.delivery.tries, 1U);
    EXPECT_GE(waiting.delivery.last_try, before);
    EXPECT_EQ(waiting.delivery.next_try, waiting.delivery.last_try + 5 * kMinute);
    EXPECT_THAT(waiting.delivery.reason, HasSubstr("(-14)"));

    SmtpServer server({});
    UsePort(server.Port());
    delivered = Veloxctl({"queue", "deliver"});
    EXPECT_EQ(delivered.status, EX_TEMPFAIL) << "its next try is not due yet";
    EXPECT_EQ(Load(id), waiting);
    delivered = Veloxctl({"queue", "deliver", "--now"});
    EXPECT_EQ(delivered.status, 0) << delivered.errors;
    EXPECT_EQ(delivered.output, id + ": delivered\n");
    EXPECT_THAT(Ids(), IsEmpty());
    const auto mails = server.Mails();
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_EQ(HeaderOf(mails[0], "Message-Id"), waiting.message_id);
    EXPECT_EQ(HeaderOf(mails[0], "Subject"), "Velox Alert Notification");
    EXPECT_THAT(mails[0].recipients, ElementsAre("<centre@maintenance.example>"));
    EXPECT_THAT(ReportIn(mails[0]),
                AllOf(HasSubstr("*****START*****\r\n"), HasSubstr("[MESSAGE-ID]\r\nA\r\n"),
                      HasSubstr("\r\n[ALERT]\r\nTEST - AlertManager\r\n[ALERT-ID]\r\n" + id),
                      EndsWith("[ALERT-COUNT]\r\n1\r\n")));
}

TEST_F(QueueTest, TheIntervalGrowsAndTheDestinationSetsTheFirst) {
    Import(std::string("[HKEY_LOCAL_MACHINE\\") + kDestination +
           "\\SCHEDULE]\n\"RETRYINTERVAL\"=dword:1\n");
    const ClosedPort closed;
    UsePort(closed.Port());
    const std::string id = Add("a");
    for (const std::int64_t minutes : {1, 2, 4}) {
        EXPECT_EQ(Veloxctl({"queue", "deliver", id}).status, EX_TEMPFAIL);
        const Entry entry = Load(id);
        EXPECT_EQ(entry.delivery.next_try - entry.delivery.last_try, minutes * kMinute);
    }
    EXPECT_EQ(Load(id).delivery.tries, 3U);
}

TEST_F(QueueTest, ARefusalIsKeptInTheServersWords) {
    SmtpServer server({.misdeeds = {{"RCPT", {.text = "550 5.1.1 no such user\r\n"}}}});
    UsePort(server.Port());
    const std::string id = Add("a");
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, EX_TEMPFAIL);
    EXPECT_THAT(Load(id).delivery.reason,
                AllOf(HasSubstr("(-15)"), HasSubstr("5.1.1 no such user")));
    const Result listed = Veloxctl({"queue", "list", "--json"});
    const json list = json::parse(listed.output);
    ASSERT_THAT(list, SizeIs(1));
    EXPECT_EQ(list[0]["id"], id);
    EXPECT_EQ(list[0]["tries"], 1);
    EXPECT_EQ(list[0]["reason"], Load(id).delivery.reason);
    EXPECT_THAT(Veloxctl({"queue", "list"}).output, HasSubstr("\n  tries: 1, last: 2"));
}

TEST_F(QueueTest, DialUpKeepsTheAlert) {
    Select("Dial-up");
    const std::string id = Add("a");
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, EX_TEMPFAIL);
    EXPECT_EQ(Load(id).delivery.reason, "the selected method \"Dial-up\" cannot send alerts");
    Select("Carrier pigeon");
    EXPECT_EQ(Veloxctl({"queue", "deliver", "--now"}).status, EX_TEMPFAIL);
    EXPECT_EQ(Load(id).delivery.reason, "no report method is selected");
}

TEST_F(QueueTest, AManagerThatIsNotThereKeepsTheAlert) {
    const ClosedPort closed;
    Select("TransToManager");
    char port[32];
    (void)std::snprintf(port, sizeof(port), "dword:%x", closed.Port());
    Import(std::string("[HKEY_LOCAL_MACHINE\\") + kDestination +
           "\\Address]\n\"ManagerIP\"=\"127.0.0.1\"\n\"PortNumber\"=" + port + "\n");
    const std::string id = Add("a");
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, EX_TEMPFAIL);
    EXPECT_THAT(Load(id).delivery.reason,
                testing::AnyOf(HasSubstr("the manager did not take the alert"),
                               HasSubstr("amrvxmn.dll cannot be used")));
}

TEST_F(QueueTest, TextsAreEucJpInTheQueueAndTheTerminalsOwnOutside) {
    SmtpServer server({});
    UsePort(server.Port());
    const std::string id = Add("\xBE\xE3\xB3\xB2\nsecond [ALERT] line");  // 障害
    EXPECT_THAT(Veloxctl({"queue", "list"}).output, HasSubstr("KESHeartBeatDll: 障害\\x0a"));
    const json shown = json::parse(Veloxctl({"queue", "show", id, "--json"}).output);
    EXPECT_EQ(shown["id"], id);
    EXPECT_EQ(Veloxctl({"queue", "deliver"}, {.variables = {{"KES_LANG", "ja_JP.eucJP"}}}).status,
              0);
    const auto mails = server.Mails();
    ASSERT_THAT(mails, SizeIs(1));
    EXPECT_THAT(ReportIn(mails[0]),
                AllOf(HasSubstr("[ALERT]\r\n\xBE\xE3\xB3\xB2\r\n second [ALERT] line\r\n"),
                      HasSubstr("[\xA5\xB5\xA1\xBC\xA5\xD0\xCC\xBE\xBE\xCE]")));  // サーバ名称
}

TEST_F(QueueTest, DroppingNeedsAYes) {
    const std::string first = Add("a");
    const std::string second = Add("b");
    Result dropped = Veloxctl({"queue", "drop", first});
    EXPECT_EQ(dropped.status, EX_USAGE);
    EXPECT_THAT(Ids(), SizeIs(2));
    EXPECT_EQ(Veloxctl({"queue", "drop", first, "--force"}).status, 0);
    EXPECT_THAT(Ids(), ElementsAre(second));
}

TEST_F(QueueTest, ADamagedAlertStopsNoOther) {
    SmtpServer server({});
    UsePort(server.Port());
    const std::string damaged = Add("a");
    const std::string sound = Add("b");
    std::filesystem::resize_file(Folder() + "/" + damaged + ".json", 10);
    EXPECT_THAT(Veloxctl({"queue", "list"}).output, HasSubstr(damaged + "  damaged: " + Folder()));
    const Result delivered = Veloxctl({"queue", "deliver"});
    EXPECT_EQ(delivered.status, EX_DATAERR);
    EXPECT_THAT(delivered.errors, HasSubstr(damaged + ".json: "));
    EXPECT_EQ(delivered.output, sound + ": delivered\n");
    EXPECT_EQ(Veloxctl({"queue", "show", damaged}).status, EX_DATAERR);
    EXPECT_EQ(Veloxctl({"queue", "drop", damaged, "-f"}).status, 0);
    EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(QueueTest, OnlyOneDelivers) {
    const std::string id = Add("a");
    const Entry before = Load(id);
    queuestore::Queue holder;
    std::string problem;
    bool busy = false;
    ASSERT_TRUE(holder.Open(Folder(), false, &problem) && holder.Lock(&busy, &problem));
    const Result delivered = Veloxctl({"queue", "deliver"});
    EXPECT_EQ(delivered.status, EX_TEMPFAIL);
    EXPECT_EQ(delivered.errors, "veloxctl: another process is delivering or dropping alerts\n");
    EXPECT_EQ(Veloxctl({"queue", "drop", id, "--force"}).status, EX_TEMPFAIL);
    EXPECT_EQ(Load(id), before);
}

TEST_F(QueueTest, WithoutTheRegistryServerNothingIsTried) {
    const std::string id = Add("a");
    const Entry before = Load(id);
    server_.Stop();
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, EX_UNAVAILABLE);
    EXPECT_EQ(Load(id), before);
    EXPECT_THAT(Veloxctl({"queue", "list"}).output, HasSubstr(id)) << "the queue is a folder";
}

}  // namespace
