// amrvxmn.dll: the events as a manager receives them.
#include <unistd.h>

#include <mail_support/http_server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>
#include <nlohmann/json.hpp>
#include <regex>

#include "manager_fixture.h"

namespace {

using namespace mail_support;
using nlohmann::json;
using testing::Contains;
using testing::HasSubstr;

const testing::Environment *const kServer = testing::AddGlobalTestEnvironment(new RegistryServer);

class ManagerEventTest : public ManagerTest {
  protected:
    Manager There() const { return {.port = server_.Port()}; }

    json Received(std::size_t number = 0) {
        const auto requests = server_.Requests();
        return requests.size() > number ? json::parse(requests[number].body) : json();
    }

    HttpServer server_{{}};
};

std::string HostName() {
    char name[256] = {};
    ::gethostname(name, sizeof name - 1);
    return name;
}

TEST_F(ManagerEventTest, OpeningIsOneEvent) {
    const TraceRecorder trace;
    const HandedOver handed = HandOverOpening(There());
    ASSERT_EQ(handed.result, kAccepted) << handed.error;
    EXPECT_EQ(handed.error, "");
    ASSERT_EQ(server_.Requests().size(), 1U);
    const HttpRequest request = server_.Requests()[0];
    EXPECT_EQ(request.line, "POST /velox/events HTTP/1.1");
    EXPECT_THAT(request.fields, Contains("Host: 127.0.0.1:" + std::to_string(server_.Port())));
    EXPECT_THAT(request.fields,
                Contains("Content-Type: application/cloudevents+json; charset=utf-8"));
    EXPECT_THAT(request.fields, Contains("Connection: close"));
    EXPECT_THAT(request.fields, testing::Not(Contains(testing::StartsWith("Expect:"))));
    const json event = Received();
    EXPECT_EQ(event["specversion"], "1.0");
    EXPECT_EQ(event["type"], "velox.report.opening");
    EXPECT_EQ(event["source"], "/hosts/" + HostName());
    EXPECT_EQ(event["subject"], "N8100-0001");
    EXPECT_EQ(event["datacontenttype"], "application/json");
    EXPECT_EQ(event["data"]["product"], "N8100-0001");
    EXPECT_EQ(event["data"]["host"], HostName());
    EXPECT_THAT(event["data"]["service_information"].get<std::string>(),
                testing::AllOf(HasSubstr("[CONTRACT]\nCorporate\n"), HasSubstr("\n株式会社例\n")));
    EXPECT_TRUE(std::regex_match(event["time"].get<std::string>(),
                                 std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ")));
    EXPECT_TRUE(std::regex_match(event["id"].get<std::string>(), std::regex("[0-9a-f]{32}")));
    EXPECT_TRUE(trace.Has(0, "handed over, id " + event["id"].get<std::string>()));
    EXPECT_TRUE(trace.Has(0, "client: POST /velox/events HTTP/1.1"));
    EXPECT_TRUE(trace.Has(0, "server: HTTP/1.1 202 Accepted"));
    EXPECT_TRUE(trace.Has(0, "the connection is clear text"));
}

TEST_F(ManagerEventTest, RepeatedOpeningHasTheSameId) {
    HandOverOpening(There());
    HandOverOpening(There());
    EXPECT_EQ(Received(0)["id"], Received(1)["id"]);
}

TEST_F(ManagerEventTest, OtherOpeningHasAnotherId) {
    HandOverOpening(There());
    SetText(kReportKey, "ReportProduct", "N8100-0002");
    HandOverOpening(There());
    SetText(kReportKey, "ReportProduct", "N8100-0001");
    SetText(kSettingKey, "TOKUINMA", "ANOTHER");
    HandOverOpening(There());
    EXPECT_NE(Received(0)["id"], Received(1)["id"]);
    EXPECT_NE(Received(0)["id"], Received(2)["id"]);
    EXPECT_NE(Received(1)["id"], Received(2)["id"]);
}

TEST_F(ManagerEventTest, BytesThatAreNoTextAreReplaced) {
    SetText(kReportKey, "ReportProduct", "A\xFF" + test_support::ToEuc("日") + "\xB0");
    EXPECT_EQ(HandOverOpening(There()).result, kAccepted);
    EXPECT_EQ(Received()["data"]["product"], "A\uFFFD日\uFFFD");
}

TEST_F(ManagerEventTest, JapaneseSystemSendsJapaneseHeadings) {
    language_.Set("ja_JP");
    EXPECT_EQ(HandOverOpening(There()).result, kAccepted);
    EXPECT_THAT(Received()["data"]["service_information"].get<std::string>(),
                HasSubstr("お客様名称"));
}

TEST_F(ManagerEventTest, AlertTellsEverythingOfTheItem) {
    const std::string message = test_support::ToEuc("警報 \"1\"\\");
    VLX_MANAGER_ALERT alert = kAlert;
    alert.lpszMessage = message.c_str();
    alert.lpszComputer = "server 01/x";
    alert.dwLevel = 0xFFFFFFFF;
    ASSERT_EQ(HandOverAlert(There(), &alert).result, kAccepted);
    const json event = Received();
    EXPECT_EQ(event["specversion"], "1.0");
    EXPECT_EQ(event["type"], "velox.report.alert");
    EXPECT_EQ(event["id"], kAlert.lpszEventId);
    EXPECT_EQ(event["source"], "/hosts/server%2001%2Fx");
    EXPECT_EQ(event["subject"], "KESHeartBeatDll");
    EXPECT_EQ(event["time"], "2026-11-21T10:00:00Z");
    json data = event["data"];
    EXPECT_THAT(data["service_information"].get<std::string>(), HasSubstr("\n株式会社例\n"));
    data.erase("service_information");
    EXPECT_EQ(data, (json{{"log", "SYSTEM"},
                          {"source", "KESHeartBeatDll"},
                          {"level", 0xFFFFFFFFU},
                          {"count", 1},
                          {"message", "警報 \"1\"\\"},
                          {"lines", "line 1\r\nline 2\r\n"},
                          {"host", "server 01/x"}}));
}

TEST_F(ManagerEventTest, AlertNeedsNoProduct) {
    DeleteValue(kReportKey, "ReportProduct");
    EXPECT_EQ(HandOverAlert(There()).result, kAccepted);
}

// What keeps an event from being made: no connection.
struct Unfit {
    const char *title;
    void (*change)(VLX_MANAGER_ALERT &alert);
    const char *error;
};

class UnfitAlertTest : public ManagerEventTest, public testing::WithParamInterface<Unfit> {};

TEST_P(UnfitAlertTest, IsRefusedBeforeAnyConnection) {
    VLX_MANAGER_ALERT alert = kAlert;
    GetParam().change(alert);
    const HandedOver handed = HandOverAlert(There(), &alert);
    EXPECT_EQ(handed.result, kNotPrepared);
    EXPECT_EQ(handed.error, GetParam().error);
    EXPECT_TRUE(server_.Requests().empty());
}

constexpr char kNullText[] = "a text of the alert is null";
constexpr char kBadId[] = "the alert's id is not of 1 to 255 printable characters without blanks";
const std::string kLongId(256, 'x');

INSTANTIATE_TEST_SUITE_P(
    Each, UnfitAlertTest,
    testing::Values(
        Unfit{"NullId", [](VLX_MANAGER_ALERT &alert) { alert.lpszEventId = nullptr; }, kNullText},
        Unfit{"NullLog", [](VLX_MANAGER_ALERT &alert) { alert.lpszLog = nullptr; }, kNullText},
        Unfit{"NullSource", [](VLX_MANAGER_ALERT &alert) { alert.lpszSource = nullptr; },
              kNullText},
        Unfit{"NullComputer", [](VLX_MANAGER_ALERT &alert) { alert.lpszComputer = nullptr; },
              kNullText},
        Unfit{"NullMessage", [](VLX_MANAGER_ALERT &alert) { alert.lpszMessage = nullptr; },
              kNullText},
        Unfit{"NullLines", [](VLX_MANAGER_ALERT &alert) { alert.lpszLines = nullptr; }, kNullText},
        Unfit{"EmptyId", [](VLX_MANAGER_ALERT &alert) { alert.lpszEventId = ""; }, kBadId},
        Unfit{"BlankInId", [](VLX_MANAGER_ALERT &alert) { alert.lpszEventId = "a b"; }, kBadId},
        Unfit{"ByteInId", [](VLX_MANAGER_ALERT &alert) { alert.lpszEventId = "a\x80"; }, kBadId},
        Unfit{"LongId", [](VLX_MANAGER_ALERT &alert) { alert.lpszEventId = kLongId.c_str(); },
              kBadId},
        Unfit{"Time", [](VLX_MANAGER_ALERT &alert) { alert.qwTime = INT64_MAX; },
              "the time is beyond every calendar"}),
    test_support::Title());

TEST_F(ManagerEventTest, MissingAlertIsTold) {
    const HandedOver handed = HandOverAlert(There(), nullptr);
    EXPECT_EQ(handed.result, kNotPrepared);
    EXPECT_EQ(handed.error, "there is no alert");
}

TEST_F(ManagerEventTest, MissingProductIsTold) {
    const char *const error = "the registry names no product whose opening is reported";
    SetText(kReportKey, "ReportProduct", "");
    EXPECT_EQ(HandOverOpening(There()).error, error);
    DeleteValue(kReportKey, "ReportProduct");
    const HandedOver handed = HandOverOpening(There());
    EXPECT_EQ(handed.result, kNotPrepared);
    EXPECT_EQ(handed.error, error);
}

TEST_F(ManagerEventTest, MissingServiceInformationIsTold) {
    DeleteValue(kSettingKey, "KAISHAKBN");
    for (const HandedOver &handed : {HandOverOpening(There()), HandOverAlert(There())}) {
        EXPECT_EQ(handed.result, kNotPrepared);
        EXPECT_EQ(handed.error, "the service information cannot be read");
    }
    EXPECT_TRUE(server_.Requests().empty());
}

}  // namespace
