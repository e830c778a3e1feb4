// A queued alert on its way to the management server: every try carries the same id.
#include <mail_support/http_server.h>

#include <nlohmann/json.hpp>

#include "manager_case.h"

namespace veloxctl_test {
namespace {

using mail_support::HttpServer;
using nlohmann::json;
using testing::HasSubstr;

class QueueToManagerTest : public ManagerCommandTest {
  protected:
    static json Waiting() { return json::parse(Veloxctl({"queue", "list", "--json"}).output); }
};

TEST_F(QueueToManagerTest, KeepsItsIdFromTryToTry) {
    HttpServer refusing({.answer = "HTTP/1.1 503 Later\r\nContent-Length: 4\r\n\r\nbusy"});
    Select(refusing.Port());
    const Result queued = Veloxctl({"report", "queue-test"});
    ASSERT_EQ(queued.status, EX_OK) << queued.errors;
    EXPECT_EQ(Veloxctl({"queue", "deliver"}).status, EX_TEMPFAIL);
    ASSERT_EQ(Waiting().size(), 1U);
    EXPECT_THAT(Waiting()[0]["reason"].get<std::string>(),
                HasSubstr("the manager refused: HTTP/1.1 503 Later: busy"));

    HttpServer accepting({});
    Select(accepting.Port());
    const Result delivered = Veloxctl({"queue", "deliver", "--now"});
    EXPECT_EQ(delivered.status, EX_OK) << delivered.errors;
    EXPECT_EQ(Waiting().size(), 0U);

    ASSERT_EQ(refusing.Requests().size(), 1U);
    ASSERT_EQ(accepting.Requests().size(), 1U);
    const json first = json::parse(refusing.Requests()[0].body);
    const json second = json::parse(accepting.Requests()[0].body);
    EXPECT_EQ(first, second);
    EXPECT_EQ(second["type"], "velox.report.alert");
    EXPECT_EQ(second["data"]["source"], "KESHeartBeatDll");
    EXPECT_EQ(second["data"]["message"], "TEST - AlertManager");
    EXPECT_THAT(second["data"]["service_information"].get<std::string>(),
                HasSubstr("[CONTRACT]\nCorporate\n"));
}

}  // namespace
}  // namespace veloxctl_test
