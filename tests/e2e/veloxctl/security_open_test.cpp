// "veloxctl report security-open": by a scripted and a real HTTP server, and where it cannot go.
#include <mail_support/certificates.h>
#include <mail_support/http_server.h>
#include <mail_support/process.h>
#include <mail_support/server.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <thread>

#include "manager_case.h"

namespace veloxctl_test {
namespace {

using mail_support::HttpServer;
using nlohmann::json;
using testing::HasSubstr;

class SecurityOpenTest : public ManagerCommandTest {
  protected:
    static Result Report(const std::string &product = "N8100-0001",
                         const Surroundings &surroundings = {}) {
        const Result result = Veloxctl({"report", "security-open", product}, surroundings);
        EXPECT_EQ(Values(kAlertReport), "");  // the product is named during the report only
        return result;
    }
};

std::string Where(unsigned port) {
    return "Method: manager\nTo: http://127.0.0.1:" + std::to_string(port) + "\n";
}

TEST_F(SecurityOpenTest, GoesToTheManager) {
    HttpServer server({});
    Select(server.Port());
    const Result result = Report("日本製品");
    EXPECT_EQ(result.status, EX_OK);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, Where(server.Port()) + "Sent.\n");
    ASSERT_EQ(server.Requests().size(), 1U);
    const json event = json::parse(server.Requests()[0].body);
    EXPECT_EQ(event["type"], "velox.report.opening");
    EXPECT_EQ(event["data"]["product"], "日本製品");
}

TEST_F(SecurityOpenTest, RefusalIsToldInTheManagersWords) {
    HttpServer server({.answer = "HTTP/1.1 403 Forbidden\r\nContent-Length: 4\r\n\r\nhost"});
    Select(server.Port());
    const Result result = Report();
    EXPECT_EQ(result.status, EX_PROTOCOL);
    EXPECT_EQ(result.output, Where(server.Port()));
    EXPECT_EQ(result.errors,
              "veloxctl: the opening report: not handed over, result 3: the manager refused: "
              "HTTP/1.1 403 Forbidden: host\n");
}

TEST_F(SecurityOpenTest, ManagerThatIsNotThereIsTold) {
    const mail_support::ClosedPort closed;
    Select(closed.Port());
    const Result result = Report();
    EXPECT_EQ(result.status, EX_UNAVAILABLE);
    EXPECT_THAT(result.errors, HasSubstr("not handed over, result 2: connect: "));
}

TEST_F(SecurityOpenTest, SettingsThatAllowNoReportAreTold) {
    Put(kMethodKey, "\"SelectedMethod\"=\"TransToManager\"");
    const Result nowhere = Report();
    EXPECT_EQ(nowhere.status, EX_CONFIG);
    EXPECT_EQ(nowhere.errors,
              "veloxctl: no manager is set; set one with \"veloxctl manager set\"\n");
    Put(kMethodKey, "\"SelectedMethod\"=\"Dial-up\"");
    const Result dial_up = Report();
    EXPECT_EQ(dial_up.status, EX_CONFIG);
    EXPECT_EQ(dial_up.errors,
              "veloxctl: the report method is dial-up, which cannot send an opening report; select "
              "another one with \"veloxctl method set\"\n");
    Put(kMethodKey, "\"SelectedMethod\"=-");
    EXPECT_EQ(Report().status, EX_CONFIG);
}

TEST_F(SecurityOpenTest, MailWithoutSettingsIsTold) {
    Put(kDestination, "\"ETo\"=\"\"");
    const Result nobody = Report();
    EXPECT_EQ(nobody.status, EX_CONFIG);
    EXPECT_THAT(nobody.errors, HasSubstr("the destination list holds no address (-4)"));
    Put(kDestination, "\"ETo\"=\"centre@maintenance.example\"");
    const Result no_server = Report();
    EXPECT_EQ(no_server.status, EX_CONFIG);
    EXPECT_EQ(no_server.output, "Method: mail\nTo: centre@maintenance.example\n");
    EXPECT_THAT(no_server.errors, HasSubstr("no SMTP server address is set (-7)"));
}

TEST_F(SecurityOpenTest, ProductsThatAreNoneAreRefused) {
    for (const std::string &product : {std::string(), std::string(256, 'x')}) {
        const Result result = Report(product);
        EXPECT_EQ(result.status, EX_DATAERR);
        EXPECT_EQ(result.errors, "veloxctl: the product: 1 to 255 bytes are wanted\n");
    }
}

TEST_F(SecurityOpenTest, MissingKeyIsTold) {
    Import("[-" + std::string(kAlertReport) + "]\n");
    const Result result = Veloxctl({"report", "security-open", "X"});
    EXPECT_EQ(result.status, EX_NOINPUT);
    EXPECT_THAT(result.errors, HasSubstr("ALERTREPORT: it does not exist"));
}

TEST_F(SecurityOpenTest, MissingModuleIsTold) {
    Select(80);
    const test_support::TempFolder root;
    std::filesystem::create_directory(root / "lib");
    const Result result = Report("X", {.variables = {{"KES_ROOT", root.Path()}},
                                       .program = test_support::ProductRoot() + "/bin/veloxctl"});
    EXPECT_EQ(result.status, EX_OSFILE);
    EXPECT_THAT(result.errors, HasSubstr("the module amrvxmn.dll cannot be loaded"));
}

// A web server with a receiver behind it that keeps each event once, as a file named by its id.
class WebServer {
  public:
    explicit WebServer(const mail_support::Certificate *certificate) {
        std::filesystem::create_directory(folder_ / "events");
        folder_.Write("receiver.sh", kReceiver);
        folder_.Write("lighttpd.conf", Configuration(certificate));
        process_.emplace(
            std::vector<std::string>{"/usr/sbin/lighttpd", "-D", "-f", folder_ / "lighttpd.conf"},
            folder_ / "log");
        WaitUntilReady();
    }

