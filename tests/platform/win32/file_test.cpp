// Files of removable media: what opens, what does not, and where reading stops.
#include <ntwin32/event.h>
#include <ntwin32/file.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <support/temp_folder.h>
#include <support/title.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using test_support::TempFolder;

HANDLE Open(const std::string &path) {
    return CreateFile(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                      0);
}

// Makes the object at `path` that a row is about.
using Maker = void (*)(const TempFolder &folder, const std::string &path);

struct RefusedCase {
    const char *title;
    Maker make;
    DWORD error;
    int number;  // errno of KesOpenMediaFile
};

class RefusedFile : public testing::TestWithParam<RefusedCase> {
  protected:
    TempFolder folder_;
    std::string path_ = folder_ / "object";
};

TEST_P(RefusedFile, DoesNotOpenAndDoesNotHang) {
    GetParam().make(folder_, path_);
    EXPECT_EQ(Open(path_), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), GetParam().error);
    errno = 0;
    EXPECT_EQ(KesOpenMediaFile(path_.c_str()), -1);
    EXPECT_EQ(errno, GetParam().number);
}

void MakeSocket(const std::string &path) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ::close(socket);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedFile,
    testing::Values(
        RefusedCase{"Absent", [](const TempFolder &, const std::string &) {}, ERROR_FILE_NOT_FOUND,
                    ENOENT},
        RefusedCase{"Folder",
                    [](const TempFolder &, const std::string &path) { fs::create_directory(path); },
                    ERROR_ACCESS_DENIED, EINVAL},
        RefusedCase{"Pipe",
                    [](const TempFolder &, const std::string &path) {
                        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
                    },
                    ERROR_ACCESS_DENIED, EINVAL},
        RefusedCase{"LinkToAFile",
                    [](const TempFolder &folder, const std::string &path) {
                        fs::create_symlink(folder.Write("real", "text"), path);
                    },
                    ERROR_ACCESS_DENIED, ELOOP},
        RefusedCase{"LinkToNothing",
                    [](const TempFolder &folder, const std::string &path) {
                        fs::create_symlink(folder / "missing", path);
                    },
                    ERROR_ACCESS_DENIED, ELOOP},
        RefusedCase{"LinkToADevice",
                    [](const TempFolder &, const std::string &path) {
                        fs::create_symlink("/dev/zero", path);
                    },
                    ERROR_ACCESS_DENIED, ELOOP},
        RefusedCase{"Socket", [](const TempFolder &, const std::string &path) { MakeSocket(path); },
                    ERROR_ACCESS_DENIED, EINVAL}),
    test_support::Title());

