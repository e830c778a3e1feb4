// A .reg file as well-formed lines of UTF-8, and a position in the line at hand.
#ifndef REGFILE_SCANNER_H
#define REGFILE_SCANNER_H

#include <regfile/regfile.h>

#include <string>
#include <string_view>

namespace regfile {

class Scanner {
  public:
    // Takes the file's bytes, which must outlive the scanner. False when they are no text.
    bool Open(std::string_view bytes, Problem *problem);

    // Moves to the beginning of the next line; false at the end of the file.
    bool NextLine();

    std::size_t LineNumber() const { return line_number_; }
    std::string_view Line() const { return line_; }
    std::string_view Rest() const { return line_.substr(at_); }
    std::size_t Position() const { return at_; }
    bool AtEnd() const { return at_ == line_.size(); }
    char Peek() const { return AtEnd() ? '\0' : line_[at_]; }

    void Skip(std::size_t bytes) { at_ += bytes; }
    void SkipBlanks();
    // Skips the byte when it comes next.
    bool Take(char byte);
    // Skips the ASCII word when it comes next, in capital or small letters.
    bool TakeWord(std::string_view word);
    // True when only blanks and a comment are left.
    bool OnlyCommentLeft() const;

    // Where position (a byte of the line at hand) stands, with a cause.
    Problem At(std::size_t position, std::string cause) const;

  private:
    bool OpenUtf16(std::string_view units, Problem *problem);
    bool OpenUtf8(std::string_view bytes, Problem *problem);

    std::string converted_;
    std::string_view text_;
    std::size_t next_ = 0;
    std::size_t line_number_ = 0;
    std::string_view line_;
    std::size_t at_ = 0;
};

}  // namespace regfile

#endif  // REGFILE_SCANNER_H
