// The log file: where it is, what is refused in its place, rotation and generations.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <support/title.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "trace_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Field;
using testing::SizeIs;
namespace fs = std::filesystem;

using LogFile = TraceTest;

mode_t ModeOf(const std::string &path) {
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & ALLPERMS;
}

TEST_F(LogFile, IsMadeForTheOwnerAlone) {
    const mode_t former = ::umask(0);
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    ::umask(former);
    EXPECT_EQ(ModeOf(LogPath()), 0600u);
    EXPECT_EQ(ModeOf(state_ / "log"), 0700u);
}

TEST_F(LogFile, IsClosedToOthersWhenItWasOpenToThem) {
    fs::create_directory(state_ / "log");
    state_.Write("log/vlxfd.log", "");
    ASSERT_EQ(::chmod(LogPath().c_str(), 0644), 0);
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    EXPECT_EQ(ModeOf(LogPath()), 0600u);
}

TEST_F(LogFile, IsContinued) {
    for (int i = 0; i < 3; ++i) {
        ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
        TraceLog(0, "s", "f", 1, "run %d", i);
        TraceLogClose();
    }
    EXPECT_THAT(Records(), ElementsAre(Field(&LoggedRecord::text, "run 0"),
                                       Field(&LoggedRecord::text, "run 1"),
                                       Field(&LoggedRecord::text, "run 2")));
}

TEST_F(LogFile, IsNotWrittenBeforeInitNorAfterClose) {
    TraceLog(1, "s", "f", 1, "early");
    EXPECT_FALSE(fs::exists(state_ / "log"));
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceLogClose();
    TraceLog(1, "s", "f", 1, "late");
    EXPECT_THAT(Records(), SizeIs(0));
    TraceLogClose();
}

