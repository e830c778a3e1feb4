#include "scanner.h"

#include <regfile/converter.h>

#include <algorithm>
#include <utility>

#include "encoding.h"

namespace regfile {

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t';
}

char Folded(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

// The place just behind a well-formed beginning of a file.
Problem After(std::string_view utf8, std::string cause) {
    Problem problem;
    problem.line = 1 + static_cast<std::size_t>(std::count(utf8.begin(), utf8.end(), '\n'));
    const std::size_t line_start = utf8.rfind('\n');
    problem.column =
        1 +
        CountCharacters(line_start == std::string_view::npos ? utf8 : utf8.substr(line_start + 1));
    problem.cause = std::move(cause);
    return problem;
}

}  // namespace

bool Scanner::Open(std::string_view bytes, Problem *problem) {
    if (bytes.starts_with(kUtf16Mark)) {
        return OpenUtf16(bytes.substr(kUtf16Mark.size()), problem);
    }
    if (bytes.starts_with(kUtf16BigEndianMark)) {
        *problem = After("", "UTF-16 in big-endian order is not read");
        return false;
    }
    if (bytes.size() > 1 && (bytes[0] == '\0') != (bytes[1] == '\0')) {
        *problem = After("", "UTF-16 is read only with a byte order mark");
        return false;
    }
    return OpenUtf8(bytes.substr(bytes.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0), problem);
}

bool Scanner::OpenUtf16(std::string_view units, Problem *problem) {
    converted_.reserve(units.size() / 2);
    if (Converter(kFileEncoding, "UTF-16LE").Append(units, &converted_) < units.size()) {
        *problem = After(converted_, "The bytes are not UTF-16");
        return false;
    }
    return OpenUtf8(converted_, problem);
}

bool Scanner::OpenUtf8(std::string_view bytes, Problem *problem) {
    const std::size_t valid = ValidUtf8Length(bytes);
    if (valid < bytes.size()) {
        *problem =
            After(bytes.substr(0, valid), bytes[valid] == '\0' ? "A zero byte stands in the text"
                                                               : "The bytes are not UTF-8");
        return false;
    }
    text_ = bytes;
    return true;
}

bool Scanner::NextLine() {
    if (next_ >= text_.size()) {
        return false;
    }
    const std::size_t end = std::min(text_.find('\n', next_), text_.size());
    line_ = text_.substr(next_, end - next_);
    if (line_.ends_with('\r')) {
        line_.remove_suffix(1);
    }
    next_ = end + 1;
    at_ = 0;
    ++line_number_;
    return true;
}

void Scanner::SkipBlanks() {
    while (at_ < line_.size() && IsBlank(line_[at_])) {
        ++at_;
    }
}

bool Scanner::Take(char byte) {
    if (AtEnd() || line_[at_] != byte) {
        return false;
    }
    ++at_;
    return true;
}

bool Scanner::TakeWord(std::string_view word) {
    const std::string_view rest = Rest();
    if (rest.size() < word.size() ||
        !std::equal(word.begin(), word.end(), rest.begin(),
                    [](char left, char right) { return Folded(left) == Folded(right); })) {
        return false;
    }
    at_ += word.size();
    return true;
}

bool Scanner::OnlyCommentLeft() const {
    const std::string_view rest = Rest();
    const auto *first = std::find_if_not(rest.begin(), rest.end(), IsBlank);
    return first == rest.end() || *first == ';';
}

Problem Scanner::At(std::size_t position, std::string cause) const {
    Problem problem;
    problem.line = std::max<std::size_t>(line_number_, 1);
    problem.column = 1 + CountCharacters(line_.substr(0, position));
    problem.cause = std::move(cause);
    return problem;
}

}  // namespace regfile
