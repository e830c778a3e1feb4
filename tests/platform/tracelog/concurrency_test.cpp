// Several threads, forked children and independent processes on one log.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <thread>

#include "trace_fixture.h"

namespace {

using testing::SizeIs;
namespace fs = std::filesystem;

class Concurrency : public TraceTest {
  protected:
    std::vector<LoggedRecord> AllGenerations() const {
        std::vector<LoggedRecord> all;
        for (int generation = 99; generation >= 0; --generation) {
            const std::string path = generation > 0 ? Generation(generation) : LogPath();
            const auto records = ReadRecords(path);
            all.insert(all.end(), records.begin(), records.end());
        }
        return all;
    }
};

void TraceRun(int writer, int count) {
    for (int i = 0; i < count; ++i) {
        TraceLog(0, "s", "f", writer, "%d:%d:%.*s", writer, i, i % 50,
                 std::string(50, 'x').c_str());
    }
}

// Each writer's records must all be there, whole and in its own order.
void ExpectComplete(const std::vector<LoggedRecord> &records, int writers, int count) {
    EXPECT_EQ(records.size(), static_cast<std::size_t>(writers) * static_cast<std::size_t>(count));
    std::map<int, int> next;
    for (const LoggedRecord &record : records) {
        const int number = next[record.line]++;
        EXPECT_EQ(record.text, std::to_string(record.line) + ":" + std::to_string(number) + ":" +
                                   std::string(static_cast<std::size_t>(number % 50), 'x'));
    }
}

// Runs body(index) in its own process each and expects them all to end well.
template <typename Body>
void InProcesses(int count, Body body) {
    std::vector<pid_t> children;
    for (int index = 0; index < count; ++index) {
        const pid_t child = ::fork();
        if (child == 0) {
            body(index);
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        }
        ASSERT_GT(child, 0);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(Concurrency, ThreadsShareTheLog) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 99, 20000), 0);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int writer = 0; writer < 4; ++writer) {
        threads.emplace_back(TraceRun, writer, 1000);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(fs::exists(Generation(5)));
    ExpectComplete(AllGenerations(), 4, 1000);
}

TEST_F(Concurrency, ThreadsMayTraceWhileTheLogIsClosedAndOpened) {
    std::atomic<bool> stop{false};
    std::atomic<int> heard{0};
    std::vector<std::thread> threads;
    threads.reserve(2);
    for (int writer = 0; writer < 2; ++writer) {
        threads.emplace_back([&stop, writer] {
            while (!stop) {
                TraceLog(1, "s", "f", writer, "x");
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        ASSERT_NE(TraceLogInit(0, i % 2 != 0 ? "odd" : "even", i % 3, 5, 0), 0);
        TraceLogSetListener([](const TRACELOG_RECORD *,
                               void *context) { ++*static_cast<std::atomic<int> *>(context); },
                            &heard);
        TraceLogSetListener(nullptr, nullptr);
        TraceLogClose();
    }
    stop = true;
    for (std::thread &thread : threads) {
        thread.join();
    }
    ReadRecords(LogPath("odd"));
    ReadRecords(LogPath("even"));
}

TEST_F(Concurrency, ForkedChildrenShareTheLogAndSayWhoTheyAre) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 99, 20000), 0);
    TraceLog(0, "s", "f", 9, "parent");
    InProcesses(4, [](int index) { TraceRun(index, 800); });
    auto records = AllGenerations();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.front().process, ::getpid());
    records.erase(records.begin());
    std::map<int, int> process_of;
    for (const LoggedRecord &record : records) {
        EXPECT_NE(record.process, ::getpid());
        process_of.emplace(record.line, record.process);
        EXPECT_EQ(record.process, process_of[record.line]);
    }
    EXPECT_THAT(process_of, SizeIs(4));
    ExpectComplete(records, 4, 800);
}

TEST_F(Concurrency, ProcessesThatOpenTheLogThemselvesShareIt) {
    InProcesses(4, [](int index) {
        EXPECT_NE(TraceLogInit(0, "vlxfd", 0, 99, 20000), 0);
        TraceRun(index, 800);
    });
    // How often depends on who runs: while one rotates, the others write on.
    EXPECT_TRUE(fs::exists(Generation(1)));
    ExpectComplete(AllGenerations(), 4, 800);
}

TEST_F(Concurrency, AProcessThatSleptFindsTheNewFile) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 2, 2000), 0);
    TraceLog(0, "s", "f", 1, "first");
    InProcesses(1, [](int) {
        EXPECT_NE(TraceLogInit(0, "vlxfd", 0, 2, 2000), 0);
        TraceRun(0, 300);  // far more than all generations hold
    });
    TraceLog(0, "s", "f", 1, "late");
    EXPECT_EQ(Records().back().text, "late");
}

TEST_F(Concurrency, AForkAmongTracingThreadsLeavesTheChildAbleToTrace) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 99, 0), 0);
    std::atomic<bool> stop{false};
    std::thread tracer([&stop] {
        while (!stop) {
            TraceLog(0, "s", "f", 1, "x");
        }
    });
    for (int i = 0; i < 50; ++i) {
        InProcesses(1, [](int) {
            ::alarm(60);  // a lock left held would wait for ever
            TraceLog(0, "s", "f", 2, "child");
        });
    }
    stop = true;
    tracer.join();
    int children = 0;
    for (const LoggedRecord &record : AllGenerations()) {
        children += record.text == "child" ? 1 : 0;
    }
    EXPECT_EQ(children, 50);
}

TEST_F(Concurrency, AListenerMayFork) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceLogSetListener([](const TRACELOG_RECORD *, void *) { InProcesses(1, [](int) {}); },
                        nullptr);
    TraceLog(0, "s", "f", 1, "x");
    TraceLogSetListener(nullptr, nullptr);
    TraceLog(0, "s", "f", 1, "y");
    EXPECT_THAT(Records(), SizeIs(2));
}

}  // namespace
