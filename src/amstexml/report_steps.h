// The steps of a mail to the maintenance centre, in the order in which they run. The report
// functions and the delivery of queued alerts are made of them.
//
// Conventions
//  1. lpszFunction is the exported function that runs the step: all trace records carry its name.
//  2. A step gives VX_REPORT_SENT (0) or the code with which the whole report fails
//     (velox/mail_report.h). All but LogInBeforeMail and SendMail have traced it then as the
//     report's last record; after those two the caller goes on and traces the result itself.
//  3. A step that fails leaves nothing to release; what it fills releases itself.
#ifndef AMSTEXML_REPORT_STEPS_H
#define AMSTEXML_REPORT_STEPS_H

#include <records/mail_modules.h>

#include "registry/handles.h"
#include "velox/mail_report.h"

// The addresses of a destination list. A copy would point into the original.
struct DESTINATIONS {
    DESTINATIONS() noexcept = default;
    DESTINATIONS(const DESTINATIONS &) = delete;
    DESTINATIONS &operator=(const DESTINATIONS &) = delete;

    char szAddress[VX_DESTINATION_COUNT][86] = {};
    const char *lpszTo[VX_DESTINATION_COUNT] = {};
    DWORD dwCount = 0;
    DWORD dwLength = 0;  // the sum of (length + 2)
};

// From where and how a mail goes out. The texts have room for values without terminator.
struct MAIL_SETTINGS {
    char szIP[257 + 1];
    char szAddress[81 + 1];
    DWORD dwSMTPPort;
    char szErrorReply[81 + 1];
    char szErrorCopy[81 + 1];
    DWORD dwOption;
};

// A body, followed by a zero byte that dwSize does not count.
struct MAIL_BODY {
    AutoMemory<char> text;
    DWORD dwSize = 0;
};

using MAIL_SUBJECT = char[VX_SUBJECT_LENGTH + 1];

// One mail that is ready to be sent.
struct MAIL {
    const MAIL_SETTINGS &settings;
    const DESTINATIONS &destinations;
    const char *lpszSubject;
    const MAIL_BODY &encoded;
    const char *lpszMessageId;  // for a module that was loaded for it
};

// Cuts the list at its commas (null counts as empty).
int SplitDestinations(const char *lpszFunction, const char *lpszETo,
                      DESTINATIONS &destinations) noexcept;

// Reads server, sender, port, error-reply address and option word, and checks that the customer's
// mail address is set.
int ReadMailSettings(const char *lpszFunction, MAIL_SETTINGS &settings) noexcept;

// Header with the identifier line (looked up in the catalogue when not empty), service information
// text, and lpszLines as they are (null: none). The caller has made the catalogue "velox" current.
int ComposeBody(const char *lpszFunction, const char *lpszIdentifier, const char *lpszLines,
                MAIL_BODY &body) noexcept;

// Copies a subject (null counts as empty), cut at a whole character where it is too long.
void CopySubject(const char *lpszFunction, const char *lpszSource,
                 MAIL_SUBJECT &szSubject) noexcept;

// The body in the form in which it goes out.
int EncodeBody(const char *lpszFunction, const MAIL_BODY &body, MAIL_BODY &encoded) noexcept;

// Everything that a report is sent with.
struct REPORT {
    DESTINATIONS destinations;
    MAIL_SETTINGS settings = {};
    MAIL_BODY encoded;
    MAIL_SUBJECT szSubject = "";
};

// What a report is to say, and to whom.
struct REPORT_CONTENT {
    const char *lpszIdentifier;  // as ComposeBody takes it
    const char *lpszLines;
    const char *lpszSubject;
    const char *lpszETo;
};

// The steps above, in their order: up to the encoded body.
int PrepareReport(const char *lpszFunction, const REPORT_CONTENT &content, REPORT &report) noexcept;

// POP before SMTP.
int LogInBeforeMail(const char *lpszFunction) noexcept;

// The SMTP module with the function that sends: of the two, the one that was asked for.
struct MAIL_MODULE {
    AutoModule module;
    SENDMAILWITHSMTP *pfnSend = nullptr;
    KESSENDMAILWITHID *pfnSendWithId = nullptr;
};

// bWithId: mails are to carry a Message-ID of the caller's.
int LoadMailModule(const char *lpszFunction, bool bWithId, MAIL_MODULE &module) noexcept;

// Hands the mail to the module and gives the code of its status word. lpszAnswer
// (MAIL_ANSWER_CAPACITY bytes) receives what the module says of a failure.
int SendMail(const char *lpszFunction, const MAIL_MODULE &module, const MAIL &mail,
             char *lpszAnswer) noexcept;

#endif  // AMSTEXML_REPORT_STEPS_H
