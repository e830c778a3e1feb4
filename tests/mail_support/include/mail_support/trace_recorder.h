// Every trace record of the process, while the object lives.
#ifndef MAIL_SUPPORT_TRACE_RECORDER_H
#define MAIL_SUPPORT_TRACE_RECORDER_H

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <tracelog.h>

namespace mail_support {

struct TraceRecord {
    int level;
    std::string source;
    std::string function;
    std::string text;
};

class TraceRecorder {
  public:
    TraceRecorder() { TraceLogSetListener(&TraceRecorder::Hear, this); }
    TraceRecorder(const TraceRecorder &) = delete;
    TraceRecorder &operator=(const TraceRecorder &) = delete;
    ~TraceRecorder() { TraceLogSetListener(nullptr, nullptr); }

    std::vector<TraceRecord> Records() const {
        const std::lock_guard lock(mutex_);
        return records_;
    }
    // Whether a record of this level holds the text.
    bool Has(int level, std::string_view text) const {
        for (const TraceRecord &record : Records())
            if (record.level == level && record.text.find(text) != std::string::npos)
                return true;
        return false;
    }
    // All texts, a line each.
    std::string AllText() const {
        std::string all;
        for (const TraceRecord &record : Records())
            all += std::to_string(record.level) + " " + record.source + " " + record.function +
                   " " + record.text + "\n";
        return all;
    }

  private:
    static void Hear(const TRACELOG_RECORD *record, void *object) {
        auto &self = *static_cast<TraceRecorder *>(object);
        const std::lock_guard lock(self.mutex_);
        self.records_.push_back(
            {record->nLevel, record->szSource, record->szFunction, record->szText});
    }

    mutable std::mutex mutex_;
    std::vector<TraceRecord> records_;
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_TRACE_RECORDER_H
