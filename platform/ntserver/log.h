// Messages of the daemon, on stderr: one line each, for the journal with its priority before it.
#ifndef NTSERVER_LOG_H
#define NTSERVER_LOG_H

namespace ntserver {

enum class Priority { kError = 3, kWarning = 4, kNotice = 5 };

// Text that comes from a client or a file is made harmless: control bytes are written as '?'.
void Log(Priority priority, const char *format, ...) noexcept __attribute__((format(printf, 2, 3)));

}  // namespace ntserver

#endif  // NTSERVER_LOG_H
