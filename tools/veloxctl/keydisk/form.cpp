#include "keydisk/form.h"

#include <regfile/text.h>

#include <algorithm>

#include "failure.h"
#include "keydisk/disk_text.h"

namespace veloxctl::keydisk {

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";

class FormReader {
  public:
    FormReader(std::string_view text, const std::string &name) : text_(text), name_(name) {
        if (text_.starts_with(kMark)) {
            text_.remove_prefix(kMark.size());
        }
    }

    Form Read() {
        while (!text_.empty()) {
            ++number_;
            TakeLine(NextLine());
        }
        return std::move(form_);
    }

  private:
    std::string_view NextLine() {
        const std::size_t length = std::min(text_.find('\n'), text_.size());
        std::string_view line = text_.substr(0, length);
        text_.remove_prefix(std::min(length + 1, text_.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        return line;
    }

    void TakeLine(std::string_view line) {
        if (line.empty() || line[0] == '#') {
            return;
        }
        if (line[0] == '%') {
            BeginPart(line);
            return;
        }
        if (part_ == nullptr) {
            Refuse(line, 0, "a section (%customer, %address or %heartbeat) must come first");
        }
        FormLine content;
        content.line = number_;
        std::size_t bad = 0;
        std::string cause;
        if (!LineFromForm(line, &content.bytes, &bad, &cause)) {
            Refuse(line, bad, cause);
        }
        part_->lines.push_back(std::move(content));
    }

    void BeginPart(std::string_view line) {
        const std::string_view section = line.substr(0, line.find_last_not_of(" \t") + 1);
        const auto *row = std::ranges::find(kParts, section, &PartRow::section);
        if (row == std::end(kParts)) {
            Refuse(line, 0, "unknown section; there are %customer, %address and %heartbeat");
        }
        part_ = &form_[static_cast<std::size_t>(row - std::begin(kParts))];
        if (part_->present) {
            Refuse(line, 0, "the section stands here a second time");
        }
        part_->present = true;
    }

    [[noreturn]] void Refuse(std::string_view line, std::size_t position,
                             const std::string &cause) {
        std::size_t column = 1;
        for (std::size_t at = 0; at < position; ++column) {
            char32_t character = 0;
            at += std::max<std::size_t>(regfile::DecodeUtf8(line.substr(at), &character), 1);
        }
        Fail(EX_DATAERR,
             name_ + ":" + std::to_string(number_) + ":" + std::to_string(column) + ": " + cause);
    }

    std::string_view text_;
    const std::string &name_;
    std::size_t number_ = 0;
    Form form_;
    FormPart *part_ = nullptr;
};

}  // namespace

Form ParseForm(std::string_view text, const std::string &name) {
    return FormReader(text, name).Read();
}

std::string PartText(const FormPart &part) {
    std::string text;
    for (const FormLine &line : part.lines) {
        text += line.bytes + "\r\n";
    }
    return text;
}

}  // namespace veloxctl::keydisk
