// Files of the alert queue: no input may crash the reader, and what it read must survive the
// writer.
#include <queuestore/entry.h>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    queuestore::Entry entry;
    std::string problem;
    if (!queuestore::Parse({reinterpret_cast<const char *>(data), size}, &entry, &problem)) {
        if (problem.empty()) {
            std::abort();
        }
        return 0;
    }
    queuestore::Entry again;
    if (!queuestore::Parse(queuestore::Format(entry), &again, &problem) || !(again == entry)) {
        std::abort();
    }
    return 0;
}
