// The text of one trace record: formatted, cut at its limit, escaped, put into a line.
#ifndef TRACELOG_RECORD_INTERNAL_H
#define TRACELOG_RECORD_INTERNAL_H

#include <cstdarg>
#include <cstddef>
#include <ctime>

#include <sys/types.h>
#include <tracelog.h>

namespace tracelog {

inline constexpr char kCutMark[] = "...";

// A formatted text. It may hold zero bytes of its own ("%c" of 0); one more follows it.
struct Text {
    char bytes[TRACELOG_MAX_TEXT + sizeof kCutMark];
    std::size_t length;
};

// Formats like vsnprintf. A text over TRACELOG_MAX_TEXT is cut at a whole EUC-JP character and
// marked; one that cannot be formatted becomes the format itself behind "(not formatted) ".
__attribute__((format(printf, 1, 0))) void FormatText(const char *format, va_list arguments,
                                                      Text *text) noexcept;

// What the line of a record says besides its text. Null texts stand as "(null)".
struct Origin {
    timespec time;
    pid_t process;
    int level;
    const char *source;
    const char *function;
    int line;
};

// Bytes kept of the name of a source file or of a function.
inline constexpr std::size_t kMaxName = 128;
// Four bytes for an escaped one; 80 for time, numbers and separators.
inline constexpr std::size_t kMaxLine = 80 + 4 * (2 * kMaxName + sizeof(Text::bytes));

// Writes the whole line with its LF and gives its length; line must hold kMaxLine bytes.
std::size_t FormatLine(const Origin &origin, const Text &text, char *line) noexcept;

}  // namespace tracelog

#endif  // TRACELOG_RECORD_INTERNAL_H