    static std::string Address() { return mail_support::OwnLoopbackAddress(); }
    static constexpr unsigned kPort = 8080;

    std::vector<std::string> Events() const {
        std::vector<std::string> events;
        for (const auto &entry : std::filesystem::directory_iterator(folder_ / "events")) {
            events.push_back(test_support::ReadWholeFile(entry.path()));
        }
        return events;
    }
    std::string Log() const { return test_support::ReadWholeFile(folder_ / "log"); }

  private:
    static constexpr char kReceiver[] = R"sh(
answer() { printf 'Status: %s\r\nContent-Type: text/plain\r\n\r\n%s' "$1" "$2"; exit; }
body=$(cat)
[ "$REQUEST_METHOD $CONTENT_TYPE" = 'POST application/cloudevents+json; charset=utf-8' ] ||
    answer 415 'not an event'
id=$(printf '%s' "$body" | sed -n 's/.*"id":"\([0-9a-f]*\)".*/\1/p')
case $body in *'"product":"REFUSED"'*) answer 403 'unknown product' ;; esac
[ -e "${0%/*}/events/$id" ] && answer 200 'known'
printf '%s' "$body" >"${0%/*}/events/$id"
answer 202 'stored'
)sh";

    std::string Configuration(const mail_support::Certificate *certificate) const {
        std::string text = "server.document-root = \"" + folder_.Path() + "\"\nserver.bind = \"" +
                           Address() + "\"\nserver.port = " + std::to_string(kPort) +
                           "\nserver.modules = (\"mod_alias\", \"mod_cgi\"";
        if (certificate != nullptr) {
            text += ", \"mod_openssl\"";
        }
        text += ")\nalias.url = (\"/velox/events\" => \"" + (folder_ / "receiver.sh") +
                "\")\ncgi.assign = (\".sh\" => \"/bin/sh\")\n";
        if (certificate != nullptr) {
            text += "ssl.engine = \"enable\"\nssl.pemfile = \"" + certificate->certificate_file +
                    "\"\nssl.privkey = \"" + certificate->key_file + "\"\n";
        }
        return text;
    }

    void WaitUntilReady() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (Veloxctl({"-c", "exec 3<>\"/dev/tcp/$1/$2\"", "-", Address(), std::to_string(kPort)},
                        {.program = "/bin/bash"})
                   .status != 0) {
            if (!process_->IsRunning() || std::chrono::steady_clock::now() > deadline) {
                throw std::runtime_error("lighttpd (package lighttpd) did not start: " + Log());
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    test_support::TempFolder folder_;
    std::optional<mail_support::BackgroundProcess> process_;
};

class RealServerTest : public SecurityOpenTest {
  protected:
    static void SelectServer(const std::string &host) {
        Select(WebServer::kPort, host);
        Put(kDestination, "\"ManagerIP\"=\"" + WebServer::Address() + "\"");
    }
};

TEST_F(RealServerTest, KeepsARepeatedEventOnce) {
    const WebServer server(nullptr);
    SelectServer("");
    EXPECT_EQ(Report("FIRST").status, EX_OK) << server.Log();
    EXPECT_EQ(Report("FIRST").status, EX_OK);
    EXPECT_EQ(server.Events().size(), 1U);
    EXPECT_EQ(Report("SECOND").status, EX_OK);
    ASSERT_EQ(server.Events().size(), 2U);
    EXPECT_EQ(json::parse(server.Events()[0])["specversion"], "1.0");
    const Result refused = Report("REFUSED");
    EXPECT_EQ(refused.status, EX_PROTOCOL);
    EXPECT_THAT(refused.errors, HasSubstr("HTTP/1.1 403 Forbidden: unknown product"));
}

TEST_F(RealServerTest, SpeaksTls) {
    const mail_support::Authority authority;
    const mail_support::Authority foreign;
    const mail_support::Certificate certificate = authority.Issue("IP:" + WebServer::Address());
    const WebServer server(&certificate);
    SelectServer("https://" + WebServer::Address());
    EXPECT_EQ(Report("X", {.variables = {{"KES_CAFILE", authority.File()}}}).status, EX_OK)
        << server.Log();
    const Result distrusted = Report("Y", {.variables = {{"KES_CAFILE", foreign.File()}}});
    EXPECT_EQ(distrusted.status, EX_UNAVAILABLE);
    EXPECT_THAT(distrusted.errors, HasSubstr("result 2: TLS: "));
    EXPECT_EQ(server.Events().size(), 1U);
}

}  // namespace
}  // namespace veloxctl_test
