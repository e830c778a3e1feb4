/*
 * The records of the two event tables: events that the server agent reports, and messages that are
 * watched for in the system log.
 *
 * Conventions
 *  1. Texts are fixed arrays and end with a zero byte inside their array; they are handed on as
 *     they stand (the system stores EUC-JP).
 *  2. lplpszDestID points at buffers of EVENT_DEST_CAPACITY bytes. Who fills in the pointers owns
 *     the buffers; a reader stops at the first null pointer.
 */
#ifndef RECORDS_EVENT_DATA_H
#define RECORDS_EVENT_DATA_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define EVENT_NAME_CAPACITY 4096
#define EVENT_MAX_DEST 50
#define EVENT_DEST_CAPACITY 512
#define EVENT_TRAPNAME_CAPACITY 80
#define EVENT_RECOVERY_CAPACITY 512
#define EVENT_KEYWORD_CAPACITY 1024

/* Values of nDestAction. */
#define EVENT_DEST_UNLINK 0u
#define EVENT_DEST_LINK 1u

/* The agent's event. */
typedef struct AGNT_DATA {
    char szSourceName[EVENT_NAME_CAPACITY];
    char szEventID[EVENT_NAME_CAPACITY];
    char *lplpszDestID[EVENT_MAX_DEST]; /* destinations that the event is linked to */
    char szTrapName[EVENT_TRAPNAME_CAPACITY];
    char szRecoveryAction[EVENT_RECOVERY_CAPACITY];
    DWORD nDestIDCount; /* entries used in lplpszDestID */
    DWORD nDestAction;  /* for the writers: what happens to the link to lplpszDestID[0] */
    DWORD nAction;      /* "ACTION", 0 to 2 */
    DWORD ObstacleKind; /* "OBSTACLEKIND", 1, 2, 3, 4 or 6 */
    DWORD AliveLevel;   /* "ALIVELEVEL", 0 to 8 */
} AGNT_DATA;

/* The watched message of the system log. */
typedef struct SYSLOG_DATA {
    char szSourceName[EVENT_NAME_CAPACITY];
    char szEventID[EVENT_NAME_CAPACITY];
    char *lplpszDestID[EVENT_MAX_DEST]; /* destinations that the item is linked to */
    DWORD nDestIDCount;                 /* entries used in lplpszDestID */
    char szKeyWord[EVENT_KEYWORD_CAPACITY];
    DWORD dwReportCount;
    DWORD dwWatchTime;
    DWORD nDestAction;  /* for the writers: what happens to the link to lplpszDestID[0] */
    DWORD nAction;      /* "ACTION", 0 to 2 */
    DWORD ObstacleKind; /* "OBSTACLEKIND", 1, 2, 3, 4 or 6 */
    DWORD AliveLevel;   /* "ALIVELEVEL", 0 to 8 */
    char szTrapName[EVENT_TRAPNAME_CAPACITY];
    char szRecoveryAction[EVENT_RECOVERY_CAPACITY];
    DWORD dwSystemDefined; /* "SYSTEMDEFINED" of the item: read only */
} SYSLOG_DATA;

static_assert(offsetof(AGNT_DATA, szEventID) == 4096, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, lplpszDestID) == 8192, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, szTrapName) == 8592, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, szRecoveryAction) == 8672, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, nDestIDCount) == 9184, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, nDestAction) == 9188, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, nAction) == 9192, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, ObstacleKind) == 9196, "layout of AGNT_DATA");
static_assert(offsetof(AGNT_DATA, AliveLevel) == 9200, "layout of AGNT_DATA");
static_assert(sizeof(AGNT_DATA) == 9208, "layout of AGNT_DATA");

static_assert(offsetof(SYSLOG_DATA, szEventID) == 4096, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, lplpszDestID) == 8192, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, nDestIDCount) == 8592, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, szKeyWord) == 8596, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, dwReportCount) == 9620, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, dwWatchTime) == 9624, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, nDestAction) == 9628, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, nAction) == 9632, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, ObstacleKind) == 9636, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, AliveLevel) == 9640, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, szTrapName) == 9644, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, szRecoveryAction) == 9724, "layout of SYSLOG_DATA");
static_assert(offsetof(SYSLOG_DATA, dwSystemDefined) == 10236, "layout of SYSLOG_DATA");
static_assert(sizeof(SYSLOG_DATA) == 10240, "layout of SYSLOG_DATA");

#ifdef __cplusplus
}
#endif

#endif
