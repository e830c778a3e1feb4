// The destination list of a report: any text is cut as a second, plain reading of the rules cuts
// it.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "report_steps.h"

namespace {

struct Reading {
    int result = VX_REPORT_SENT;
    std::vector<std::string> addresses;
};

// The first thing wrong with one entry, whose blanks at both ends are gone.
int EntryFault(const std::string &entry, std::size_t addresses_before) {
    if (addresses_before == VX_DESTINATION_COUNT) {
        return VX_REPORT_DESTINATION_TOO_LONG;
    }
    const std::size_t blank = entry.find(' ');
    if (blank != std::string::npos && blank < VX_DESTINATION_LENGTH) {
        return VX_REPORT_DESTINATION_INVALID;
    }
    return entry.size() > VX_DESTINATION_LENGTH ? VX_REPORT_DESTINATION_TOO_LONG : VX_REPORT_SENT;
}

Reading Read(const std::string &list) {
    Reading reading;
    if (list.size() > VX_DESTINATION_LIST_LENGTH) {
        return {VX_REPORT_DESTINATION_TOO_LONG, {}};
    }
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        std::string entry = list.substr(start, end - start);
        start = end + 1;
        entry.erase(0, std::min(entry.find_first_not_of(' '), entry.size()));
        entry.erase(entry.find_last_not_of(' ') + 1);
        if (entry.empty()) {
            continue;
        }
        reading.result = EntryFault(entry, reading.addresses.size());
        if (reading.result != VX_REPORT_SENT) {
            return reading;
        }
        reading.addresses.push_back(entry);
    }
    if (reading.addresses.empty()) {
        reading.result = VX_REPORT_NO_DESTINATION;
    }
    return reading;
}

void Expect(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string list(reinterpret_cast<const char *>(data), size);
    const std::string text = list.c_str();  // up to the first zero byte
    const Reading expected = Read(text);

    DESTINATIONS destinations;
    Expect(SplitDestinations("fuzz", text.c_str(), destinations) == expected.result);
    if (expected.result == VX_REPORT_SENT) {
        Expect(destinations.dwCount == expected.addresses.size());
        std::size_t length = 0;
        for (std::size_t i = 0; i < expected.addresses.size(); ++i) {
            Expect(destinations.lpszTo[i] == expected.addresses[i]);
            length += expected.addresses[i].size() + 2;
        }
        Expect(destinations.dwLength == length);
    }
    return 0;
}
