// GMime cannot be shut down and started again in one process, so it is started once and stays.
#include "message.h"

#include <memory>
#include <new>
#include <string_view>

#include <gmime/gmime.h>

namespace amrsmtp {

namespace {

struct Unreference {
    void operator()(void *object) const noexcept { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unreference>;

struct FreeText {
    void operator()(char *text) const noexcept { g_free(text); }
};
struct FreeDate {
    void operator()(GDateTime *date) const noexcept { g_date_time_unref(date); }
};
struct FreeOptions {
    void operator()(GMimeFormatOptions *options) const noexcept {
        g_mime_format_options_free(options);
    }
};

void StartLibrary() {
    static const bool started = (g_mime_init(), true);
    static_cast<void>(started);
}

// Ends every line with CR LF, the last one too.
std::string WithLineEnds(std::string_view body) {
    std::string lines;
    lines.reserve(body.size() + body.size() / 32 + 2);
    for (std::size_t index = 0; index < body.size(); ++index) {
        if (body[index] == '\r' && index + 1 < body.size() && body[index + 1] == '\n')
            continue;
        if (body[index] == '\n' || body[index] == '\r')
            lines += "\r\n";
        else
            lines += body[index];
    }
    if (!lines.empty() && !lines.ends_with('\n'))
        lines += "\r\n";
    return lines;
}

Owned<GMimePart> MakeBody(std::string_view body) {
    const std::string lines = WithLineEnds(body);
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(lines.data(), lines.size()));
    const Owned<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_7BIT));
    Owned<GMimePart> part(g_mime_part_new_with_type("text", "plain"));
    g_mime_object_set_content_type_parameter(GMIME_OBJECT(part.get()), "charset", "us-ascii");
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_7BIT);
    g_mime_part_set_content(part.get(), content.get());
    return part;
}

// GMime would look up the host's own name; the sender's domain is as unique and takes no look-up.
std::string NewMessageId(const std::string &sender) {
    const std::size_t at = sender.rfind('@');
    const std::string domain =
        at == std::string::npos || at + 1 == sender.size() ? "localhost" : sender.substr(at + 1);
    const std::unique_ptr<char, FreeText> id(g_mime_utils_generate_message_id(domain.c_str()));
    return id.get();
}

void SetHeaders(GMimeMessage *message, const Mail &mail) {
    const std::unique_ptr<GDateTime, FreeDate> now(g_date_time_new_now_local());
    g_mime_message_set_date(message, now.get());
    const std::string id = mail.message_id.empty() ? NewMessageId(mail.sender) : mail.message_id;
    g_mime_message_set_message_id(message, id.c_str());
    g_mime_message_add_mailbox(message, GMIME_ADDRESS_TYPE_FROM, nullptr, mail.sender.c_str());
    for (const std::string &recipient : mail.recipients)
        g_mime_message_add_mailbox(message, GMIME_ADDRESS_TYPE_TO, nullptr, recipient.c_str());
    g_mime_message_set_subject(message, mail.subject.c_str(), "UTF-8");
}

}  // namespace

std::string ComposeMessage(const Mail &mail) {
    StartLibrary();
    const Owned<GMimeMessage> message(g_mime_message_new(TRUE));
    SetHeaders(message.get(), mail);
    const Owned<GMimePart> body = MakeBody(mail.body);
    g_mime_message_set_mime_part(message.get(), GMIME_OBJECT(body.get()));

    const std::unique_ptr<GMimeFormatOptions, FreeOptions> options(
        g_mime_format_options_clone(g_mime_format_options_get_default()));
    g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
    const std::unique_ptr<char, FreeText> text(
        g_mime_object_to_string(GMIME_OBJECT(message.get()), options.get()));
    if (text == nullptr)
        throw std::bad_alloc();
    return text.get();
}

}  // namespace amrsmtp
