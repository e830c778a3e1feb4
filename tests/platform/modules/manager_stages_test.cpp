// amrvxmn.dll against a manager that refuses or misbehaves at one stage: the right result, in time,
// and nothing left behind.
#include <mail_support/census.h>
#include <mail_support/http_server.h>
#include <mail_support/sending.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "manager_fixture.h"

namespace {

using namespace mail_support;

struct Case {
    const char *title;
    const char *stage;
    Misdeed misdeed;
    int result;
    const char *reason;  // part of the failure's description
};

class ManagerStagesTest : public ManagerTest, public testing::WithParamInterface<Case> {};

TEST_P(ManagerStagesTest, GivesTheResultOfTheStage) {
    const Case &row = GetParam();
    SetDeadline(kShort);
    const TraceRecorder trace;
    HandOverOpening({.port = ClosedPort().Port()});  // threads that live as long as the process
    const Census before;
    HttpServer server({.misdeeds = {{row.stage, row.misdeed}}});
    const HandedOver handed =
        InTime(kShort, [&] { return HandOverAlert({.port = server.Port()}); });
    server.Stop();
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(handed.result, row.result) << handed.error;
    EXPECT_THAT(handed.error, testing::HasSubstr(row.reason));
    EXPECT_EQ(handed.error.empty(), row.result == kAccepted);
    EXPECT_LT(handed.elapsed, LongestCall(kShort)) << trace.AllText();
    EXPECT_EQ(trace.Has(1, std::string("not handed over, result ") + std::to_string(row.result)),
              row.result != kAccepted);
}

const Misdeed kStall = {"", Then::kStall};
const Misdeed kClose = {"", Then::kClose};

INSTANTIATE_TEST_SUITE_P(
    Stall, ManagerStagesTest,
    testing::Values(Case{"Connected", "connected", kStall, 2, "POST: not finished within"},
                    Case{"Head", "head", kStall, 2, "POST: not finished within"},
                    Case{"Answer", "answer", kStall, 2, "POST: not finished within"},
                    Case{"InStatusLine",
                         "answer",
                         {"HTTP/1.1 20", Then::kStall},
                         2,
                         "POST: not finished within"},
                    Case{"InHead",
                         "answer",
                         {"HTTP/1.1 200 OK\r\nServer: x\r\n", Then::kStall},
                         2,
                         "POST: not finished within"},
                    Case{"InBody",
                         "answer",
                         {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", Then::kStall},
                         0,
                         ""},
                    Case{"InBodyOfARefusal",
                         "answer",
                         {"HTTP/1.1 500 No\r\nContent-Length: 9\r\n\r\nabc", Then::kStall},
                         3,
                         "the manager refused: HTTP/1.1 500 No: abc"},
                    Case{"Drip", "answer", {"H", Then::kDrip}, 2, "POST: "}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Close, ManagerStagesTest,
    testing::Values(Case{"Connected", "connected", kClose, 2, "POST: "},
                    Case{"Head", "head", kClose, 2, "POST: "},
                    Case{"Answer", "answer", kClose, 2, "POST: "},
                    Case{"InHead", "answer", {"HTTP/1.1 200 OK\r\n", Then::kClose}, 2, "POST: "},
                    Case{"InBody",
                         "answer",
                         {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", Then::kClose},
                         0,
                         ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Nonsense, ManagerStagesTest,
    testing::Values(
        Case{"NoHttp", "answer", {"220 mail.example ready\r\n", Then::kStall}, 2, "POST: "},
        Case{"BinaryBytes",
             "answer",
             {std::string("\x01\xff\0 what?\r\n\r\n", 13), Then::kClose},
             2,
             "POST: "},
        Case{"OldHttp", "answer", {"<html>hello</html>", Then::kClose}, 2, "POST: "},
        Case{"EndlessHead", "answer", {"X-More: and more\r\n", Then::kRepeat}, 2, "POST: "},
        Case{"EndlessStatusLine", "answer", {"HTTP/1.1 200 and more ", Then::kRepeat}, 2, "POST: "},
        Case{"OnlyInterim",
             "answer",
             {"HTTP/1.1 102 Wait\r\n\r\n", Then::kStall},
             2,
             "POST: not finished within"}),
    test_support::Title());

Misdeed Whole(const std::string &status, const std::string &body = "",
              const std::string &fields = "") {
    return {"HTTP/1.1 " + status + "\r\n" + fields +
                "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body,
            Then::kClose};
}

INSTANTIATE_TEST_SUITE_P(
    Answer, ManagerStagesTest,
    testing::Values(
        Case{"Ok", "answer", Whole("200 OK"), 0, ""},
        Case{"Created", "answer", Whole("201 Created", "stored"), 0, ""},
        Case{"NoContent", "answer", {"HTTP/1.1 204 No Content\r\n\r\n", Then::kClose}, 0, ""},
        Case{"WithoutReason", "answer", {"HTTP/1.1 200\r\n\r\n", Then::kClose}, 0, ""},
        Case{"Http10", "answer", {"HTTP/1.0 200 OK\r\n\r\nok", Then::kClose}, 0, ""},
        Case{"InterimFirst",
             "answer",
             {"HTTP/1.1 102 Wait\r\n\r\nHTTP/1.1 202 Accepted\r\nContent-Length: 0\r\n\r\n",
              Then::kClose},
             0,
             ""},
        Case{"BadRequest", "answer", Whole("400 Bad Request"), 3,
             "the manager refused: HTTP/1.1 400 Bad Request"},
        Case{"RefusalWithWords", "answer", Whole("403 Forbidden", "host\r\nunknown \xE6\x97\xA5"),
             3, "the manager refused: HTTP/1.1 403 Forbidden: host??unknown ???"},
        Case{"Unavailable", "answer", Whole("503 Service Unavailable"), 3,
             "the manager refused: HTTP/1.1 503 Service Unavailable"},
        Case{"Password", "answer",
             Whole("401 Unauthorized", "", "WWW-Authenticate: Basic realm=\"x\"\r\n"), 3,
             "401 Unauthorized"},
        Case{"LongRefusal", "answer", Whole("500 No", std::string(5000, 'x')), 3, "500 No: xxx"}),
    test_support::Title());

TEST_F(ManagerTest, RedirectionIsNotFollowed) {
    for (const char *status : {"301 Moved", "302 Found", "307 Temporary", "308 Permanent"}) {
        HttpServer elsewhere({});
        HttpServer server(
            {.misdeeds = {{"answer", Whole(status, "",
                                           "Location: http://127.0.0.1:" +
                                               std::to_string(elsewhere.Port()) + "/\r\n")}}});
        const HandedOver handed = HandOverOpening({.port = server.Port()});
        EXPECT_EQ(handed.result, kRefused);
        EXPECT_EQ(handed.error, std::string("the manager refused: HTTP/1.1 ") + status +
                                    " (redirections are not followed)");
        EXPECT_TRUE(elsewhere.Requests().empty());
    }
}

TEST_F(ManagerTest, OfAHugeAnswerOnlyTheBeginningIsRead) {
    const std::string huge(1 << 20, 'x');
    HttpServer accepting(
        {.misdeeds = {{"answer", {"HTTP/1.1 200 OK\r\n\r\n" + huge, Then::kRepeat}}}});
    EXPECT_EQ(HandOverOpening({.port = accepting.Port()}).result, kAccepted);
    HttpServer refusing(
        {.misdeeds = {{"answer", {"HTTP/1.1 500 No\r\n\r\n" + huge, Then::kRepeat}}}});
    const HandedOver handed = HandOverOpening({.port = refusing.Port()});
    EXPECT_EQ(handed.result, kRefused);
    EXPECT_LT(handed.error.size(), 300U);
}

TEST_F(ManagerTest, ManagerThatCannotBeReachedIsTold) {
    const ClosedPort closed;
    HandedOver handed = HandOverOpening({.port = closed.Port()});
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_THAT(handed.error, testing::StartsWith("connect: "));
    SetDeadline(kShort);
    const DeafPort deaf;
    handed = InTime(kShort, [&] { return HandOverOpening({.port = deaf.Port()}); });
    EXPECT_EQ(handed.result, kNotDelivered);
    EXPECT_EQ(handed.error, "connect: not finished within the deadline");
    EXPECT_LT(handed.elapsed, LongestCall(kShort));
}

}  // namespace
