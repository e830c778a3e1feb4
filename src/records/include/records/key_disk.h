// The three files of a key disk and the limits of their texts.
#ifndef RECORDS_KEY_DISK_H
#define RECORDS_KEY_DISK_H

#include <cstddef>

#define KEYDISK_CUSTOMER_FILE "AMVLXUSR.INF"
#define KEYDISK_ADDRESS_FILE "AMVLXADR.INF"
#define KEYDISK_HEARTBEAT_FILE "AMVLXHBI.INF"

// A line of the customer file in bytes, counted with its run of line breaks; also the capacity with
// which the lines of the other two files are read.
inline constexpr std::size_t KEYDISK_MAX_LINE = 1024;
// An item's value in bytes, without terminator.
inline constexpr std::size_t KEYDISK_MAX_VALUE = 16384;

// The mark that some editors leave at the end of a file.
inline constexpr char KEYDISK_END_MARK = '\x1A';

#endif  // RECORDS_KEY_DISK_H