TEST(RefusedFile, IsADevice) {
    EXPECT_EQ(Open("/dev/zero"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(KesOpenMediaFile("/dev/zero"), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(RefusedFile, IsOneBelowAFile) {
    const TempFolder folder;
    EXPECT_EQ(Open(folder.Write("file", "text") + "/below"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(RefusedFile, HasATooLongName) {
    EXPECT_EQ(Open("/" + std::string(300, 'x')), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BAD_PATHNAME));
}

TEST(OpenFile, NeedsValidArguments) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "text");
    const auto expect_refused = [](HANDLE handle) {
        EXPECT_EQ(handle, INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    };
    expect_refused(CreateFile(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0));
    expect_refused(CreateFile(path.c_str(), 0x40000000, 0, nullptr, OPEN_EXISTING, 0, 0));
    expect_refused(CreateFile(path.c_str(), GENERIC_READ | 0x40000000, 0, nullptr, 3, 0, 0));
    expect_refused(CreateFile(path.c_str(), GENERIC_READ, 0, nullptr, 2, 0, 0));
    EXPECT_EQ(KesOpenMediaFile(nullptr), -1);
    EXPECT_EQ(errno, EINVAL);
}

// Reads to the end in blocks; false when a read fails.
bool ReadAll(HANDLE file, DWORD block, std::string *content) {
    std::vector<char> buffer(block);
    for (;;) {
        DWORD count = 12345;
        if (ReadFile(file, buffer.data(), block, &count, nullptr) == FALSE) {
            EXPECT_EQ(count, 0u);
            return false;
        }
        if (count == 0) {
            return true;
        }
        content->append(buffer.data(), count);
    }
}

class BlockOfReading : public testing::TestWithParam<DWORD> {};

TEST_P(BlockOfReading, DoesNotChangeWhatIsRead) {
    const TempFolder folder;
    std::string text;
    for (int i = 0; i < 20000; ++i) {
        text += static_cast<char>(i * 7);
    }
    const HANDLE file = Open(folder.Write("file", text));
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    std::string content;
    EXPECT_TRUE(ReadAll(file, GetParam(), &content));
    EXPECT_TRUE(content == text);
    EXPECT_NE(CloseHandle(file), FALSE);
}

INSTANTIATE_TEST_SUITE_P(Sizes, BlockOfReading, testing::Values(1u, 100u, 20000u, 262144u));

TEST(OpenFile, EndsWithSuccessAndNoBytes) {
    const TempFolder folder;
    const HANDLE file = Open(folder.Write("empty", ""));
    char byte = 'x';
    for (int i = 0; i < 3; ++i) {
        DWORD count = 9;
        EXPECT_NE(ReadFile(file, &byte, 1, &count, nullptr), FALSE);
        EXPECT_EQ(count, 0u);
    }
    EXPECT_EQ(byte, 'x');
    CloseHandle(file);
}

struct LimitCase {
    const char *title;
    off_t size;
    bool readable;
};

class LimitOfReading : public testing::TestWithParam<LimitCase> {};

TEST_P(LimitOfReading, FailsTheReadThatWouldPassIt) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "x");
    ASSERT_EQ(::truncate(path.c_str(), GetParam().size), 0);
    for (const DWORD block : {1000u, 262144u, KES_MAX_MEDIA_FILE, KES_MAX_MEDIA_FILE + 7}) {
        const HANDLE file = Open(path);
        std::string content;
        EXPECT_EQ(ReadAll(file, block, &content), GetParam().readable);
        if (GetParam().readable) {
            EXPECT_EQ(content.size(), static_cast<std::size_t>(GetParam().size));
        } else {
            EXPECT_LE(content.size(), KES_MAX_MEDIA_FILE);
            EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_DATA));
            EXPECT_FALSE(ReadAll(file, block, &content)) << "a later read fails too";
        }
        CloseHandle(file);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, LimitOfReading,
                         testing::Values(LimitCase{"BelowIt", KES_MAX_MEDIA_FILE - 1, true},
                                         LimitCase{"AtIt", KES_MAX_MEDIA_FILE, true},
                                         LimitCase{"AboveIt", KES_MAX_MEDIA_FILE + 1, false},
                                         LimitCase{"HundredMegabytes", 100 << 20, false},
                                         LimitCase{"SparseTebibyte", off_t{1} << 40, false}),
                         test_support::Title());

TEST(OpenFile, IsReadWithValidArgumentsOnly) {
    const TempFolder folder;
    const HANDLE file = Open(folder.Write("file", "text"));
    char buffer[8] = "";
    DWORD count = 0;
    EXPECT_EQ(ReadFile(file, buffer, 4, nullptr, nullptr), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(ReadFile(file, nullptr, 4, &count, nullptr), FALSE);
    EXPECT_EQ(ReadFile(file, buffer, 4, &count, buffer), FALSE);
    EXPECT_NE(ReadFile(file, nullptr, 0, &count, nullptr), FALSE);
    EXPECT_NE(ReadFile(file, buffer, 4, &count, nullptr), FALSE);
    EXPECT_STREQ(buffer, "text") << "calls that fail do not move the position";
    CloseHandle(file);
}

TEST(Handle, FitsThirtyTwoBits) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "text");
    std::set<HANDLE> handles;
    for (int i = 0; i < 200; ++i) {
        const HANDLE handle = Open(path);
        EXPECT_GT(handle, 0);
        EXPECT_EQ(handle, static_cast<HANDLE>(static_cast<int32_t>(handle)));
        EXPECT_TRUE(handles.insert(handle).second);
    }
    for (const HANDLE handle : handles) {
        EXPECT_NE(CloseHandle(handle), FALSE);
    }
}

TEST(Handle, IsUnknownOnceClosed) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "text");
    const HANDLE first = Open(path);
    ASSERT_NE(CloseHandle(first), FALSE);
    const HANDLE second = Open(path);  // takes the slot of the first
    char byte;
    DWORD count;
    EXPECT_EQ(ReadFile(first, &byte, 1, &count, nullptr), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(CloseHandle(first), FALSE);
    EXPECT_NE(ReadFile(second, &byte, 1, &count, nullptr), FALSE);
    CloseHandle(second);
}

