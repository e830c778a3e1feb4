/*
 * The records that the library and the management-server module amrvxmn.dll share, and the module's
 * interface.
 *
 * Conventions
 *  1. The layouts are fixed: natural alignment of a 64-bit build, checked below.
 *  2. Texts end with a zero byte and are EUC-JP.
 *  3. The module reads what it is handed during the call only; it writes nothing but the error
 * text.
 */
#ifndef RECORDS_MANAGER_H
#define RECORDS_MANAGER_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Capacity of the address and host texts of the parameter record, terminator included. */
#define VLX_MANAGER_TEXT_CAPACITY 513
/* Capacity of the text that GetManagerIP fills. */
#define VLX_MANAGER_IP_CAPACITY 33
/* The port of a manager for which none is stored. */
#define VLX_MANAGER_DEFAULT_PORT 31136
/* The address of a manager for which none is stored: there is no manager. */
#define VLX_MANAGER_NO_ADDRESS "0.0.0.0"

/* The parameters of the manager. GetManagerParam fills it, FreeManagerParam releases its texts. */
typedef struct VLX_MANAGER_PARAM {
    char *lpszManagerIP;
    char *lpszHost; /* name or address; empty: use the address */
    DWORD dwPort;
    DWORD dwAlignment;
    char *lpszText[3]; /* null, or malloc blocks that FreeManagerParam releases */
    uint64_t qwReserved[2];
} VLX_MANAGER_PARAM;

static_assert(sizeof(VLX_MANAGER_PARAM) == 64, "the manager parameter record has 64 bytes");
static_assert(offsetof(VLX_MANAGER_PARAM, lpszHost) == 8, "host");
static_assert(offsetof(VLX_MANAGER_PARAM, dwPort) == 16, "port");
static_assert(offsetof(VLX_MANAGER_PARAM, lpszText) == 24, "further texts");
static_assert(offsetof(VLX_MANAGER_PARAM, qwReserved) == 48, "reserved words");

/* Capacity of the error text of the alert record, terminator included. */
#define VLX_ALERT_ERROR_CAPACITY 512

/* The alert that is handed to the manager. Bytes that are not named are zero. */
typedef struct VLX_ALERT_DATA {
    uint64_t qwUnused1[5];
    const char *lpszDestinationKey; /* registry path of the report destination */
    uint64_t qwUnused2[16];
    char *lpszErrorMessage; /* VLX_ALERT_ERROR_CAPACITY bytes that the module may fill */
    HANDLE hEvent;          /* auto-reset, not signalled; 0 when it could not be made */
} VLX_ALERT_DATA;

static_assert(sizeof(VLX_ALERT_DATA) == 192, "the manager alert record has 192 bytes");
static_assert(offsetof(VLX_ALERT_DATA, lpszDestinationKey) == 40, "destination key");
static_assert(offsetof(VLX_ALERT_DATA, lpszErrorMessage) == 176, "error text");
static_assert(offsetof(VLX_ALERT_DATA, hEvent) == 184, "event");

#define AMRVXMN_MODULE "amrvxmn.dll"

/* Results: the manager accepted the report; no connection was made (settings, arguments, memory);
   no complete answer came, so that the manager may have the report all the same; it refused. */
#define VLX_MANAGER_ACCEPTED 0
#define VLX_MANAGER_NOT_PREPARED 1
#define VLX_MANAGER_NOT_DELIVERED 2
#define VLX_MANAGER_REFUSED 3

/* Hands the opening report to the manager: 0 when the manager accepted it, otherwise one of the
   other results with the reason, printable ASCII, in lpszErrorMessage. */
typedef int AMVLXMANREPORT_OPEN(VLX_ALERT_DATA *lpAlertData,
                                VLX_MANAGER_PARAM *lpManagerParam) NTWIN32_NOEXCEPT;
#define AMVLXMANREPORT_OPEN_NAME "AMVlxManReport_Open"

/* One alert of the queue as the manager receives it. No text is null. */
typedef struct VLX_MANAGER_ALERT {
    const char *lpszEventId; /* printable ASCII without blanks: the same at every try */
    const char *lpszLog;     /* log that the event stands in */
    const char *lpszSource;  /* source of the event */
    const char *lpszComputer;
    const char *lpszMessage; /* the alert's text */
    const char *lpszLines;   /* the alert's lines as a mail carries them, ended by "\r\n" */
    uint64_t qwTime;         /* seconds since 1970-01-01 00:00 UTC */
    DWORD dwLevel;
    DWORD dwCount; /* how often the event occurred */
} VLX_MANAGER_ALERT;

static_assert(sizeof(VLX_MANAGER_ALERT) == 64, "the alert has 64 bytes");
static_assert(offsetof(VLX_MANAGER_ALERT, qwTime) == 48, "after six texts");

/* Hands an alert to the manager, with the service information text; the result is that of
   AMVlxManReport_Open. A manager recognises a repeated alert by its event id. */
typedef int KESMANREPORT_ALERT(VLX_ALERT_DATA *lpAlertData, VLX_MANAGER_PARAM *lpManagerParam,
                               const VLX_MANAGER_ALERT *lpAlert) NTWIN32_NOEXCEPT;
#define KESMANREPORT_ALERT_NAME "KesManReport_Alert"

#ifdef __cplusplus
}
#endif

#endif
