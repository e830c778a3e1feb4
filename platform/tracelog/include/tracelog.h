/*
 * libtracelog: the trace log of the system's programs.
 *
 * Conventions
 *  1. A program calls TraceLogInit once; before that nothing is written to a file. A log that
 * cannot be opened or written never stops the program.
 *  2. The log is <state>/log/<program>.log (state: "/var/opt/xev/kestro_sa", or KES_STATE), mode
 * 0600, one line a record: time with microseconds, process id, level, source, function, line, text.
 * In the text the backslash and the control bytes (00 to 1F, 7F, and 80 to 9F but 8E and 8F, which
 *     begin EUC-JP characters) are escaped as \xHH, so that no text can forge a record or a line.
 *  3. Levels: 0 entry, exit and notes; 1 failures; 2 failed allocations; 3 the import's result.
 *  4. Thread safety: every function may be called from any thread. A record of several processes is
 *     one write, so that records never mix.
 *  5. errno is unchanged by every function.
 */
#ifndef TRACELOG_H
#define TRACELOG_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define TRACELOG_API __attribute__((visibility("default")))
#define TRACELOG_FORMAT(format_index, first) __attribute__((format(printf, format_index, first)))
#else
#define TRACELOG_API
#define TRACELOG_FORMAT(format_index, first)
#endif

#ifdef __cplusplus
#define TRACELOG_NOEXCEPT noexcept
extern "C" {
#else
#define TRACELOG_NOEXCEPT
#endif

/* The longest text of one record in bytes before escaping; a longer one is cut and marked "...". */
#define TRACELOG_MAX_TEXT 4096

/*
 * Opens the log of the program szProgram (a file name without folder or extension).
 *   dwFlags       reserved, 0
 *   nLowestLevel  records below this level are not written
 *   nGenerations  rotated files kept (<program>.log.1 is the newest), 0 to 99
 *   dwSizeLimit   size in bytes at which the log is rotated; 0: 1 MiB
 * A second call opens anew. Non-zero when the log could be opened.
 */
TRACELOG_API int TraceLogInit(uint32_t dwFlags, const char *szProgram, int nLowestLevel,
                              int nGenerations, uint32_t dwSizeLimit) TRACELOG_NOEXCEPT;

/*
 * Writes one record. szSource is the source file without extension, szFormat a printf format.
 * A record that nobody takes (no log, no listener) costs one atomic load and is not formatted.
 */
TRACELOG_API void TraceLog(int nLevel, const char *szSource, const char *szFunction, int nLine,
                           const char *szFormat, ...) TRACELOG_NOEXCEPT TRACELOG_FORMAT(5, 6);

/* One record as a listener receives it; the texts are valid during the call only, not escaped. */
typedef struct TRACELOG_RECORD {
    int nLevel;
    int nLine;
    const char *szSource;
    const char *szFunction;
    const char *szText;
} TRACELOG_RECORD;

typedef void (*TRACELOG_LISTENER)(const TRACELOG_RECORD *lpRecord, void *lpContext);

/* Sets the listener of this process (null: none). It hears every record of every level, also
   without a log, in the thread that traces; it must not trace itself. */
TRACELOG_API void TraceLogSetListener(TRACELOG_LISTENER pfnListener,
                                      void *lpContext) TRACELOG_NOEXCEPT;

/* Closes the log; TraceLogInit opens it again. */
TRACELOG_API void TraceLogClose(void) TRACELOG_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