TEST_F(LogFile, ChangesWithASecondInit) {
    ASSERT_NE(TraceLogInit(0, "first", 0, 5, 0), 0);
    ASSERT_NE(TraceLogInit(0, "second", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_THAT(ReadRecords(LogPath("first")), SizeIs(0));
    EXPECT_THAT(ReadRecords(LogPath("second")), SizeIs(1));
}

TEST_F(LogFile, IsClosedByAnInitThatFails) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    EXPECT_EQ(TraceLogInit(0, "", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_THAT(Records(), SizeIs(0));
}

struct RefusedCase {
    const char *title;
    std::uint32_t flags;
    const char *program;
    int generations;
};

class RefusedInit : public TraceTest, public testing::WithParamInterface<RefusedCase> {};

TEST_P(RefusedInit, WritesNothing) {
    const RefusedCase &row = GetParam();
    EXPECT_EQ(TraceLogInit(row.flags, row.program, 0, row.generations, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_FALSE(fs::exists(state_ / "log"));
    EXPECT_FALSE(fs::exists(state_ / "up.log"));
}

const std::string kTooLong(249, 'p');

INSTANTIATE_TEST_SUITE_P(Rows, RefusedInit,
                         testing::Values(RefusedCase{"NullProgram", 0, nullptr, 5},
                                         RefusedCase{"EmptyProgram", 0, "", 5},
                                         RefusedCase{"Slash", 0, "../up", 5},
                                         RefusedCase{"AbsolutePath", 0, "/tmp/vlxfd", 5},
                                         RefusedCase{"TooLong", 0, kTooLong.c_str(), 5},
                                         RefusedCase{"Flags", 1, "vlxfd", 5},
                                         RefusedCase{"TooManyGenerations", 0, "vlxfd", 100},
                                         RefusedCase{"NegativeGenerations", 0, "vlxfd", -1}),
                         test_support::Title());

TEST_F(LogFile, MayHaveTheLongestName) {
    const std::string program(248, 'p');
    ASSERT_NE(TraceLogInit(0, program.c_str(), 0, 99, 100), 0);
    for (int i = 0; i < 150; ++i) {
        TraceLog(1, "s", "f", 1, "%060d", i);
    }
    EXPECT_THAT(ReadRecords(LogPath(program) + ".99"), SizeIs(1));
}

TEST_F(LogFile, IsNotSoughtBelowARelativeState) {
    variable_.Set("state");
    EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    EXPECT_FALSE(fs::exists("state"));
}

TEST_F(LogFile, NeedsAStateFolder) {
    variable_.Set(state_ / "missing");
    EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_FALSE(fs::exists(state_ / "missing"));
}

TEST_F(LogFile, IsNoLink) {
    fs::create_directory(state_ / "log");
    state_.Write("victim", "untouched");
    fs::create_symlink(state_ / "victim", LogPath());
    EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_EQ(test_support::ReadWholeFile(state_ / "victim"), "untouched");
}

TEST_F(LogFile, IsNoDanglingLink) {
    fs::create_directory(state_ / "log");
    fs::create_symlink(state_ / "victim", LogPath());
    EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    EXPECT_FALSE(fs::exists(state_ / "victim"));
}

TEST_F(LogFile, IsNoFolderAndNoPipe) {
    fs::create_directories(LogPath("folder"));
    EXPECT_EQ(TraceLogInit(0, "folder", 0, 5, 0), 0);
    ASSERT_EQ(::mkfifo(LogPath("pipe").c_str(), 0600), 0);
    EXPECT_EQ(TraceLogInit(0, "pipe", 0, 5, 0), 0);
    const int reader = ::open(LogPath("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(TraceLogInit(0, "pipe", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    char byte;
    EXPECT_EQ(::read(reader, &byte, 1), 0);
    ::close(reader);
}

TEST_F(LogFile, CannotBeMadeWhereTheFolderIsAFile) {
    state_.Write("log", "a file");
    EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceLog(1, "s", "f", 1, "x");
    EXPECT_EQ(test_support::ReadWholeFile(state_ / "log"), "a file");
}

TEST_F(LogFile, NeverTakesTheNumberOfAStandardStream) {
    const int saved = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 100);
    ::close(STDIN_FILENO);
    const int result = TraceLogInit(0, "vlxfd", 0, 5, 0);
    const bool taken = ::fcntl(STDIN_FILENO, F_GETFD) >= 0;
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
    EXPECT_NE(result, 0);
    EXPECT_FALSE(taken);
}

TEST_F(LogFile, IsNotInheritedByPrograms) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    int found = 0;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone).string().find(state_.Path()) != 0) {
            continue;
        }
        ++found;
        const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFD);
        EXPECT_NE(flags & FD_CLOEXEC, 0);
    }
    EXPECT_GT(found, 0);
}

// Every line of these tests is longer than 100 and shorter than 200 bytes.
void TraceNumbered(int first, int last) {
    for (int i = first; i <= last; ++i) {
        TraceLog(0, "s", "f", 1, "%080d", i);
    }
}

int NumberOf(const LoggedRecord &record) {
    return std::stoi(record.text);
}

TEST_F(LogFile, RotatesAtItsLimit) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 2, 1000), 0);
    TraceNumbered(1, 60);
    std::vector<int> numbers;
    for (const std::string &path : {Generation(2), Generation(1), LogPath()}) {
        EXPECT_LE(fs::file_size(path), 1000u);
        EXPECT_GT(fs::file_size(path), 0u);
        EXPECT_EQ(ModeOf(path), 0600u);
        for (const LoggedRecord &record : ReadRecords(path)) {
            numbers.push_back(NumberOf(record));
        }
    }
    EXPECT_FALSE(fs::exists(Generation(3)));
    EXPECT_GT(fs::file_size(Generation(1)), 800u);
    ASSERT_FALSE(numbers.empty());
    EXPECT_EQ(numbers.back(), 60);
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        EXPECT_EQ(numbers[i], numbers[i - 1] + 1);
    }
}

TEST_F(LogFile, RotatesAtAMebibyteUnlessTold) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    const std::string text(4000, 'x');
    for (int i = 0; i < 300; ++i) {
        TraceLog(0, "s", "f", 1, "%s", text.c_str());
    }
    EXPECT_LE(fs::file_size(Generation(1)), 1048576u);
    EXPECT_GT(fs::file_size(Generation(1)), 1040000u);
    EXPECT_FALSE(fs::exists(Generation(2)));
}

TEST_F(LogFile, KeepsNoGenerationWhenToldSo) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 0, 1000), 0);
    TraceNumbered(1, 30);
    EXPECT_FALSE(fs::exists(Generation(1)));
    EXPECT_LE(fs::file_size(LogPath()), 1000u);
    EXPECT_EQ(NumberOf(Records().back()), 30);
}

