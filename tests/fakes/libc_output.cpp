// System log and standard output: TheLibc().system_log and TheLibc().printed.
#include <cstdarg>
#include <cstdio>

#include "fakes/libc.h"
#include "state.h"

extern "C" void __wrap_syslog(int priority, const char *format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    fakes::Enter("syslog", text);
    fakes::TheLibc().system_log.push_back(std::to_string(priority) + " " + text);
}

extern "C" int __wrap_puts(const char *text) {
    fakes::Enter("puts", text);
    fakes::TheLibc().printed.emplace_back(text);
    return 1;
}
