// amrsmtp.dll: the module that sends a report by SMTP. Here is its C boundary; nothing is kept
// between calls.
#include <exception>
#include <new>
#include <string>
#include <type_traits>

#include <records/mail_modules.h>
#include <session/answer.h>
#include <session/deadline.h>
#include <tracelog.h>

#include "delivery.h"
#include "mail.h"

namespace amrsmtp {

namespace {

constexpr char kSource[] = "amrsmtp";
constexpr char kFunction[] = "SendMailWithSMTP";

std::string Reason(const char *text) noexcept {
    try {
        return text;
    } catch (const std::bad_alloc &) {
        return "no memory";
    }
}

Outcome TryToSend(const Arguments &arguments) noexcept {
    try {
        const session::Deadline deadline(session::Allowance());
        return Deliver(ReadArguments(arguments), deadline);
    } catch (const std::bad_alloc &) {
        return {MAIL_STATUS_ARGUMENT, "no memory"};
    } catch (const std::exception &error) {
        return {MAIL_STATUS_ARGUMENT, Reason(error.what())};
    }
}

DWORD Send(const Arguments &arguments, char *answer, DWORD *status) noexcept {
    const Outcome outcome = TryToSend(arguments);
    if (outcome.status == MAIL_STATUS_SENT)
        TraceLog(0, kSource, kFunction, __LINE__, "sent");
    else
        TraceLog(1, kSource, kFunction, __LINE__, "not sent, status %u: %s", outcome.status,
                 outcome.reason.c_str());
    if (answer != nullptr)
        session::GiveAnswer(outcome.reason, answer, MAIL_ANSWER_CAPACITY);
    if (status != nullptr)
        *status = outcome.status;
    return outcome.status;
}

}  // namespace

}  // namespace amrsmtp

extern "C" {

NTWIN32_API DWORD SendMailWithSMTP(const char *lpszServer, const char *lpszSender, DWORD dwPort,
                                   const char *lpszErrorReply, const char *lpszErrorCopy,
                                   DWORD dwOption, DWORD dwForm, const char *const *lpszTo,
                                   DWORD dwToCount, const char *lpszSubject, const void *lpBody,
                                   DWORD dwSize, char *lpszAnswer, DWORD *lpdwStatus) noexcept {
    static_cast<void>(lpszErrorCopy);
    return amrsmtp::Send({lpszServer, lpszSender, dwPort, lpszErrorReply, dwOption, dwForm, lpszTo,
                          dwToCount, lpszSubject, lpBody, dwSize, nullptr},
                         lpszAnswer, lpdwStatus);
}

NTWIN32_API DWORD KesSendMailWithId(const char *lpszServer, const char *lpszSender, DWORD dwPort,
                                    const char *lpszErrorReply, const char *lpszErrorCopy,
                                    DWORD dwOption, DWORD dwForm, const char *const *lpszTo,
                                    DWORD dwToCount, const char *lpszSubject, const void *lpBody,
                                    DWORD dwSize, char *lpszAnswer, DWORD *lpdwStatus,
                                    const char *lpszMessageId) noexcept {
    static_cast<void>(lpszErrorCopy);
    return amrsmtp::Send({lpszServer, lpszSender, dwPort, lpszErrorReply, dwOption, dwForm, lpszTo,
                          dwToCount, lpszSubject, lpBody, dwSize, lpszMessageId},
                         lpszAnswer, lpdwStatus);
}

}  // extern "C"

static_assert(std::is_same_v<decltype(SendMailWithSMTP), SENDMAILWITHSMTP>);
static_assert(std::is_same_v<decltype(KesSendMailWithId), KESSENDMAILWITHID>);
