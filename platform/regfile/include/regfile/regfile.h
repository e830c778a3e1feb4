// Registry files ("Windows Registry Editor Version 5.00"): text to changes and back.
//
// Conventions
//  1. A file is UTF-16LE with a byte order mark, or UTF-8 with or without one; lines end with CR LF
//     or LF. The form is the one that the Windows documentation gives for .reg files: "[key]",
//     "[-key]", "name"="text", "name"=dword:, hex:, hex(n):, "name"=-, @ for the default value,
//     lines continued by a trailing backslash, comments from ';'.
//  2. Paths are handed out below HKEY_LOCAL_MACHINE, without it; no other root is known.
//  3. Texts of a file are Unicode, texts of the registry are EUC-JP. Quoted text becomes EUC-JP
//     with a terminating zero; a character that EUC-JP lacks is a problem. A text whose bytes do
//     not survive the way there and back is written as hex(1): with its bytes. The bytes of a hex
//     list are the stored ones, whatever the type.
//  4. A byte of a name that has no character in EUC-JP is written as U+F700 + byte, a private
//     character that EUC-JP never gives, and read back as that byte.
//  5. Lines and columns count from 1, columns in characters.
//  6. No function throws anything but std::bad_alloc.
#ifndef REGFILE_REGFILE_H
#define REGFILE_REGFILE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace regfile {

// What one line of a file asks for.
struct Change {
    enum class Kind { kCreateKey, kDeleteTree, kSetValue, kDeleteValue };
    Kind kind = Kind::kCreateKey;
    std::shared_ptr<const std::string> path;  // below HKEY_LOCAL_MACHINE; shared by a key's lines
    std::string name;                         // of the value; empty: the default value
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
    std::size_t line = 0;
};

// Where and why a file cannot be read.
struct Problem {
    std::size_t line = 0;
    std::size_t column = 0;
    std::string cause;  // one sentence, no full stop
};

// Reads a whole file's bytes. False with *problem filled when anything in it is wrong or exceeds a
// limit of the registry (name 255 bytes, depth 512, data 1 MiB); *changes is then untouched. The
// changes stand in the order of the file.
bool Parse(std::string_view bytes, std::vector<Change> *changes, Problem *problem);

// One value for Format, as stored.
struct Value {
    std::string name;
    std::uint32_t type = 0;
    std::vector<std::uint8_t> data;
};

// The first line of a file with the empty line after it.
std::string FormatHeader();

// "[HKEY_LOCAL_MACHINE\path]", one line a value and an empty line, in UTF-8 with CR LF.
std::string FormatKey(std::string_view path, const std::vector<Value> &values);

// A whole UTF-8 text as UTF-16LE with a byte order mark, as Windows tools write .reg files.
std::string ToUtf16WithMark(std::string_view utf8);

}  // namespace regfile

#endif  // REGFILE_REGFILE_H
