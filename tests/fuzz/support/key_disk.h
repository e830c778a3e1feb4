// The platform below the key-disk import, for fuzz targets: one file in memory, conversions that
// grow their text as much as the real ones may, and trace records that are formatted and dropped.
#ifndef TESTS_FUZZ_SUPPORT_KEY_DISK_H
#define TESTS_FUZZ_SUPPORT_KEY_DISK_H

#include <cstddef>
#include <string_view>

namespace fuzz_support {

// The file that CreateFile opens, read at most `read_size` bytes at a time. The bytes are the
// caller's and must outlive the reading.
void SetFile(std::string_view bytes, std::size_t read_size);
// How many of its bytes were read.
std::size_t BytesRead();

// Ends the run as a finding when the condition does not hold.
void Expect(bool condition);

}  // namespace fuzz_support

#endif  // TESTS_FUZZ_SUPPORT_KEY_DISK_H
