// The lines of a plain text file of a key disk, as the import's line reader gives them, with their
// places in the file.
#ifndef VELOXCTL_KEYDISK_DISK_LINES_H
#define VELOXCTL_KEYDISK_DISK_LINES_H

#include <ntwin32/types.h>

#include <cstddef>
#include <string>

namespace veloxctl::keydisk {

// One at a time in the process: the line reader has one state.
class DiskLines {
  public:
    // size: of the file in bytes.
    DiskLines(const std::string &path, std::size_t size);
    ~DiskLines();
    DiskLines(const DiskLines &) = delete;
    DiskLines &operator=(const DiskLines &) = delete;

    // The next line; false at what the import takes for the file's end.
    bool Next();

    // The line with its LF, which a line that fills the reader's capacity lacks.
    const std::string &Text() const { return text_; }
    // The line without its line end.
    std::string Shown() const { return text_.substr(0, text_.find_last_not_of("\r\n\x1A") + 1); }
    // The number of the line in the file, from 1.
    std::size_t Line() const { return line_; }
    // False for a piece of a line that exceeds the reader's capacity.
    bool IsWhole() const { return whole_; }
    // After the end: true when the file goes on behind it.
    bool EndedEarly() const { return ended_early_; }

  private:
    HANDLE file_;
    std::size_t size_;
    std::string text_;
    std::size_t line_ = 0;
    bool whole_ = true;
    bool ended_early_ = false;
};

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_DISK_LINES_H
