#include "session/conversation.h"

#include <utility>

#include <tracelog.h>

namespace session {

namespace {

constexpr int kNote = 0;
constexpr int kFailure = 1;

// Bounds against a server that never stops talking.
constexpr std::size_t kMostBytes = 65536;
constexpr std::size_t kMostAnswer = 500;
constexpr int kMostTracedLines = 200;

std::string_view WithoutLineEnd(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    return line;
}

}  // namespace

std::string AsItStands(std::string_view line) {
    return std::string(line);
}

Conversation::Conversation(const char *source, const char *function, const Deadline &deadline,
                           Wording wording)
    : source_(source), function_(function), deadline_(deadline), wording_(std::move(wording)) {}

void Conversation::Restart() {
    step_.clear();
    answer_.clear();
    received_bytes_ = 0;
    closing_ = false;
}

void Conversation::Sent(std::string_view line) {
    const std::string shown = wording_.command(WithoutLineEnd(line));
    if (shown.empty())
        return;
    if (!closing_) {
        answer_.clear();
        if (!shown.starts_with('('))
            step_ = shown.substr(0, shown.find(' '));
    }
    if (MayTraceAnotherLine())
        Trace(kNote, "client", shown);
}

void Conversation::SentText(std::size_t size) {
    answer_.clear();
    Note("sending the mail's text, " + std::to_string(size) + " bytes");
}

bool Conversation::Received(std::string_view line) {
    received_bytes_ += line.size();
    if (received_bytes_ > kMostBytes) {
        Trace(closing_ ? kNote : kFailure, "failure", "the server does not stop talking");
        return false;
    }
    const std::string shown = wording_.answer(WithoutLineEnd(line));
    if (shown.empty())
        return true;
    if (!closing_ && answer_.size() < kMostAnswer) {
        if (!answer_.empty())
            answer_ += " / ";
        answer_ += shown.substr(0, kMostAnswer);
    }
    if (MayTraceAnotherLine())
        Trace(kNote, "server", shown);
    return true;
}

void Conversation::Note(std::string_view text) const {
    Trace(kNote, "note", text);
}

void Conversation::Complain(std::string_view text) const {
    Trace(kFailure, "failure", text);
}

void Conversation::Trace(int level, const char *what, std::string_view text) const {
    TraceLog(level, source_, function_, __LINE__, "%lld ms, %s: %.*s",
             static_cast<long long>(deadline_.Elapsed().count()), what,
             static_cast<int>(text.size()), text.data());
}

bool Conversation::MayTraceAnotherLine() {
    if (traced_lines_ > kMostTracedLines)
        return false;
    ++traced_lines_;
    if (traced_lines_ <= kMostTracedLines)
        return true;
    Note("the rest of the conversation is not traced");
    return false;
}

}  // namespace session
