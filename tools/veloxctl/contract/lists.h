// Lists of the contract functions, read whole whatever their length.
#ifndef VELOXCTL_CONTRACT_LISTS_H
#define VELOXCTL_CONTRACT_LISTS_H

#include <string>
#include <vector>

#include "failure.h"

namespace veloxctl::contract {

// Calls read(buffers, capacity, &count) with capacity 0 and then with room for all. read gives
// false when a set-up data file is missing, which fails (EX_NOINPUT) with the message. The entries
// are as stored.
template <typename Count, typename Read>
std::vector<std::string> ReadList(std::size_t entry_size, const char *missing, Read read) {
    Count count = 0;
    if (!read(nullptr, Count{0}, &count)) {
        Fail(EX_NOINPUT, missing);
    }
    const Count capacity = count;
    std::vector<std::string> entries(static_cast<std::size_t>(capacity),
                                     std::string(entry_size, '\0'));
    std::vector<char *> buffers;
    buffers.reserve(entries.size());
    for (std::string &entry : entries) {
        buffers.push_back(entry.data());
    }
    if (capacity > 0 && !read(buffers.data(), capacity, &count)) {
        Fail(EX_NOINPUT, missing);
    }
    entries.resize(static_cast<std::size_t>(count < capacity ? count : capacity));
    for (std::string &entry : entries) {
        entry.resize(entry.find('\0'));
    }
    return entries;
}

}  // namespace veloxctl::contract

#endif  // VELOXCTL_CONTRACT_LISTS_H
