// Trace records of src/. A source file sets its identity once:
//     static constexpr char TRACE_SOURCE[] = "amrset";
// TRACE names the function it stands in; TRACE_AS names another one, for a named step of an
// exported function whose records all carry that function's name.
#ifndef REGISTRY_TRACE_H
#define REGISTRY_TRACE_H

#include <tracelog.h>

#define TRACE(nLevel, ...) TraceLog((nLevel), TRACE_SOURCE, __func__, __LINE__, __VA_ARGS__)
#define TRACE_AS(szFunction, nLevel, ...) \
    TraceLog((nLevel), TRACE_SOURCE, (szFunction), __LINE__, __VA_ARGS__)

// Levels (tracelog.h, convention 3).
inline constexpr int TRACE_NOTE = 0;
inline constexpr int TRACE_FAILURE = 1;
inline constexpr int TRACE_MEMORY = 2;
inline constexpr int TRACE_RESULT = 3;

#endif  // REGISTRY_TRACE_H
