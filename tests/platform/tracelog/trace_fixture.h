// A private state folder with an empty "log" folder for every test of the trace log.
#ifndef TRACE_FIXTURE_H
#define TRACE_FIXTURE_H

#include <gtest/gtest.h>
#include <support/environment.h>
#include <support/temp_folder.h>
#include <tracelog.h>

#include <string>
#include <vector>

#include "log_reader.h"

class TraceTest : public testing::Test {
  protected:
    ~TraceTest() override {
        TraceLogSetListener(nullptr, nullptr);
        TraceLogClose();
    }

    std::string LogPath(const std::string &program = "vlxfd") const {
        return state_ / ("log/" + program + ".log");
    }
    std::string Generation(int number) const { return LogPath() + "." + std::to_string(number); }
    std::vector<LoggedRecord> Records() const { return ReadRecords(LogPath()); }

    test_support::TempFolder state_;
    test_support::EnvironmentVariable variable_{"KES_STATE", state_.Path()};
};

#endif  // TRACE_FIXTURE_H
