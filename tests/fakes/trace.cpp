// libtracelog: records everything and formats it, so that a wrong format shows.
#include <tracelog.h>

#include <cstdarg>
#include <cstdio>

#include "state.h"

int TraceLogInit(uint32_t dwFlags, const char *szProgram, int nLowestLevel, int nGenerations,
                 uint32_t dwSizeLimit) noexcept {
    return fakes::Enter("TraceLogInit", std::to_string(dwFlags) + "," + szProgram + "," +
                                            std::to_string(nLowestLevel) + "," +
                                            std::to_string(nGenerations) + "," +
                                            std::to_string(dwSizeLimit)) == 0;
}

void TraceLog(int nLevel, const char *szSource, const char *szFunction, int nLine,
              const char *szFormat, ...) noexcept {
    va_list arguments;
    va_list again;
    va_start(arguments, szFormat);
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, szFormat, arguments);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, szFormat, again);
    va_end(again);
    va_end(arguments);
    fakes::internal::Record({nLevel, szSource, szFunction, nLine, szFormat, std::move(text)});
}

void TraceLogSetListener(TRACELOG_LISTENER, void *) noexcept {}

void TraceLogClose() noexcept {}
