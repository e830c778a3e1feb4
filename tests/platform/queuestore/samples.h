// Alerts for the tests of the queue.
#ifndef QUEUESTORE_SAMPLES_H
#define QUEUESTORE_SAMPLES_H

#include <queuestore/entry.h>

#include <string>

namespace samples {

inline queuestore::Entry Alert(const std::string &message = "TEST - AlertManager") {
    queuestore::Entry entry;
    entry.id = queuestore::NewId();
    entry.message_id = queuestore::MessageIdOf(entry.id, "host01.example.com");
    entry.queued = 1709600000;
    entry.item = {.kind = 4,
                  .log = "SYSTEM",
                  .source = "KESHeartBeatDll",
                  .level = 2,
                  .root = 0x80000002,
                  .destination = "SOFTWARE\\XEV",
                  .time = 1709599999,
                  .computer = "host01",
                  .message = message,
                  .reporter = "KESHeartBeatDll",
                  .report_level = 2,
                  .data = std::string("\x00\xFF\x7F", 3),
                  .extra = "",
                  .texts = {"", "two", "", "four"},
                  .count = 1,
                  .flags = 0,
                  .context = 0xFFFFFFFFFFFFFFFF,
                  .note = ""};
    return entry;
}

}  // namespace samples

#endif  // QUEUESTORE_SAMPLES_H
