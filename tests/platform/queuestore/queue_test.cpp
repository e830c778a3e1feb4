// The queue's folder: alerts come, change and go as whole files, and what does not belong there is
// left alone.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <queuestore/queue.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "samples.h"
#include "support/temp_folder.h"

namespace {

using queuestore::Entry;
using queuestore::Queue;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class QueueTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(queue_.Open(Folder(), true, &problem_)) << problem_; }

    std::string Folder() const { return temp_ / "queue"; }
    std::string FileOf(const Entry &entry) const { return Folder() + "/" + entry.id + ".json"; }
    Entry Added(const std::string &message) {
        Entry entry = samples::Alert(message);
        EXPECT_TRUE(queue_.Add(entry, &problem_)) << problem_;
        return entry;
    }
    std::vector<std::string> Ids() {
        std::vector<std::string> ids;
        EXPECT_TRUE(queue_.List(&ids, &problem_)) << problem_;
        return ids;
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto &file : std::filesystem::directory_iterator(Folder())) {
            names.push_back(file.path().filename());
        }
        return names;
    }

    test_support::TempFolder temp_;
    Queue queue_;
    std::string problem_;
};

TEST_F(QueueTest, AnAlertIsOneFileOfItsOwner) {
    const Entry entry = Added("a");
    EXPECT_THAT(Names(), ElementsAre(entry.id + ".json"));
    struct stat status = {};
    ASSERT_EQ(stat(FileOf(entry).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    ASSERT_EQ(stat(Folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    EXPECT_EQ(test_support::ReadWholeFile(FileOf(entry)), queuestore::Format(entry));
}

TEST_F(QueueTest, ListsTheOldestFirstAndLoadsEach) {
    const Entry first = Added("a");
    Entry second = samples::Alert("b");
    second.id[0] = '1';  // long before
    ASSERT_TRUE(queue_.Add(second, &problem_));
    EXPECT_THAT(Ids(), ElementsAre(second.id, first.id));
    Entry loaded;
    ASSERT_TRUE(queue_.Load(first.id, &loaded, &problem_)) << problem_;
    EXPECT_EQ(loaded, first);
}

TEST_F(QueueTest, ReplacesAndRemoves) {
    Entry entry = Added("a");
    entry.delivery = {1, 2, 3, "no answer"};
    ASSERT_TRUE(queue_.Replace(entry, &problem_)) << problem_;
    Entry loaded;
    ASSERT_TRUE(queue_.Load(entry.id, &loaded, &problem_));
    EXPECT_EQ(loaded, entry);
    ASSERT_TRUE(queue_.Remove(entry.id, &problem_)) << problem_;
    EXPECT_THAT(Names(), ElementsAre());
    bool missing = false;
    EXPECT_FALSE(queue_.Load(entry.id, &loaded, &problem_, &missing));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(queue_.Remove(entry.id, &problem_));
    EXPECT_EQ(problem_, FileOf(entry) + ": No such file or directory");
}

TEST_F(QueueTest, ReplacingGoesOnWhereAKilledWriterStopped) {
    Entry entry = Added("a");
    temp_.Write("queue/." + entry.id + ".tmp", "{");
    entry.delivery.tries = 1;
    EXPECT_TRUE(queue_.Replace(entry, &problem_)) << problem_;
    EXPECT_THAT(Names(), ElementsAre(entry.id + ".json"));
}

TEST_F(QueueTest, LeavesOutWhatIsNoAlert) {
    const Entry entry = Added("a");
    temp_.Write("queue/readme.json", "{}");
    temp_.Write("queue/." + samples::Alert().id + ".tmp", "{");
    temp_.Write("queue/" + samples::Alert().id, "{}");
    std::filesystem::create_directory(Folder() + "/folder.json");
    EXPECT_THAT(Ids(), ElementsAre(entry.id));
}

TEST_F(QueueTest, ADamagedAlertIsListedAndSaysWhatIsWrong) {
    const Entry entry = samples::Alert();
    temp_.Write("queue/" + entry.id + ".json", "{\"format\": 1}");
    EXPECT_THAT(Ids(), ElementsAre(entry.id));
    Entry loaded;
    bool missing = true;
    EXPECT_FALSE(queue_.Load(entry.id, &loaded, &problem_, &missing));
    EXPECT_FALSE(missing);
    EXPECT_EQ(problem_, FileOf(entry) + ": \"id\" is missing");
}

TEST_F(QueueTest, AnAlertUnderAnotherNameIsRefused) {
    const Entry entry = Added("a");
    const Entry other = samples::Alert();
    std::filesystem::rename(FileOf(entry), FileOf(other));
    Entry loaded;
    EXPECT_FALSE(queue_.Load(other.id, &loaded, &problem_));
    EXPECT_EQ(problem_, FileOf(other) + ": it holds another id");
}

TEST_F(QueueTest, LoadsRegularFilesOnly) {
    const Entry entry = Added("a");
    const Entry link = samples::Alert();
    std::filesystem::create_symlink(FileOf(entry), FileOf(link));
    Entry loaded;
    EXPECT_FALSE(queue_.Load(link.id, &loaded, &problem_));
    EXPECT_THAT(problem_, HasSubstr("Too many levels of symbolic links"));

    const Entry pipe = samples::Alert();
    ASSERT_EQ(mkfifo(FileOf(pipe).c_str(), 0600), 0);
    EXPECT_FALSE(queue_.Load(pipe.id, &loaded, &problem_));
    EXPECT_EQ(problem_, FileOf(pipe) + ": it is no regular file");
}

TEST_F(QueueTest, ALargeFileIsReadNoFurtherThanItsLimit) {
    const Entry entry = samples::Alert();
    const int file = open(FileOf(entry).c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_EQ(ftruncate(file, off_t{1} << 40), 0);
    close(file);
    Entry loaded;
    EXPECT_FALSE(queue_.Load(entry.id, &loaded, &problem_));
    EXPECT_EQ(problem_, FileOf(entry) + ": it has more than 2 MiB");
}

TEST_F(QueueTest, AnAlertThatWouldBeTooLargeIsRefused) {
    Entry entry = samples::Alert(std::string(queuestore::kMaxFileSize, 'a'));
    EXPECT_FALSE(queue_.Add(entry, &problem_));
    EXPECT_EQ(problem_, FileOf(entry) + ": it would have more than 2 MiB");
    EXPECT_THAT(Names(), ElementsAre());
}

TEST_F(QueueTest, OnlyOneHoldsTheLock) {
    bool busy = true;
    ASSERT_TRUE(queue_.Lock(&busy, &problem_)) << problem_;
    EXPECT_FALSE(busy);
    {
        Queue second;
        ASSERT_TRUE(second.Open(Folder(), false, &problem_));
        EXPECT_FALSE(second.Lock(&busy, &problem_));
        EXPECT_TRUE(busy);
        EXPECT_TRUE(second.Add(samples::Alert(), &problem_)) << "adding takes no lock";
    }
    queue_ = Queue();
    Queue third;
    ASSERT_TRUE(third.Open(Folder(), false, &problem_));
    EXPECT_TRUE(third.Lock(&busy, &problem_));
}

TEST_F(QueueTest, CleaningTakesOldFilesOfKilledWritersOnly) {
    const Entry entry = Added("a");
    const std::string young = "." + samples::Alert().id + ".tmp";
    const std::string old = "." + samples::Alert().id + ".tmp";
    temp_.Write("queue/" + young, "{");
    temp_.Write("queue/" + old, "{");
    temp_.Write("queue/old.txt", "");
    for (const std::string &name : {old, std::string("old.txt"), entry.id + ".json"}) {
        const timespec times[2] = {{std::time(nullptr) - 4000, 0}, {std::time(nullptr) - 4000, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, (Folder() + "/" + name).c_str(), times, 0), 0);
    }
    queue_.Clean();
    EXPECT_THAT(Names(), UnorderedElementsAre(entry.id + ".json", young, "old.txt"));
}

TEST(QueueFolderTest, IsMadeOnlyWhenAsked) {
    const test_support::TempFolder temp;
    Queue queue;
    std::string problem;
    EXPECT_FALSE(queue.Open(temp / "queue", false, &problem));
    EXPECT_EQ(problem, temp / "queue: No such file or directory");
    EXPECT_FALSE(queue.Open(temp / "none/queue", true, &problem));
    EXPECT_EQ(problem, temp / "none/queue: No such file or directory");
    EXPECT_TRUE(queue.Open(temp / "queue", true, &problem));
    EXPECT_TRUE(queue.Open(temp / "queue", true, &problem)) << "it is there already";
}

TEST(QueueFolderTest, OneThatOthersMayWriteToIsRefused) {
    const test_support::TempFolder temp;
    Queue queue;
    std::string problem;
    for (const mode_t mode : {0720U, 0702U}) {
        ASSERT_TRUE(mkdir((temp / "queue").c_str(), 0700) == 0 || errno == EEXIST);
        ASSERT_EQ(chmod((temp / "queue").c_str(), mode), 0);
        EXPECT_FALSE(queue.Open(temp / "queue", true, &problem));
        EXPECT_THAT(problem, HasSubstr("others than its owner may write to it"));
    }
}

TEST(QueueFolderTest, ALinkOrAFileIsRefused) {
    const test_support::TempFolder temp;
    std::filesystem::create_directory(temp / "real");
    std::filesystem::create_symlink(temp / "real", temp / "link");
    temp.Write("file", "");
    Queue queue;
    std::string problem;
    EXPECT_FALSE(queue.Open(temp / "link", true, &problem));
    EXPECT_FALSE(queue.Open(temp / "file", true, &problem));
}

}  // namespace
