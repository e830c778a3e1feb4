// Reads a trace log back, strictly: a line of any other form fails the test.
#ifndef LOG_READER_H
#define LOG_READER_H

#include <gtest/gtest.h>
#include <support/temp_folder.h>

#include <sstream>
#include <string>
#include <vector>

struct LoggedRecord {
    std::string time;
    int process = 0;
    int level = 0;
    std::string source;
    std::string function;
    int line = 0;
    std::string text;
};

// "2026-01-02T03:04:05.000006Z", each digit as 0.
inline bool IsTime(std::string time) {
    for (char &byte : time) {
        byte = byte >= '0' && byte <= '9' ? '0' : byte;
    }
    return time == "0000-00-00T00:00:00.000000Z";
}

// The text is what follows the sixth blank, whatever it holds.
inline bool ParseRecord(const std::string &line, LoggedRecord *record) {
    std::istringstream fields(line);
    fields >> record->time >> record->process >> record->level >> record->source >>
        record->function >> record->line;
    if (!fields || fields.get() != ' ' || !IsTime(record->time)) {
        return false;
    }
    std::getline(fields, record->text);
    std::ostringstream again;
    again << record->time << ' ' << record->process << ' ' << record->level << ' ' << record->source
          << ' ' << record->function << ' ' << record->line << ' ' << record->text;
    return again.str() == line;
}

inline std::vector<LoggedRecord> ReadRecords(const std::string &path) {
    const std::string content = test_support::ReadWholeFile(path);
    EXPECT_TRUE(content.empty() || content.back() == '\n') << path << " ends in mid-line";
    std::vector<LoggedRecord> records;
    std::istringstream lines(content);
    for (std::string line; std::getline(lines, line);) {
        LoggedRecord record;
        if (ParseRecord(line, &record)) {
            records.push_back(record);
        } else {
            ADD_FAILURE() << "not a record: " << line;
        }
    }
    return records;
}

#endif  // LOG_READER_H
