// The log file of a program: opening, rotation, appending whole lines.
//
// State model
//   A file is closed or open. While it is open several processes and forked children append to it,
//   each with one write a line, and any of them may rotate it: the file is renamed and a new one
//   takes its name. What a process knows of the file is therefore a guess (known_size_, and that
//   the name still belongs to the open file), and looking at the name brings the guess up to date.
//   A look is due after a millisecond or after a part of the room that is left, so that a burst of
//   lines costs no other system call than its writes, and a line goes astray only when all
//   generations were rotated away within the millisecond. Rotation holds an flock on a descriptor
//   of its own of the file that has the name: a descriptor that a forked child shares would not
//   keep the child out. Who does not get the lock at once goes on writing; nothing here ever waits
//   for another process.
//
// The object has no lock of its own; tracelog.cpp serialises its use.
#ifndef TRACELOG_LOG_FILE_H
#define TRACELOG_LOG_FILE_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <ctime>

#include <base/descriptor.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace tracelog {

class LogFile {
  public:
    constexpr LogFile() noexcept = default;

    // Opens <state>/log/<program>.log, making it and the folder "log" when they are missing.
    bool Open(const char *program, int generations, std::uint32_t size_limit) noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return static_cast<bool>(file_); }

    // Appends one line, after rotating the file when the line would pass the limit.
    void Write(const char *line, std::size_t length, const timespec &now) noexcept;

  private:
    bool OpenFolder() noexcept;
    bool OpenFile() noexcept;
    void Reopen() noexcept;
    bool HasName(struct stat *named) const noexcept;
    bool IsLookDue(std::size_t length, const timespec &now) const noexcept;
    void Look(const timespec &now) noexcept;
    void Rotate(std::size_t length) noexcept;
    bool ShiftGenerations() const noexcept;
    void NameGeneration(int generation, char *name) const noexcept;
    void Append(const char *line, std::size_t length) noexcept;

    base::UniqueDescriptor folder_;
    base::UniqueDescriptor file_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    int generations_ = 0;
    std::uint64_t limit_ = 0;
    std::uint64_t rotate_above_ = 0;  // the limit, or more after a rotation that failed
    std::uint64_t known_size_ = 0;
    std::uint64_t unlooked_ = 0;  // bytes written since the last look
    timespec looked_ = {};
    bool torn_ = false;  // the last line was written in part only
    char folder_path_[PATH_MAX] = {};
    char name_[NAME_MAX + 1] = {};
};

}  // namespace tracelog

#endif  // TRACELOG_LOG_FILE_H
