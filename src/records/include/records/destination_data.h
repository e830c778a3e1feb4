/*
 * The report destination as a record: one entry of the alert manager's destination list.
 *
 * Conventions
 *  1. Texts are fixed arrays and end with a zero byte inside their array; they are handed on as
 *     they stand (the system stores EUC-JP).
 *  2. The record owns nothing: no field points at memory.
 */
#ifndef RECORDS_DESTINATION_DATA_H
#define RECORDS_DESTINATION_DATA_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Capacity of each text of the record in bytes, terminator included. */
#define DEST_TEXT_CAPACITY 4096

/* What SetDestSetting does with the record. */
#define DEST_ACTION_DELETE 0u
#define DEST_ACTION_ADD 1u
#define DEST_ACTION_MODIFY 2u

typedef struct DEST_DATA {
    DWORD nAction;                          /* one of DEST_ACTION_..., for SetDestSetting only */
    char szDestID[DEST_TEXT_CAPACITY];      /* the id: the key's name below ID_LIST */
    char szMethod[DEST_TEXT_CAPACITY];      /* the kind */
    char szCommandLine[DEST_TEXT_CAPACITY]; /* run command */
    char szManagerIP[DEST_TEXT_CAPACITY];   /* both TCP/IP kinds */
    DWORD dwPortNumber;                     /* both TCP/IP kinds */
    char szTelNo[DEST_TEXT_CAPACITY];       /* out-of-band */
    char szUserName[DEST_TEXT_CAPACITY];    /* out-of-band */
    char szPassWord[DEST_TEXT_CAPACITY];    /* out-of-band; stored as it is given */
    DWORD dwSchedule;                       /* "PARAM0" */
    DWORD dwRetryInterval;                  /* "RETRYINTERVAL" */
    DWORD dwRetryCount;                     /* "RETRYCOUNT" */
} DEST_DATA;

static_assert(offsetof(DEST_DATA, szDestID) == 4, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szMethod) == 4100, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szCommandLine) == 8196, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szManagerIP) == 12292, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, dwPortNumber) == 16388, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szTelNo) == 16392, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szUserName) == 20488, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, szPassWord) == 24584, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, dwSchedule) == 28680, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, dwRetryInterval) == 28684, "layout of DEST_DATA");
static_assert(offsetof(DEST_DATA, dwRetryCount) == 28688, "layout of DEST_DATA");
static_assert(sizeof(DEST_DATA) == 28692, "layout of DEST_DATA");

#ifdef __cplusplus
}
#endif

#endif
