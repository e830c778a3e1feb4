// The surroundings of every test of a mail module: a deadline and no registry.
#ifndef MODULE_FIXTURE_H
#define MODULE_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include <support/environment.h>
#include <support/temp_folder.h>

// For calls that succeed, also on a busy machine, and for calls that the deadline ends.
inline constexpr std::chrono::seconds kAmple(20);
inline constexpr std::chrono::seconds kDeadline(1);

class ModuleTest : public testing::Test {
  protected:
    void SetDeadline(std::chrono::seconds deadline) {
        deadline_.Set(std::to_string(deadline.count()));
    }

    test_support::TempFolder folder_;
    test_support::EnvironmentVariable run_{"KES_RUN", folder_.Path()};
    test_support::EnvironmentVariable state_{"KES_STATE", folder_.Path()};
    test_support::EnvironmentVariable authority_{"KES_CAFILE"};
    test_support::EnvironmentVariable deadline_{"KES_MAIL_DEADLINE",
                                                std::to_string(kAmple.count())};
};

class ShortDeadlineTest : public ModuleTest {
  protected:
    ShortDeadlineTest() { SetDeadline(kDeadline); }
};

#endif  // MODULE_FIXTURE_H
