// Whole processes: one value by veloxctl against starting /bin/true, and a whole import by vlxfd
// against the durable commits that it needs, made bare.
#include <amcrtcpy.h>
#include <base/descriptor.h>
#include <records/customer_items.h>
#include <sched.h>
#include <spawn.h>
#include <support/server.h>
#include <sys/mount.h>

#include <filesystem>

#include "support/ratios.h"
#include "support/registry_load.h"
#include "support/worker.h"

extern char **environ;

namespace {

// The import writes every item and their number, three addresses, the interval, and then the
// destination, the version and the computer's name.
constexpr long kCommitsOfAnImport = CUSTOMER_ITEM_COUNT + 1 + 3 + 1 + 3;

// Runs a program to its end with its output thrown away and gives its exit status.
int RunProgram(const std::vector<std::string> &words) {
    std::vector<char *> arguments;
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int error =
        posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || ::waitpid(process, &status, 0) != process)
        throw std::runtime_error("cannot run " + words[0]);
    return WEXITSTATUS(status);
}

std::string Program(const std::string &name) {
    return test_support::ProductRoot() + "/bin/" + name;
}

test_support::Server &TheServer() {
    static test_support::Server server;
    return server;
}

void BinTrue(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(RunProgram({"/bin/true"}));
}

void QueryOneValue(benchmark::State &state) {
    TheServer();
    const std::vector<std::string> words = {Program("veloxctl"),
                                            "reg",
                                            "query",
                                            "HKLM\\SOFTWARE\\XEV\\VLXService\\SETUP",
                                            "-v",
                                            "VERSION"};
    for (auto _ : state)
        if (RunProgram(words) != 0)
            state.SkipWithError("veloxctl failed");
}

// A folder with the three files of a typical English disk: 27 items, 6 of them options.
class Disk {
  public:
    Disk() {
        std::string text = "[CONTRACT]\r\nCorporate\r\n";
        int options = 0;
        for (const ITEM_ROW &row : CUSTOMER_ITEMS) {
            const std::string name = row.lpszName[ITEM_ENGLISH];
            if (name == "CONTRACT")
                continue;
            const bool is_option = row.eMatch == ITEM_NUMBERED || name == ITEM_NOT_IN_ENGLISH;
            const std::string item = is_option ? "SUB-N-CODE 0" + std::to_string(++options) : name;
            text.append("[" + item + "]\r\n").append(bench::kText).append("\r\n");
        }
        void *encoded = nullptr;
        DWORD size = 0;
        if (UUCdEnCodingToMemory(text.data(), static_cast<DWORD>(text.size()), &encoded, &size) ==
            FALSE)
            throw std::runtime_error("cannot encode");
        folder_.Write("AMVLXUSR.INF", {static_cast<const char *>(encoded), size});
        std::free(encoded);
        folder_.Write(
            "AMVLXADR.INF",
            "[E-MAIL]\r\na@b.example\r\n[PHONENO]\r\n1\r\n[ERROR-REPLY]\r\nb@b.example\r\n");
        folder_.Write("AMVLXHBI.INF", "[HEART-BEAT-INT]\r\n10\r\n");
    }
    const std::string &Path() const { return folder_.Path(); }

  private:
    test_support::TempFolder folder_;
};

// Mounts the disk where only this process and its children see it, for the rest of its life.
void MountDisk() {
    static const Disk disk;
    static const test_support::TempFolder place;
    static bool mounted = false;
    if (mounted)
        return;
    const std::string folder = place / "floppy";
    std::filesystem::create_directory(folder);
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount(disk.Path().c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) != 0)
        throw std::runtime_error("cannot mount the disk: root is needed");
    mounted = true;
}

void Import(benchmark::State &state) {
    TheServer();
    MountDisk();
    for (auto _ : state)
        if (RunProgram({Program("vlxfd")}) != 1)
            state.SkipWithError("vlxfd failed");
}

void CommitsOfAnImport(benchmark::State &state) {
    bench::BareStore store;
    for (auto _ : state)
        for (long commit = 0; commit < kCommitsOfAnImport; ++commit)
            store.Fill(commit, commit + 1);
}

// What the disk takes to keep a page: the goal of the import holds from 200 microseconds on.
void DataSync(benchmark::State &state) {
    const test_support::TempFolder folder;
    const base::UniqueDescriptor file(
        ::open((folder / "page").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const std::string page(4096, 'x');
    for (auto _ : state)
        if (::pwrite(file.Get(), page.data(), page.size(), 0) < 0 || ::fdatasync(file.Get()) != 0)
            state.SkipWithError("the page cannot be written");
}

BENCHMARK(BinTrue)->UseRealTime();
BENCHMARK(DataSync)->UseRealTime();
BENCHMARK(QueryOneValue)->UseRealTime();
// Each run of vlxfd lengthens the stored version, which is full after 20.
BENCHMARK(Import)->UseRealTime()->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(CommitsOfAnImport)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(
        argc, argv,
        {{"one value by veloxctl, in starts of /bin/true", "QueryOneValue", "BinTrue", 3.0},
         {"a whole import, in the durable commits that it needs", "Import", "CommitsOfAnImport",
          2.0}});
}
