// Deliverers that are killed wherever they are: no alert is lost, a repeated one is the same mail,
// and none goes out again after its delivery was recorded.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <random>
#include <set>
#include <thread>

#include "queue_case.h"

namespace {

using mail_support::SmtpServer;
using testing::IsEmpty;
using veloxctl_test::HeaderOf;
using veloxctl_test::QueueTest;
using veloxctl_test::ReportIn;
using veloxctl_test::Veloxctl;
using Microseconds = std::chrono::microseconds;

constexpr int kRounds = 200;

class QueueKillTest : public QueueTest {
  protected:
    // The delivery as a process of its own, without waiting for it.
    pid_t Start() {
        const std::string program = test_support::ProductRoot() + "/lib/veloxctl/veloxctl-all";
        const pid_t child = fork();
        if (child == 0) {
            (void)!freopen("/dev/null", "w", stdout);
            (void)!freopen("/dev/null", "w", stderr);
            execl(program.c_str(), "veloxctl", "queue", "deliver", "--now", nullptr);
            _exit(127);
        }
        return child;
    }

    // The texts of the alerts that are in the queue now.
    std::set<std::string> Waiting() {
        std::set<std::string> texts;
        for (const std::string &id : Ids()) {
            texts.insert(Load(id).item.message);
        }
        return texts;
    }
};

// What the server took over, by the alert's text. Mails are decoded once.
class Receiver {
  public:
    struct Seen {
        std::set<std::string> message_ids;
        int mails = 0;
    };

    explicit Receiver(SmtpServer *server) : server_(server) {}

    const std::map<std::string, Seen> &Update() {
        const auto mails = server_->Mails();
        for (; count_ < mails.size(); ++count_) {
            const std::string report = ReportIn(mails[count_]);
            const std::string heading = "\r\n[ALERT]\r\n";
            const std::size_t begin = report.find(heading) + heading.size();
            Seen &alert = seen_[report.substr(begin, report.find('\r', begin) - begin)];
            alert.message_ids.insert(HeaderOf(mails[count_], "Message-Id"));
            ++alert.mails;
        }
        return seen_;
    }

    // Until one more mail was taken over, or the deliverer has ended.
    void WaitForMail(pid_t child) {
        siginfo_t ended = {};
        while (server_->Mails().size() == count_ && ended.si_pid == 0) {
            std::this_thread::sleep_for(Microseconds(50));
            waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT);
        }
    }

  private:
    SmtpServer *server_;
    std::size_t count_ = 0;
    std::map<std::string, Seen> seen_;
};

TEST_F(QueueKillTest, NoAlertIsLostOrRepeatedAfterItsRecord) {
    SmtpServer server({});
    UsePort(server.Port());
    Receiver receiver(&server);
    std::mt19937 random(20240305);
    const auto up_to = [&random](long microseconds) {
        return Microseconds(std::uniform_int_distribution<long>(0, microseconds)(random));
    };
    // How long an undisturbed delivery takes; kills fall into that time and a little beyond.
    (void)Add("measure");
    const auto begin = std::chrono::steady_clock::now();
    int status = 0;
    ASSERT_GT(waitpid(Start(), &status, 0), 0);
    ASSERT_EQ(status, 0);
    const auto whole =
        std::chrono::duration_cast<Microseconds>(std::chrono::steady_clock::now() - begin);

    std::set<std::string> accepted = {"measure"};
    std::map<std::string, int> recorded;  // mails when the alert was first out of the queue
    int killed = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::string text = "alert " + std::to_string(round);
        ASSERT_FALSE(Add(text).empty());
        accepted.insert(text);
        receiver.Update();
        const pid_t child = Start();
        // Every second one just when the server has accepted a mail, before its record or after.
        if (round % 2 == 0) {
            std::this_thread::sleep_for(up_to(whole.count() * 5 / 4));
        } else {
            receiver.WaitForMail(child);
            std::this_thread::sleep_for(up_to(1000));
        }
        kill(child, SIGKILL);
        ASSERT_GT(waitpid(child, &status, 0), 0);
        killed += WIFSIGNALED(status) ? 1 : 0;
        const std::set<std::string> waiting = Waiting();
        const auto &seen = receiver.Update();
        for (const std::string &alert : accepted) {
            if (waiting.contains(alert)) {
                continue;
            }
            ASSERT_TRUE(seen.contains(alert)) << alert << " left the queue and was not received";
            const int mails = seen.at(alert).mails;
            ASSERT_EQ(recorded.emplace(alert, mails).first->second, mails)
                << alert << " went out after its record";
        }
    }
    const auto last = Veloxctl({"queue", "deliver", "--now"});
    EXPECT_EQ(last.status, 0) << last.errors;
    EXPECT_THAT(Ids(), IsEmpty());
    int repeated = 0;
    const auto &seen = receiver.Update();
    EXPECT_EQ(seen.size(), accepted.size());
    for (const auto &[text, alert] : seen) {
        EXPECT_TRUE(accepted.contains(text)) << text;
        EXPECT_EQ(alert.message_ids.size(), 1U) << text;
        EXPECT_TRUE(!recorded.contains(text) || alert.mails == recorded[text]) << text;
        repeated += alert.mails > 1 ? 1 : 0;
    }
    std::printf("killed %d of %d, repeated alerts: %d, a delivery takes %ld us\n", killed, kRounds,
                repeated, static_cast<long>(whole.count()));
    EXPECT_GT(killed, kRounds / 4);
}

}  // namespace