TEST(Handle, IsRefusedWhenItNeverWasOne) {
    for (const HANDLE handle : {HANDLE{0}, INVALID_HANDLE_VALUE, HANDLE{1} << 40, HANDLE{0x10000},
                                HANDLE{0x7FFFFFFF}, INTPTR_MIN, HANDLE{-2}}) {
        char byte;
        DWORD count;
        EXPECT_EQ(ReadFile(handle, &byte, 1, &count, nullptr), FALSE);
        EXPECT_EQ(CloseHandle(handle), FALSE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }
}

TEST(Handle, OfAnEventIsNoFile) {
    const HANDLE event = CreateEvent(nullptr, FALSE, FALSE, nullptr);
    char byte;
    DWORD count;
    EXPECT_EQ(ReadFile(event, &byte, 1, &count, nullptr), FALSE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_NE(CloseHandle(event), FALSE);
}

int OpenDescriptors() {
    const fs::directory_iterator descriptors("/proc/self/fd");
    return static_cast<int>(std::distance(begin(descriptors), end(descriptors)));
}

TEST(Handle, LeavesNoDescriptorBehind) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "text");
    fs::create_directory(folder / "folder");
    const int before = OpenDescriptors();
    for (int i = 0; i < 50; ++i) {
        CloseHandle(Open(path));
        Open(folder / "folder");
        Open(folder / "missing");
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(OpenFile, FailsWithoutDescriptors) {
    const TempFolder folder;
    const std::string path = folder.Write("file", "text");
    rlimit former = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
    rlimit none = former;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const HANDLE file = Open(path);
    const DWORD error = GetLastError();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &former), 0);
    EXPECT_EQ(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
}

TEST(MediaFile, OpensWithoutBeingInherited) {
    const TempFolder folder;
    const int file = KesOpenMediaFile(folder.Write("file", "text").c_str());
    ASSERT_GE(file, 0);
    EXPECT_NE(::fcntl(file, F_GETFD) & FD_CLOEXEC, 0);
    char text[8] = "";
    EXPECT_EQ(::read(file, text, sizeof text), 4);
    EXPECT_STREQ(text, "text");
    ::close(file);
}

TEST(LastError, BelongsToItsThread) {
    EXPECT_EQ(Open("/missing/file"), INVALID_HANDLE_VALUE);
    std::thread([] {
        EXPECT_EQ(GetLastError(), 0u);
        EXPECT_EQ(CloseHandle(0), FALSE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }).join();
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(OpenFile, HasOnePositionForAllThreads) {
    const TempFolder folder;
    const HANDLE file = Open(folder.Write("file", std::string(40000, 'x')));
    DWORD totals[4] = {};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (DWORD &total : totals) {
        threads.emplace_back([file, &total] {
            char buffer[64];
            DWORD count = 0;
            while (ReadFile(file, buffer, sizeof buffer, &count, nullptr) != FALSE && count != 0) {
                total += count;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(totals[0] + totals[1] + totals[2] + totals[3], 40000u);
    CloseHandle(file);
}

}  // namespace
