// Lines of a key disk as people read and write them.
//
// A disk's text is Shift-JIS (code page 932), a form's is UTF-8. In a form's content lines a
// backslash begins an escape:  \\  a backslash,  \xHH  the byte HH of the disk,  \uHHHH  a
// character by its number,  \#  and  \%  what would begin a comment or a section,  \  at the end of
// a line nothing (an empty line is a lone backslash). Escapes keep every byte, so that what is
// shown can be written again.
#ifndef VELOXCTL_KEYDISK_DISK_TEXT_H
#define VELOXCTL_KEYDISK_DISK_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veloxctl::keydisk {

// A line's bytes as a form writes them, in UTF-8.
std::string LineToForm(std::string_view bytes);

// A form's content line as the disk's bytes. False with the offset (in bytes) and the cause of the
// first mistake.
bool LineFromForm(std::string_view line, std::string *bytes, std::size_t *bad, std::string *cause);

// Any text of a disk in UTF-8, with private characters for bytes without character
// (regfile/text.h).
std::string DiskToUtf8(std::string_view bytes);

// The offset of the first byte that the import does not take for Shift-JIS; the size when there is
// none.
std::size_t FirstBadByte(std::string_view bytes);

// A text cut at LF, CR LF and CR, but not inside a double-byte character. A text that ends with a
// line end has no empty line behind it. *offsets (may be null) receives where each line begins.
std::vector<std::string> SplitLines(std::string_view text,
                                    std::vector<std::size_t> *offsets = nullptr);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_DISK_TEXT_H
