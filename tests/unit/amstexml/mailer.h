// An SMTP module for tests, and everything in the registry that a report needs.
#ifndef AMSTEXML_MAILER_H
#define AMSTEXML_MAILER_H

#include <records/mail_modules.h>

#include <string>
#include <string_view>
#include <vector>

#include "fakes/platform.h"
#include "velox/mail_base.h"
#include "velox/mail_report.h"

namespace mailer {

inline constexpr char kSetup[] = "SOFTWARE\\XEV\\VLXService\\SETUP";
inline constexpr char kSetting[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
inline constexpr char kAddress[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
inline constexpr char kBase[] = AMAM_DEFAULT_BASE_PATH;
inline constexpr char kModule[] = "/opt/xev/kestro_sa/lib/amrsmtp.dll";

// One call of SendMailWithSMTP or, with a Message-ID, of KesSendMailWithId.
struct Mail {
    std::string server, sender, error_reply, error_copy, subject, body, message_id;
    DWORD port = 0, option = 0, form = 0, size = 0, status_before = 0;
    std::vector<std::string> to;
};

struct Module {
    DWORD status = 0;  // what it sets
    DWORD result = 0;  // what it returns
    std::vector<Mail> mails;
};
Module &TheModule();

// Lets amrsmtp.dll be loaded with its functions.
void Add();

// Settings of a host from which reports can be sent, without POP: three values of contract data, no
// options, "EOpening" and "SETTING" 0.
void StoreSettings();

// The service information text that those settings call for.
std::string ServiceInformation();

// The report's body before it is encoded.
std::string Body(std::string_view identifier, std::string_view message = {});

// Sends a report to one address.
int Send(DWORD kind, const char *message = nullptr);

// The records of the report function, and the last of them.
std::vector<std::string> OwnTrace();

}  // namespace mailer

#endif  // AMSTEXML_MAILER_H
