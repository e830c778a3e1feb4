// mail_reader.so. GMime cannot be shut down and started again in one process: it is started once
// and stays, and the library is never unloaded.
#include "report/mail_reader.h"

#include <gmime/gmime.h>

#include <memory>
#include <string_view>

namespace {

struct Unreference {
    void operator()(void *object) const noexcept { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unreference>;

struct FreeText {
    void operator()(char *text) const noexcept { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

// What the parts of one mail are handed to, and what stands over them.
struct Reading {
    VELOXCTL_TAKE_TEXT *take = nullptr;
    void *context = nullptr;
    MAIL_TEXT text = {};
};

const char *OrEmpty(const char *text) {
    return text != nullptr ? text : "";
}

void TakePart(GMimePart *part, Reading *reading) {
    GMimeDataWrapper *content = g_mime_part_get_content(part);
    if (content == nullptr) {
        return;
    }
    const Owned<GMimeStream> bytes(g_mime_stream_mem_new());
    g_mime_data_wrapper_write_to_stream(content, bytes.get());
    const GByteArray *array = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(bytes.get()));
    reading->text.lpContent = reinterpret_cast<const char *>(array->data);
    reading->text.nSize = array->len;
    if (array->len != 0) {
        reading->take(&reading->text, reading->context);
    }
}

void TakeObject(GMimeObject *, GMimeObject *object, gpointer context) {
    if (GMIME_IS_PART(object)) {
        TakePart(GMIME_PART(object), static_cast<Reading *>(context));
    }
}

void TakeMail(GMimeMessage *message, Reading *reading) {
    const Text from(
        internet_address_list_to_string(g_mime_message_get_from(message), nullptr, FALSE));
    GDateTime *date = g_mime_message_get_date(message);
    const Text shown_date(date != nullptr ? g_mime_utils_header_format_date(date) : nullptr);
    ++reading->text.nMail;
    reading->text.szSubject = OrEmpty(g_mime_message_get_subject(message));
    reading->text.szFrom = OrEmpty(from.get());
    reading->text.szDate = OrEmpty(shown_date.get());
    g_mime_message_foreach(message, TakeObject, reading);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) long VeloxctlReadMail(const char *lpBytes,
                                                                        size_t nSize,
                                                                        VELOXCTL_TAKE_TEXT *pfnTake,
                                                                        void *lpContext) {
    static const bool started = (g_mime_init(), true);
    (void)started;
    const Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(lpBytes, nSize));
    const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    const bool mailbox = std::string_view(lpBytes, nSize).starts_with("From ");
    g_mime_parser_set_format(parser.get(), mailbox ? GMIME_FORMAT_MBOX : GMIME_FORMAT_MESSAGE);
    Reading reading = {pfnTake, lpContext, {}};
    do {
        const Owned<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
        if (message == nullptr) {
            break;
        }
        TakeMail(message.get(), &reading);
    } while (mailbox && g_mime_parser_eos(parser.get()) == FALSE);
    return static_cast<long>(reading.text.nMail);
}

static_assert(std::is_same_v<decltype(VeloxctlReadMail), VELOXCTL_READ_MAIL>);
