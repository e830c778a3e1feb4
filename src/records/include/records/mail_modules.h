/*
 * The interfaces of the mail modules amrsmtp.dll and amrpop.dll, which are loaded at run time.
 *
 * Conventions
 *  1. A module exports its functions under their names here, in the C ABI; a caller looks each up
 *     with GetProcAddress and converts it to a pointer to the function's type.
 *  2. Texts end with a zero byte. Addresses and server names are ASCII, the subject is EUC-JP.
 *  3. Everything that a caller passes stays the caller's and is read during the call only, except
 *     where a function's text says otherwise.
 *  4. Every call ends within the module's overall deadline (60 s unless the module documents
 *     another), name resolution and the closing exchange included.
 *  5. No function lets an exception out. Each may be called from any thread; one transport belongs
 *     to one thread at a time.
 */
#ifndef RECORDS_MAIL_MODULES_H
#define RECORDS_MAIL_MODULES_H

#include <assert.h>
#include <ntwin32/types.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- amrsmtp.dll ----------------------------------------------------------------------------- */

#define AMRSMTP_MODULE "amrsmtp.dll"

/* The option word. Bits 0 and 1: protection of the connection. */
#define MAIL_OPTION_PROTECTION 0x3u
#define MAIL_OPTION_PLAIN 0x0u             /* clear text */
#define MAIL_OPTION_TLS 0x1u               /* TLS from the first byte */
#define MAIL_OPTION_STARTTLS_REQUIRED 0x2u /* STARTTLS; without it nothing is sent */
#define MAIL_OPTION_STARTTLS_OFFERED 0x3u  /* STARTTLS when offered; a bad certificate is traced */
/* Bit 2: the server's certificate is not verified. */
#define MAIL_OPTION_NO_VERIFICATION 0x4u

/* The form of the body: already encoded lines, sent as 7-bit text. No other form exists. */
#define MAIL_BODY_ENCODED 2u

/* Capacity of the text that SendMailWithSMTP gives back, terminator included. */
#define MAIL_ANSWER_CAPACITY 1024

/* The status word. Other values do not occur, and a caller counts them as failures. */
#define MAIL_STATUS_SENT 0u       /* accepted by the server */
#define MAIL_STATUS_CONNECTION 1u /* failed up to EHLO or STARTTLS */
#define MAIL_STATUS_ENVELOPE 2u   /* failed at MAIL or RCPT; nobody receives the mail */
#define MAIL_STATUS_DATA 3u       /* failed from DATA to its final answer */
#define MAIL_STATUS_ARGUMENT 4u   /* bad arguments, or no memory; nothing was sent */

/*
 * Composes one mail and sends it.
 *   lpszServer     address of the SMTP server (dotted IPv4)
 *   lpszSender     the sender's mail address (From)
 *   dwPort         SMTP port
 *   lpszErrorReply the envelope sender when not empty; else it is lpszSender
 *   lpszErrorCopy  ignored
 *   dwOption       the option word
 *   dwForm         MAIL_BODY_ENCODED
 *   lpszTo         dwToCount (at least 1) recipient addresses
 *   lpszSubject    may be empty
 *   lpBody         the encoded body; its length is dwSize minus the sum over the recipients of
 *                  (length + 2) minus the subject's length
 *   dwSize         see lpBody; too small a number is a bad argument
 *   lpszAnswer     MAIL_ANSWER_CAPACITY bytes: receives what failed, in the server's words where it
 *                  said something; empty after a success
 *   lpdwStatus     receives the status word
 * The result is the status word as well.
 */
typedef DWORD SENDMAILWITHSMTP(const char *lpszServer, const char *lpszSender, DWORD dwPort,
                               const char *lpszErrorReply, const char *lpszErrorCopy,
                               DWORD dwOption, DWORD dwForm, const char *const *lpszTo,
                               DWORD dwToCount, const char *lpszSubject, const void *lpBody,
                               DWORD dwSize, char *lpszAnswer, DWORD *lpdwStatus) NTWIN32_NOEXCEPT;
#define SENDMAILWITHSMTP_NAME "SendMailWithSMTP"

/*
 * SendMailWithSMTP with the mail's Message-ID ("<...>", printable ASCII without blanks, at most 250
 * bytes; null or empty: a new one), so that a mail that is tried again stays the same mail.
 */
typedef DWORD KESSENDMAILWITHID(const char *lpszServer, const char *lpszSender, DWORD dwPort,
                                const char *lpszErrorReply, const char *lpszErrorCopy,
                                DWORD dwOption, DWORD dwForm, const char *const *lpszTo,
                                DWORD dwToCount, const char *lpszSubject, const void *lpBody,
                                DWORD dwSize, char *lpszAnswer, DWORD *lpdwStatus,
                                const char *lpszMessageId) NTWIN32_NOEXCEPT;
#define KESSENDMAILWITHID_NAME "KesSendMailWithId"

/* ---- amrpop.dll ------------------------------------------------------------------------------ */

#define AMRPOP_MODULE "amrpop.dll"

/* What a transport logs in to. Each text ends inside its field. */
typedef struct TRANSPORTINFO {
    char szServer[257]; /* name or address of the POP server */
    char szAccount[257];
    char szPassword[257]; /* plain text: never traced, wiped after use */
    DWORD dwPort;         /* 995: TLS from the first byte; any other: STLS when offered */
} TRANSPORTINFO;

static_assert(sizeof(TRANSPORTINFO) == 776, "TRANSPORTINFO has 776 bytes");
static_assert(offsetof(TRANSPORTINFO, szAccount) == 257, "account follows server");
static_assert(offsetof(TRANSPORTINFO, szPassword) == 514, "password follows account");
static_assert(offsetof(TRANSPORTINFO, dwPort) == 772, "port stands last, aligned");

/* A transport; 0 is none. */
typedef uintptr_t HTRANSPORT;

/* Creates a transport from a copy of *lpInfo and stores it in *lphTransport, which stays 0 on
   failure. Nothing is connected yet. Non-zero on success. */
typedef BOOL TRANSPORTINIT(HTRANSPORT *lphTransport, const TRANSPORTINFO *lpInfo) NTWIN32_NOEXCEPT;
#define TRANSPORTINIT_NAME "TransportInit"

/* Connects to the POP server and logs in. Non-zero on success. */
typedef BOOL TRANSPORTCONNECT(HTRANSPORT hTransport) NTWIN32_NOEXCEPT;
#define TRANSPORTCONNECT_NAME "TransportConnect"

/* Logs out and closes the connection. Non-zero when the server acknowledged the log-out. */
typedef BOOL TRANSPORTDISCONNECT(HTRANSPORT hTransport) NTWIN32_NOEXCEPT;
#define TRANSPORTDISCONNECT_NAME "TransportDisconnect"

/* Releases a transport, closing a connection that is still open and wiping its password. Non-zero
   when there was such a transport. */
typedef BOOL TRANSPORTRELEASE(HTRANSPORT hTransport) NTWIN32_NOEXCEPT;
#define TRANSPORTRELEASE_NAME "TransportRelease"

#ifdef __cplusplus
}
#endif

#endif
