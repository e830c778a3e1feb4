// Key disks of tests: folders with the three files, byte by byte.
#ifndef VELOXCTL_TEST_DISK_FOLDER_H
#define VELOXCTL_TEST_DISK_FOLDER_H

#include <amcrtcpy.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/encoding.h"
#include "support/temp_folder.h"

namespace veloxctl_test {

using test_support::ToSjis;

inline constexpr char kCustomerFile[] = "AMVLXUSR.INF";
inline constexpr char kAddressFile[] = "AMVLXADR.INF";
inline constexpr char kHeartbeatFile[] = "AMVLXHBI.INF";

// The uuencode form of a text.
inline std::string Encoded(const std::string &text) {
    void *block = nullptr;
    DWORD size = 0;
    if (UUCdEnCodingToMemory(text.data(), static_cast<DWORD>(text.size()), &block, &size) == 0) {
        throw std::runtime_error("cannot encode");
    }
    std::string encoded(static_cast<char *>(block), size);
    std::free(block);
    return encoded;
}

// What stands in the files; nothing: no file.
struct DiskFiles {
    std::optional<std::string> customer = Encoded("[USER-NAME]\r\nX\r\n");
    std::optional<std::string> address = "[E-MAIL]\r\na@b.example\r\n";
    std::optional<std::string> heartbeat = std::nullopt;
};

inline void WriteDisk(const test_support::TempFolder &folder, const DiskFiles &files) {
    const auto write = [&folder](const char *name, const std::optional<std::string> &content) {
        if (content) {
            folder.Write(name, *content);
        }
    };
    write(kCustomerFile, files.customer);
    write(kAddressFile, files.address);
    write(kHeartbeatFile, files.heartbeat);
}

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_DISK_FOLDER_H
