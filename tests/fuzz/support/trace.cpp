// libtracelog for fuzz targets: every record is formatted, so that the sanitizers see its
// arguments.
#include <tracelog.h>

#include <cstdarg>
#include <cstdio>

void TraceLog(int, const char *, const char *, int, const char *szFormat, ...) noexcept {
    static char text[TRACELOG_MAX_TEXT];
    va_list arguments;
    va_start(arguments, szFormat);
    (void)std::vsnprintf(text, sizeof text, szFormat, arguments);
    va_end(arguments);
}
