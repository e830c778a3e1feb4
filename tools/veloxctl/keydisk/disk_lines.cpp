#include "keydisk/disk_lines.h"

#include <keyfd/keyfd.h>
#include <ntwin32/file.h>
#include <records/key_disk.h>

#include <cstring>

namespace veloxctl::keydisk {

DiskLines::DiskLines(const std::string &path, std::size_t size)
    : file_(CreateFile(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                       0)),
      size_(size) {
    GetFileLine(READER_RESET, nullptr, nullptr, nullptr);
}

DiskLines::~DiskLines() {
    if (file_ != INVALID_HANDLE_VALUE) {
        CloseHandle(file_);
    }
}

bool DiskLines::Next() {
    char line[KEYDISK_MAX_LINE + 1];
    DWORD stored = KEYDISK_MAX_LINE;
    DWORD position = 0;
    line_ += whole_ ? 1 : 0;
    if (file_ == INVALID_HANDLE_VALUE ||
        GetFileLine(static_cast<LONG>(file_), line, &stored, &position) == FALSE) {
        return false;
    }
    line[stored] = '\0';
    text_.assign(line, std::strlen(line));
    // Only a piece that fills the capacity comes without a zero byte at its end.
    whole_ = stored > 0 && line[stored - 1] == '\0';
    if (text_.empty()) {
        ended_early_ = position + std::size_t{1} < size_;
        return false;
    }
    return true;
}

}  // namespace veloxctl::keydisk
