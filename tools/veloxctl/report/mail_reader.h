/*
 * Reading a received mail: the interface between the command and its library mail_reader.so, which
 * alone links the mail parser. The command loads it when a mail is to be decoded, so that no other
 * command pays for the parser's start.
 */
#ifndef VELOXCTL_REPORT_MAIL_READER_H
#define VELOXCTL_REPORT_MAIL_READER_H

#include <stddef.h>

/* One text part of a mail: texts in UTF-8, never null; the content with its transfer encoding
   undone. Valid during the call only. */
typedef struct MAIL_TEXT {
    size_t nMail; /* number of the mail in the file, from 1 */
    const char *szSubject;
    const char *szFrom;
    const char *szDate;
    const char *lpContent;
    size_t nSize;
} MAIL_TEXT;

/* Takes one text part. */
typedef void VELOXCTL_TAKE_TEXT(const MAIL_TEXT *lpText, void *lpContext);

/*
 * Parses nSize bytes at lpBytes, one mail or a mailbox in mbox form, and hands out every text part
 * of every mail in their order, attached mails included. Gives the number of mails, 0 for what is
 * no mail, -1 without memory.
 */
typedef long VELOXCTL_READ_MAIL(const char *lpBytes, size_t nSize, VELOXCTL_TAKE_TEXT *pfnTake,
                                void *lpContext);

#define VELOXCTL_READ_MAIL_NAME "VeloxctlReadMail"
#define VELOXCTL_MAIL_READER_FILE "mail_reader.so"

#endif
