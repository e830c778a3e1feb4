#include "log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace ntserver {

namespace {

// Under the journal a line may begin with its priority.
bool WritesToJournal() noexcept {
    static const bool journal = ::secure_getenv("JOURNAL_STREAM") != nullptr;
    return journal;
}

}  // namespace

void Log(Priority priority, const char *format, ...) noexcept {
    char line[1024];
    int start = 0;
    if (WritesToJournal())
        start = std::snprintf(line, sizeof line, "<%d>", static_cast<int>(priority));
    else
        start = std::snprintf(line, sizeof line, "KESntserver: ");
    va_list arguments;
    va_start(arguments, format);
    const auto room = sizeof line - static_cast<std::size_t>(start) - 1;
    int length = std::vsnprintf(line + start, room, format, arguments);
    va_end(arguments);
    if (length < 0)
        return;
    if (static_cast<std::size_t>(length) >= room)
        length = static_cast<int>(room) - 1;
    for (int i = start; i < start + length; ++i) {
        if (static_cast<unsigned char>(line[i]) < 0x20 || line[i] == 0x7F)
            line[i] = '?';
    }
    line[start + length] = '\n';
    // One write a line, so that lines of several threads do not mix.
    const auto size = static_cast<std::size_t>(start) + static_cast<std::size_t>(length) + 1;
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line, size);
}

}  // namespace ntserver
