#include "delivery.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include <curl/curl.h>
#include <records/mail_modules.h>
#include <session/connection.h>
#include <session/conversation.h>

#include "message.h"
#include "server_name.h"

namespace amrsmtp {

namespace {

// The text that libcurl reads, and how far it has read.
struct Upload {
    std::string_view rest;
    session::Conversation &conversation;
    bool started = false;

    static size_t Read(char *buffer, size_t size, size_t count, void *object) {
        auto &self = *static_cast<Upload *>(object);
        if (!std::exchange(self.started, true))
            self.conversation.SentText(self.rest.size());
        const size_t length = std::min(size * count, self.rest.size());
        std::memcpy(buffer, self.rest.data(), length);
        self.rest.remove_prefix(length);
        return length;
    }
};

struct FreeList {
    void operator()(curl_slist *list) const noexcept { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

List MakeList(const std::vector<std::string> &texts) {
    List list;
    for (const std::string &text : texts) {
        curl_slist *longer = curl_slist_append(list.get(), text.c_str());
        if (longer == nullptr)
            throw std::bad_alloc();
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

// What the client calls itself in its EHLO.
std::string OwnName() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) == 0)
        if (const auto host = session::ParseHost(name.data()); host && !host->is_address)
            return host->text;
    return "localhost";
}

session::Endpoint MakeEndpoint(const Mail &mail) {
    session::Endpoint endpoint;
    endpoint.protocol = "smtp";
    endpoint.host = mail.server.text;
    endpoint.port = mail.port;
    endpoint.path = OwnName();
    endpoint.protection = mail.protection;
    endpoint.verify = mail.verify;
    if (mail.protection != session::Protection::kNone && mail.verify)
        if (auto name = StoredNameOf(mail.server)) {
            endpoint.host = *std::move(name);
            endpoint.address = mail.server.text;
        }
    return endpoint;
}

// By the last command that went out, whatever the cause.
DWORD StatusAt(std::string_view step) {
    if (step == "MAIL" || step == "RCPT")
        return MAIL_STATUS_ENVELOPE;
    if (step == "DATA")
        return MAIL_STATUS_DATA;
    return MAIL_STATUS_CONNECTION;
}

}  // namespace

Outcome Deliver(const Mail &mail, const session::Deadline &deadline) {
    const std::string message = ComposeMessage(mail);
    const List recipients = MakeList(mail.recipients);
    session::Conversation conversation("amrsmtp", "SendMailWithSMTP", deadline,
                                       {session::AsItStands, session::AsItStands});
    Upload upload{message, conversation};
    session::Connection connection(MakeEndpoint(mail), conversation);
    connection.Set(CURLOPT_FORBID_REUSE, 1L);
    connection.Set(CURLOPT_MAIL_FROM, mail.envelope_sender.c_str());
    connection.Set(CURLOPT_MAIL_RCPT, recipients.get());
    connection.Set(CURLOPT_UPLOAD, 1L);
    connection.Set(CURLOPT_READFUNCTION, &Upload::Read);
    connection.Set(CURLOPT_READDATA, static_cast<void *>(&upload));
    connection.Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(message.size()));

    const CURLcode result = connection.Perform();
    if (result == CURLE_OK)
        return {MAIL_STATUS_SENT, {}};
    return {StatusAt(conversation.Step()), connection.Describe(result)};
}

}  // namespace amrsmtp
