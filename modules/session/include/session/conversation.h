// What client and server say to each other: traced while it happens, and kept for the description
// of a failure.
#ifndef SESSION_CONVERSATION_H
#define SESSION_CONVERSATION_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "session/deadline.h"

namespace session {

// What of a line may be shown to people; nothing for a line that is passed over. Lines come without
// their line end.
struct Wording {
    std::function<std::string(std::string_view)> command;
    std::function<std::string(std::string_view)> answer;
};

// Shows a line as it stands.
std::string AsItStands(std::string_view line);

class Conversation {
  public:
    // The trace names source and function; they and the deadline must outlive the object.
    Conversation(const char *source, const char *function, const Deadline &deadline,
                 Wording wording);

    // What follows happens in another function.
    void Enter(const char *function) noexcept { function_ = function; }

    // Forgets the connection before.
    void Restart();
    // The goodbye begins: step and answer stay what they are, whatever is said from now on.
    void Close() noexcept { closing_ = true; }
    // A command went out; its first word becomes the step. A line that is no command is shown
    // through the wording and leaves the step.
    void Sent(std::string_view line);
    // The text that the last command announced goes out; what the server says now, it says to that.
    void SentText(std::size_t size);
    // A line of an answer came in. False when the server has said too much: give up then.
    bool Received(std::string_view line);
    // Anything else that happened.
    void Note(std::string_view text) const;
    // The same, as a failure.
    void Complain(std::string_view text) const;

    // The last command's first word; empty before the first command.
    const std::string &Step() const noexcept { return step_; }
    // What the server said since then, as it may be shown; lines are separated by " / ".
    const std::string &Answer() const noexcept { return answer_; }
    const Deadline &TimeLimit() const noexcept { return deadline_; }

  private:
    void Trace(int level, const char *what, std::string_view text) const;
    bool MayTraceAnotherLine();

    const char *source_;
    const char *function_;
    const Deadline &deadline_;
    Wording wording_;
    std::string step_;
    std::string answer_;
    std::size_t received_bytes_ = 0;
    bool closing_ = false;
    int traced_lines_ = 0;
};

}  // namespace session

#endif  // SESSION_CONVERSATION_H
