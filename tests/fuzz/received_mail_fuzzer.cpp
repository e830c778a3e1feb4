// A received mail: no bytes may crash the mail's reader or the search for the report, and what is
// found lies inside the text that was searched.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "report/encoded_text.h"
#include "report/mail_reader.h"

extern "C" VELOXCTL_READ_MAIL VeloxctlReadMail;

namespace {

void TakeText(const MAIL_TEXT *text, void *context) {
    const std::string_view content(text->lpContent, text->nSize);
    const std::string_view lines = veloxctl::report::EncodedLines(content);
    if (!lines.empty() && (lines.data() < content.data() ||
                           lines.data() + lines.size() > content.data() + content.size() ||
                           !lines.starts_with("begin"))) {
        std::abort();
    }
    (void)veloxctl::report::Decode(lines);
    *static_cast<std::size_t *>(context) += std::string_view(text->szSubject).size() +
                                            std::string_view(text->szFrom).size() +
                                            std::string_view(text->szDate).size() + text->nMail;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    // A copy of exactly its size, so that a read past it is seen.
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    std::size_t sum = 0;
    if (VeloxctlReadMail(bytes.data(), bytes.size(), TakeText, &sum) < 0) {
        std::abort();
    }
    const MAIL_TEXT whole = {1, "", "", "", bytes.data(), bytes.size()};
    TakeText(&whole, &sum);
    return 0;
}
