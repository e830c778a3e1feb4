/*
 * Alerts of the queue, sent by internet mail: the same compose, log-in and send steps as a report.
 *
 * Conventions
 *  1. Texts end with a zero byte. Lines are EUC-JP, addresses and the Message-ID are ASCII.
 *  2. All memory is the caller's. What stands in mail_report.h of settings, modules and threads
 *     holds here too.
 */
#ifndef VELOX_ALERT_MAIL_H
#define VELOX_ALERT_MAIL_H

#include <ntwin32/types.h>
#include <velox/mail_report.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Capacity of the text that tells what a mail server said, terminator included. */
#define VX_ALERT_ANSWER_CAPACITY 1024

/*
 * Sends one alert: a report with the identifier line "A", the service information text and the
 * alert's lines. It records nothing.
 * - lpszMessageId: the mail's Message-ID, "<...>" in at most 250 printable characters without
 *   blanks; the same at every try, so that a repeated mail can be recognised.
 * - lpszETo: the destination list, as AMAMVeloxTestReport takes it.
 * - lpszLines: the alert's lines, each ended by "\r\n"; sent as they are.
 * - lpszAnswer: VX_ALERT_ANSWER_CAPACITY bytes; receives what the mail server said when the result
 *   is one of VX_REPORT_CONNECTION_FAILED to VX_REPORT_SEND_FAILED, else an empty text.
 * Gives one of the codes of AMAMVeloxTestReport; VX_REPORT_SENT when the server has accepted the
 * mail.
 */
NTWIN32_API int KesSendAlertByMail(const char *lpszMessageId, const char *lpszETo,
                                   const char *lpszLines, char *lpszAnswer) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