TEST_F(LogFile, WritesARecordOverTheLimitWhole) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 100), 0);
    TraceNumbered(1, 3);
    EXPECT_EQ(NumberOf(Records().at(0)), 3);
    EXPECT_EQ(NumberOf(ReadRecords(Generation(1)).at(0)), 2);
    EXPECT_EQ(NumberOf(ReadRecords(Generation(2)).at(0)), 1);
}

TEST_F(LogFile, RotatesAFileThatWasLargeAlready) {
    fs::create_directory(state_ / "log");
    const std::string former(5000, 'x');
    state_.Write("log/vlxfd.log", former);
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 1000), 0);
    TraceNumbered(1, 1);
    EXPECT_EQ(test_support::ReadWholeFile(Generation(1)), former);
    EXPECT_THAT(Records(), SizeIs(1));
}

TEST_F(LogFile, RotatesOverAGap) {
    fs::create_directory(state_ / "log");
    state_.Write("log/vlxfd.log", std::string(1000, 'x'));
    state_.Write("log/vlxfd.log.2", "second");
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 1000), 0);
    TraceNumbered(1, 1);
    EXPECT_EQ(test_support::ReadWholeFile(Generation(3)), "second");
    EXPECT_FALSE(fs::exists(Generation(2)));
    EXPECT_EQ(fs::file_size(Generation(1)), 1000u);
}

TEST_F(LogFile, GrowsWhenItCannotBeRotated) {
    fs::create_directories(Generation(1));  // a folder in the way
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 1, 1000), 0);
    TraceNumbered(1, 50);
    EXPECT_THAT(Records(), SizeIs(50));
    fs::remove(Generation(1));
    TraceLog(0, "s", "f", 1, "%s", std::string(4000, 'x').c_str());
    TraceNumbered(51, 1000);  // passes the point where rotation is tried again
    EXPECT_LE(fs::file_size(LogPath()), 1000u);
    EXPECT_EQ(NumberOf(Records().back()), 1000);
}

TEST_F(LogFile, GrowsWhileAnotherProcessRotates) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 1000), 0);
    const int rotating = ::open(LogPath().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(rotating, LOCK_EX), 0);
    TraceNumbered(1, 20);
    EXPECT_THAT(Records(), SizeIs(20));
    ::close(rotating);
    TraceNumbered(21, 21);
    EXPECT_THAT(Records(), SizeIs(1));
    EXPECT_THAT(ReadRecords(Generation(1)), SizeIs(20));
}

// A look at the name is due at the latest one millisecond after the last.
void WaitForNextLook() {
    ::usleep(2000);
}

TEST_F(LogFile, IsMadeAnewAfterItWasRemoved) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceNumbered(1, 1);
    fs::remove(LogPath());
    WaitForNextLook();
    TraceNumbered(2, 2);
    EXPECT_EQ(NumberOf(Records().at(0)), 2);
}

TEST_F(LogFile, IsMadeAnewAfterItsFolderWasReplaced) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    TraceNumbered(1, 1);
    fs::rename(state_ / "log", state_ / "old");
    WaitForNextLook();
    TraceNumbered(2, 2);
    EXPECT_EQ(NumberOf(ReadRecords(state_ / "old/vlxfd.log").back()), 2)
        << "a folder that only moved keeps its log";
    fs::remove_all(state_ / "old");
    WaitForNextLook();
    TraceNumbered(3, 3);
    EXPECT_EQ(NumberOf(Records().at(0)), 3);
}

TEST_F(LogFile, NeverFollowsALinkPutInItsPlace) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    state_.Write("victim", "untouched");
    fs::remove(LogPath());
    fs::create_symlink(state_ / "victim", LogPath());
    WaitForNextLook();
    TraceNumbered(1, 100);
    EXPECT_EQ(test_support::ReadWholeFile(state_ / "victim"), "untouched");
}

TEST_F(LogFile, StartsANewLineAfterATornOne) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
    // The file may not grow over 150 bytes for a while, as on a full disk.
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    rlimit low = former;
    low.rlim_cur = 150;
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &low), 0);
    TraceNumbered(1, 3);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &former), 0);
    ::signal(SIGXFSZ, handler);
    EXPECT_EQ(fs::file_size(LogPath()), 150u);
    TraceNumbered(4, 4);
    const std::string content = test_support::ReadWholeFile(LogPath());
    EXPECT_EQ(content[150], '\n');
    EXPECT_NE(content.find(std::string(79, '0') + "4\n"), std::string::npos);
}

}  // namespace
