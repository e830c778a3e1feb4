#include "mailer.h"

#include <cstring>

#include "fakes/registry.h"

namespace mailer {

namespace {

DWORD SendMail(const char *server, const char *sender, DWORD port, const char *error_reply,
               const char *error_copy, DWORD option, DWORD form, const char *const *to,
               DWORD to_count, const char *subject, const void *body, DWORD size, char *answer,
               DWORD *status) noexcept {
    Mail mail;
    mail.server = server;
    mail.sender = sender;
    mail.error_reply = error_reply;
    mail.error_copy = error_copy;
    mail.subject = subject;
    mail.port = port;
    mail.option = option;
    mail.form = form;
    mail.size = size;
    mail.status_before = *status;
    std::size_t addresses = 0;
    for (DWORD i = 0; i < to_count; ++i) {
        mail.to.emplace_back(to[i]);
        addresses += mail.to.back().size() + 2;
    }
    mail.body.assign(static_cast<const char *>(body), size - addresses - mail.subject.size());
    std::memset(answer, 'a', MAIL_ANSWER_CAPACITY);  // all of it is the module's
    TheModule().mails.push_back(mail);
    *status = TheModule().status;
    return TheModule().result;
}

DWORD SendMailWithId(const char *server, const char *sender, DWORD port, const char *error_reply,
                     const char *error_copy, DWORD option, DWORD form, const char *const *to,
                     DWORD to_count, const char *subject, const void *body, DWORD size,
                     char *answer, DWORD *status, const char *message_id) noexcept {
    const DWORD result = SendMail(server, sender, port, error_reply, error_copy, option, form, to,
                                  to_count, subject, body, size, answer, status);
    TheModule().mails.back().message_id = message_id;
    std::strcpy(answer, "550 no");
    return result;
}

}  // namespace

Module &TheModule() {
    static Module module;
    return module;
}

void Add() {
    TheModule() = {};
    fakes::AddModule(kModule,
                     {{"SendMailWithSMTP", reinterpret_cast<void (*)()>(&SendMail)},
                      {"KesSendMailWithId", reinterpret_cast<void (*)()>(&SendMailWithId)}});
}

void StoreSettings() {
    fakes::StoreText(kBase, "IP", "127.0.0.9");
    fakes::StoreText(kBase, "Address", "sender@host.example");
    fakes::StoreNumber(kBase, "SMTPPort", 2525);
    fakes::StoreNumber(kBase, "Option", 2);
    fakes::StoreNumber(kBase, "POPFlag", 0);
    fakes::StoreText(kSetup, "ERRORREPLY", "errors@host.example");
    fakes::StoreText(kSetup, "VERSION", "3.1/LINUX(RH)");
    fakes::StoreNumber(kSetup, "SETTING", 0);
    fakes::StoreNumber(kSetting, "KAISHAKBN", 1);
    fakes::StoreNumber(kSetting, "OPTCDN", 0);
    fakes::StoreText(kSetting, "MAIL", "customer@host.example");
    fakes::StoreText(kSetting, "SYSNMN", "HOST01");
    fakes::StoreNumber(kAddress, "EOpening", 0);
}

std::string ServiceInformation() {
    std::string text = "[CONTRACT]\r\nCorporate\r\n";
    for (const char *heading : {"[USER-NAME]",
                                "[USER-DIVISION]",
                                "[USER-ZIPCODE]",
                                "[USER-ADDRESS]",
                                "[USER-TELNUM]",
                                "[USER-EMAIL]\r\ncustomer@host.example",
                                "[USER-CONTACT]",
                                "[USER-SYSTEM-CD]",
                                "[COMMENT]",
                                "[SERVER-NAME]\r\nHOST01",
                                "[N-CODE]",
                                "[SERIAL-NUMBER]",
                                "[GUARANTEE-NUMBER]",
                                "[OS-NAME]",
                                "[OS-VERSION]",
                                "[DEALER-NAME]",
                                "[DEALER-LOCAL-OFFICE]",
                                "[DEALER-CONTACT]",
                                "[DEALER-TEL-NUM]",
                                "[SE-CONTACT]",
                                "[SE-NAME]",
                                "[SE-TEL-NUMBER]"}) {
        text += heading;
        text += std::strchr(heading, '\n') == nullptr ? "\r\n\r\n" : "\r\n";
    }
    return text;
}

std::string Body(std::string_view identifier, std::string_view message) {
    return "*****START*****\r\n[REVISION]\r\n3.1/LINUX(RH)\r\n[MESSAGE-ID]\r\n" +
           std::string(identifier) + "\r\n" + ServiceInformation() + std::string(message);
}

int Send(DWORD kind, const char *message) {
    char result[] = "before";
    const int code = AMAMVeloxTestReport(result, kind, "Subject", "centre@centre.example", message);
    EXPECT_STREQ(result, "before") << "the result buffer is left alone";
    return code;
}

std::vector<std::string> OwnTrace() {
    return fakes::TraceLinesOf("AMAMVeloxTestReport");
}

}  // namespace mailer
