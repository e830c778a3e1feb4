/*
 * The base settings of internet mail: SMTP server, sender and options, under the mail base key.
 *
 * Conventions
 *  1. Result codes stand with each function. Registry keys are below HKEY_LOCAL_MACHINE.
 *  2. Texts end with a zero byte inside their field; addresses and names are ASCII.
 *  3. Pointers must not be null. Records and buffers are the caller's.
 *  4. The path of the mail base key is asked for once with AMAMGetBaseRegPath and handed to the
 *     other functions; nothing is kept between calls.
 *  5. Thread safety: every function may be called from any thread; SetAMBIBaseSetting resolves
 *     names with gethostbyname() and must not run beside other users of it.
 */
#ifndef VELOX_MAIL_BASE_H
#define VELOX_MAIL_BASE_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Capacity of the buffer for the mail base key's path, terminator included. */
#define AMAM_BASE_PATH_CAPACITY 512

/* What the path is when the registry library does not tell another. */
#define AMAM_DEFAULT_BASE_PATH \
    "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\VeloxReport(Internet Mail)\\Setting"

#define AMAM_DEFAULT_SMTP_PORT 25u
/* What a missing "Option" reads as here; reports then go out as if it were 0 (mail_report.h). */
#define AMAM_DEFAULT_OPTION 3u

/* What AMBIMyIPCheck gives. */
#define AMBI_IP_HOST_NAME 0
#define AMBI_IP_ADDRESS 1
#define AMBI_IP_INVALID 2

/* What SetAMBIBaseSetting gives. */
#define AMBI_SET_WRITE_FAILED 0
#define AMBI_SET_STORED 1
#define AMBI_SET_INVALID_SERVER 2

/* The settings record. */
typedef struct VXML_BASE_DATA {
    char szServer[257]; /* "Server": host name or dotted IPv4 address of the SMTP server */
    char szIP[257];     /* "IP": its dotted IPv4 address, to which mail is sent */
    char szAddress[81]; /* "Address": the sender's mail address */
    DWORD dwSMTPPort;   /* "SMTPPort" */
    DWORD dwOption;     /* "Option": the option word (records/mail_modules.h tells its bits) */
} VXML_BASE_DATA;

static_assert(sizeof(VXML_BASE_DATA) == 604, "the settings record has 604 bytes");
static_assert(offsetof(VXML_BASE_DATA, szIP) == 257, "IP address follows server");
static_assert(offsetof(VXML_BASE_DATA, szAddress) == 514, "sender follows IP address");
static_assert(offsetof(VXML_BASE_DATA, dwSMTPPort) == 596, "port follows sender, aligned");
static_assert(offsetof(VXML_BASE_DATA, dwOption) == 600, "option word stands last");

/*
 * Stores the path of the mail base key in g_szAMBaseRegPath (AMAM_BASE_PATH_CAPACITY bytes), as the
 * module amcregac.dll tells it. Where that fails, or its path does not fit, it is
 * AMAM_DEFAULT_BASE_PATH. Always gives 1.
 */
NTWIN32_API int AMAMGetBaseRegPath(char *g_szAMBaseRegPath) NTWIN32_NOEXCEPT;

/*
 * Reads the settings into *lpVxmlBaseData. TRUE (1), or FALSE (0) when a text cannot be read; the
 * texts before it are filled then and the rest is empty, port 25, option 0. A missing port reads as
 * 25, a missing option word as 3.
 */
NTWIN32_API BOOL GetAMBIBaseSetting(VXML_BASE_DATA *lpVxmlBaseData,
                                    const char *g_szAMBaseRegPath) NTWIN32_NOEXCEPT;

/*
 * Stores the settings. A host name as server is resolved, and szIP is overwritten with its first
 * address; with a dotted address, that address is stored as "IP" and szIP is ignored.
 * - AMBI_SET_STORED: all values are written.
 * - AMBI_SET_WRITE_FAILED: a registry write failed, or the sender's address does not end inside
 *   its field. What was written before stays.
 * - AMBI_SET_INVALID_SERVER: the server is neither a valid dotted address nor a name that
 *   resolves. Nothing was written.
 */
NTWIN32_API int SetAMBIBaseSetting(VXML_BASE_DATA *lpVxmlBaseData,
                                   const char *g_szAMBaseRegPath) NTWIN32_NOEXCEPT;

/*
 * Tells what a server text is, by its shape alone.
 * - AMBI_IP_ADDRESS: a dotted IPv4 address, four decimal numbers up to 255 of at most three digits.
 * - AMBI_IP_HOST_NAME: not shaped like one. It has a run of four or more characters without a dot,
 *   or an empty field before a dot.
 * - AMBI_IP_INVALID: shaped like one but wrong. Short names without a field of four characters
 *   ("mx", "mx1.foo.com") are among them and therefore refused as servers.
 */
NTWIN32_API int AMBIMyIPCheck(const char *szMyIPString) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
