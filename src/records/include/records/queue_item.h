/*
 * The interface of the queue module amvmque.dll, which is loaded at run time.
 *
 * Conventions
 *  1. An item has 23 slots of 64 bits. A number stands in the low 32 bits of its slot; what the
 * high ones hold does not matter.
 *  2. Texts end with a zero byte and are EUC-JP; none is null. A block may be null when its size is
 * 0.
 *  3. Everything that a caller passes stays the caller's and is read during the call only.
 */
#ifndef RECORDS_QUEUE_ITEM_H
#define RECORDS_QUEUE_ITEM_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define AMVMQUE_MODULE "amvmque.dll"

typedef struct AMQUE_ITEM {
    uint64_t qwKind;             /*  1 number: kind of item, 4 for an alert */
    const char *lpszLog;         /*  2 log that the event stands in */
    const char *lpszSource;      /*  3 source of the event */
    uint64_t qwLevel;            /*  4 number: level of the event */
    uint64_t qwRoot;             /*  5 registry root of the destination */
    const char *lpszDestination; /*  6 registry path of the destination */
    uint64_t qwTime;             /*  7 number: time of the event, seconds since 1970 */
    const char *lpszComputer;    /*  8 computer of the event */
    const char *lpszMessage;     /*  9 the alert's text */
    const char *lpszReporter;    /* 10 source that reports the event */
    uint64_t qwReportLevel;      /* 11 number: level under which it is reported */
    const void *lpData;          /* 12 event data */
    uint64_t qwDataSize;         /* 13 number: its size in bytes */
    const void *lpExtra;         /* 14 further data */
    uint64_t qwExtraSize;        /* 15 number: its size in bytes */
    const char *lpszText[4];     /* 16 to 19 further texts, empty where there is none */
    uint64_t qwCount;            /* 20 number: how often the event occurred */
    uint64_t qwFlags;            /* 21 number: 0 */
    uint64_t qwContext;          /* 22 a value of the caller's */
    const char *lpszNote;        /* 23 a last text, empty where there is none */
} AMQUE_ITEM;

static_assert(sizeof(void *) == 8, "a slot holds a pointer");
static_assert(sizeof(AMQUE_ITEM) == 184, "23 slots of 8 bytes");
static_assert(offsetof(AMQUE_ITEM, qwRoot) == 32, "slot 5");
static_assert(offsetof(AMQUE_ITEM, lpszMessage) == 64, "slot 9");
static_assert(offsetof(AMQUE_ITEM, lpData) == 88, "slot 12");
static_assert(offsetof(AMQUE_ITEM, lpszText) == 120, "slot 16");
static_assert(offsetof(AMQUE_ITEM, qwCount) == 152, "slot 20");
static_assert(offsetof(AMQUE_ITEM, lpszNote) == 176, "slot 23");

#define AMQUE_KIND_ALERT 4u

/* Capacities that a queue accepts: a text with its terminator, and a block. */
#define AMQUE_MAX_TEXT 16384u
#define AMQUE_MAX_DATA 65536u

/*
 * Puts an item into the alert queue. Non-zero when it was accepted: it is then whole on disk and
 * stays there until it was delivered or dropped. 0 when it was refused: nothing of it is left.
 */
typedef BOOL AMQUENEWADD(const AMQUE_ITEM *lpItem) NTWIN32_NOEXCEPT;
#define AMQUENEWADD_NAME "AMQueNewAdd"

#ifdef __cplusplus
}
#endif

#endif
