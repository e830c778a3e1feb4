// Questions to the person at the terminal.
#ifndef VELOXCTL_PROMPT_H
#define VELOXCTL_PROMPT_H

#include <cstddef>
#include <string>

namespace veloxctl {

// Asks question on standard error and takes an answer that begins with y or Y for yes. Fails
// (EX_USAGE) with advice when standard input is no terminal; fails (EX_NOPERM) on any other answer.
void Confirm(const std::string &question, const char *advice);

// A secret in memory that is wiped at the end.
class Secret {
  public:
    explicit Secret(std::string text) : text_(std::move(text)) {}
    Secret(Secret &&other) noexcept : text_(std::move(other.text_)) { other.Wipe(); }
    Secret(const Secret &) = delete;
    Secret &operator=(const Secret &) = delete;
    Secret &operator=(Secret &&) = delete;
    ~Secret() { Wipe(); }

    const std::string &Text() const { return text_; }

  private:
    void Wipe();

    std::string text_;
};

// Reads a secret of at most longest bytes, which is never taken from the command line: from the
// first line of the file source, with "-" from standard input, with "" from the terminal, where it
// is asked for twice with prompt and the echo off. Fails on a longer one, and when both answers
// differ.
Secret ReadSecret(const std::string &source, const std::string &prompt, std::size_t longest);

}  // namespace veloxctl

#endif  // VELOXCTL_PROMPT_H
