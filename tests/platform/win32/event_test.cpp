// Events: signals taken and kept, waits that end and waits that do not.
#include <ntwin32/event.h>
#include <ntwin32/file.h>

#include <gtest/gtest.h>
#include <support/temp_folder.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class Event {
  public:
    Event(BOOL manual_reset, BOOL signalled)
        : handle_(CreateEvent(nullptr, manual_reset, signalled, nullptr)) {
        EXPECT_NE(handle_, 0);
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    }
    Event(const Event &) = delete;
    Event &operator=(const Event &) = delete;
    ~Event() { EXPECT_NE(CloseHandle(handle_), FALSE); }
    HANDLE Get() const { return handle_; }

  private:
    HANDLE handle_;
};

TEST(AutoResetEvent, GivesItsSignalToOneWait) {
    const Event event(FALSE, FALSE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
    EXPECT_NE(SetEvent(event.Get()), FALSE);
    EXPECT_NE(SetEvent(event.Get()), FALSE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
}

TEST(ManualResetEvent, KeepsItsSignal) {
    const Event event(TRUE, FALSE);
    EXPECT_NE(SetEvent(event.Get()), FALSE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
    EXPECT_NE(ResetEvent(event.Get()), FALSE);
    EXPECT_EQ(WaitForSingleObject(event.Get(), 0), WAIT_TIMEOUT);
}

TEST(Event, MayBeginSignalled) {
    const Event automatic(FALSE, TRUE);
    EXPECT_EQ(WaitForSingleObject(automatic.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic.Get(), 0), WAIT_TIMEOUT);
    const Event manual(TRUE, 42);
    EXPECT_EQ(WaitForSingleObject(manual.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(manual.Get(), 0), WAIT_OBJECT_0);
}

TEST(Event, WaitsAsLongAsAskedFor) {
    const Event event(FALSE, FALSE);
    const auto begin = steady_clock::now();
    EXPECT_EQ(WaitForSingleObject(event.Get(), 30), WAIT_TIMEOUT);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(30));
    // A deadline whose nanoseconds pass a whole second.
    EXPECT_EQ(WaitForSingleObject(event.Get(), 999), WAIT_TIMEOUT);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(1029));
}

TEST(Event, WakesAWaitingThread) {
    const Event event(FALSE, FALSE);
    std::thread setter([&event] {
        std::this_thread::sleep_for(milliseconds(20));
        SetEvent(event.Get());
    });
    EXPECT_EQ(WaitForSingleObject(event.Get(), INFINITE), WAIT_OBJECT_0);
    setter.join();
}

TEST(ManualResetEvent, WakesEveryWaitingThread) {
    const Event event(TRUE, FALSE);
    std::atomic<int> woken{0};
    const auto wait = [&] {
        woken += WaitForSingleObject(event.Get(), 60000) == WAIT_OBJECT_0 ? 1 : 0;
    };
    std::thread first(wait);
    std::thread second(wait);
    SetEvent(event.Get());
    first.join();
    second.join();
    EXPECT_EQ(woken, 2);
}

TEST(Event, HasNoName) {
    EXPECT_EQ(CreateEvent(nullptr, FALSE, FALSE, "name"), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(Event, IsNeededByEveryCall) {
    const test_support::TempFolder folder;
    const HANDLE file =
        CreateFile(folder.Write("file", "").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
    for (const HANDLE handle : {HANDLE{0}, INVALID_HANDLE_VALUE, file}) {
        EXPECT_EQ(SetEvent(handle), FALSE);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(ResetEvent(handle), FALSE);
        EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
    }
    CloseHandle(file);
}

}  // namespace
