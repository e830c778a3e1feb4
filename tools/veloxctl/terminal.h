// Texts on the terminal: the registry stores EUC-JP, the terminal has the encoding of its locale.
//
// Conventions
//  1. "Stored" texts are the registry's bytes, "terminal" texts are what is read from the command
//  line
//     and written to the standard streams; everything else is UTF-8.
//  2. What the terminal cannot show, or would obey, is shown escaped: a character as \uHHHH, a byte
//  or
//     a control character as \xHH. JSON, export and the form keep every byte.
//  3. The locale is asked at the first text beyond ASCII, so that a command without one does not
//  load
//     it.
#ifndef VELOXCTL_TERMINAL_H
#define VELOXCTL_TERMINAL_H

#include <string>
#include <string_view>

namespace veloxctl {

// The name of the terminal's encoding, as iconv takes it.
const char *TerminalEncoding();

std::string Utf8ToTerminal(std::string_view utf8);
std::string StoredToTerminal(std::string_view stored);

// A word of the command line. Fails (EX_DATAERR), naming what, when it has no such form.
std::string TerminalToUtf8(std::string_view text, const char *what);
std::string TerminalToStored(std::string_view text, const char *what);

// Writes to standard output; the text is in the terminal's encoding or is no text at all.
void Print(std::string_view text);

// Ends the output; fails (EX_IOERR) when any of it could not be written.
void FinishOutput();

}  // namespace veloxctl

#endif  // VELOXCTL_TERMINAL_H
