// What the tests of the contract data share: the key, the data files, arrays of buffers as callers
// give them, and a sweep that makes each platform call fail in turn.
#ifndef CONTRACT_SUPPORT_H
#define CONTRACT_SUPPORT_H

#include <gtest/gtest.h>
#include <ntwin32/system.h>
#include <velox/contract.h>

#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"

namespace contract {

inline constexpr char kKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
inline constexpr char kEnglish1[] = "/opt/xev/kestro_sa/data/E_vxsadm1.txt";
inline constexpr char kEnglish2[] = "/opt/xev/kestro_sa/data/E_vxsadm2.txt";
inline constexpr char kJapanese1[] = "/opt/xev/kestro_sa/data/J_vxsadm1.txt";
inline constexpr char kJapanese2[] = "/opt/xev/kestro_sa/data/J_vxsadm2.txt";

// Buffers of one size for a list, and a mark behind each that an overrun would destroy.
class Buffers {
  public:
    Buffers(std::size_t count, std::size_t size) : size_(size) {
        memory_.assign(count * (size + 1), kMark);
        for (std::size_t i = 0; i < count; ++i) {
            pointers_.push_back(memory_.data() + i * (size + 1));
        }
    }
    char **Data() { return pointers_.data(); }
    // The first texts; fails the test when a mark is gone.
    std::vector<std::string> Texts(std::size_t count) const {
        for (std::size_t i = 0; i < pointers_.size(); ++i) {
            EXPECT_EQ(pointers_[i][size_], kMark) << "buffer " << i << " was overrun";
        }
        return {pointers_.begin(), pointers_.begin() + static_cast<std::ptrdiff_t>(count)};
    }
    bool Untouched(std::size_t index) const {
        return std::string_view(pointers_[index], size_) == std::string(size_, kMark);
    }

  private:
    static constexpr char kMark = '\x7E';
    std::size_t size_;
    std::vector<char> memory_;
    std::vector<char *> pointers_;
};

template <std::size_t N>
void Fill(char (&field)[N], std::string_view text) {
    std::memset(field, 0, N);
    text.copy(field, N);
}

class ContractTest : public fakes::PlatformTest {
  protected:
    static void UseJapanese() { fakes::TheSystem().language_id = LANGID_JAPANESE; }

    // Runs `prepare` and `run` once for each platform call that `run` makes, with that call
    // failing; `check` gets the call. Whatever fails, everything is closed again.
    static void FailEachCall(const std::function<void()> &prepare, const std::function<void()> &run,
                             const std::function<void(const fakes::Call &)> &check) {
        fakes::Reset();
        prepare();
        run();
        const auto calls = std::vector<fakes::Call>(fakes::Calls());
        ASSERT_FALSE(calls.empty());
        for (std::size_t i = 0; i < calls.size(); ++i) {
            SCOPED_TRACE("call " + std::to_string(i + 1) + ": " + calls[i].function + " " +
                         calls[i].detail);
            fakes::Reset();
            prepare();
            fakes::FailAnyCall(static_cast<int>(i) + 1);
            run();
            check(calls[i]);
            EXPECT_EQ(fakes::OpenKeys(), 0);
            EXPECT_EQ(fakes::OpenFiles(), 0);
            EXPECT_EQ(fakes::ClosedHandleCalls(), 0);
            EXPECT_EQ(fakes::UnusedFaults(), 0);
        }
        fakes::Reset();
    }

    // The name of the value that a failed call was about: "path name" as the fake logs it.
    static std::string ValueOf(const fakes::Call &call) {
        return call.detail.substr(call.detail.rfind(' ') + 1);
    }
};

}  // namespace contract

#endif  // CONTRACT_SUPPORT_H
