// Values of the registry as people write and read them.
#ifndef VELOXCTL_VALUES_H
#define VELOXCTL_VALUES_H

#include <regfile/regfile.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace veloxctl {

// "REG_SZ"; a type without a name as "REG_TYPE(12)".
std::string TypeName(std::uint32_t type);

// The type of a name in capital or small letters. Fails (EX_USAGE) on an unknown one.
std::uint32_t TypeNamed(const std::string &name);

// The data of a value from a word of the command line: text; a number, decimal or 0x...; several
// texts separated by \0; bytes in hexadecimal digits. Fails (EX_USAGE, EX_DATAERR).
std::vector<std::uint8_t> DataFromWord(std::uint32_t type, const std::string &word);

// The data in the terminal: text, 0x1f, texts separated by \0, bytes in hexadecimal digits.
std::string ShownData(const regfile::Value &value);

// "(Default)" for the default value.
std::string ShownName(const std::string &name);

// {"name", "type", "data"}; data is text, a number, a list of texts or hexadecimal digits. A text
// that is no EUC-JP or has no single terminator at its end has "hex" in the place of "data".
nlohmann::ordered_json ValueAsJson(const regfile::Value &value);

// Prints JSON over several lines, with a line end.
void PrintJson(const nlohmann::ordered_json &json);

}  // namespace veloxctl

#endif  // VELOXCTL_VALUES_H
