#include "report/encoded_text.h"

#include <amcrtcpy.h>
#include <ntwin32/memory.h>

#include <algorithm>
#include <memory>

namespace veloxctl::report {

namespace {

// The place behind the line that begins at `from`.
std::size_t NextLine(std::string_view text, std::size_t from) {
    return std::min(text.find('\n', from), text.size() - 1) + 1;
}

std::string_view LineAt(std::string_view text, std::size_t from) {
    std::string_view line = text.substr(from, NextLine(text, from) - from);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == ' ')) {
        line.remove_suffix(1);
    }
    return line;
}

bool IsBegin(std::string_view line) {
    const std::string_view word = line.substr(0, line.find(' '));
    return (word == "begin" || word == "begin-base64") && line.size() > word.size();
}

bool IsEnd(std::string_view line, bool base64) {
    return line == (base64 ? "====" : "end");
}

}  // namespace

std::string_view EncodedLines(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size() && !IsBegin(LineAt(text, begin))) {
        begin = NextLine(text, begin);
    }
    const bool base64 = begin < text.size() && LineAt(text, begin).starts_with("begin-base64");
    for (std::size_t at = begin; at < text.size(); at = NextLine(text, at)) {
        if (IsEnd(LineAt(text, at), base64)) {
            return text.substr(begin, NextLine(text, at) - begin);
        }
    }
    return {};
}

std::optional<std::string> Decode(std::string_view lines) {
    HGLOBAL block = nullptr;
    DWORD size = 0;
    if (lines.size() > UINT32_MAX ||
        UUCdDeCodingFromMemory(lines.data(), static_cast<DWORD>(lines.size()), &block, &size) ==
            FALSE) {
        return std::nullopt;
    }
    const std::unique_ptr<void, decltype(&GlobalFree)> owner(block, &GlobalFree);
    return std::string(static_cast<const char *>(block), size);
}

}  // namespace veloxctl::report
