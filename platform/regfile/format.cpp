#include <ntwin32/registry.h>
#include <regfile/converter.h>
#include <regfile/regfile.h>
#include <regfile/text.h>

#include <cstdio>

#include "encoding.h"

namespace regfile {

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr std::size_t kLineWidth = 76;

std::string_view AsText(const std::vector<std::uint8_t> &data) {
    return {reinterpret_cast<const char *>(data.data()), data.size()};
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\') {
            quoted.push_back('\\');
        }
        quoted.push_back(byte);
    }
    return quoted + '"';
}

std::string Number(std::uint32_t number, int digits) {
    char text[16];
    const int length = std::snprintf(text, sizeof(text), "%0*x", digits, number);
    return {text, static_cast<std::size_t>(length)};
}

// "hex:" lists go on over lines of at most 80 columns.
void AppendBytes(const std::vector<std::uint8_t> &data, std::size_t column, std::string *line) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (column > kLineWidth - 3 && i > 0) {
            line->append("\\").append(kLineEnd).append("  ");
            column = 2;
        }
        line->push_back(kDigits[data[i] >> 4]);
        line->push_back(kDigits[data[i] & 0x0Fu]);
        column += 2;
        if (i + 1 < data.size()) {
            line->push_back(',');
            ++column;
        }
    }
}

bool AppendAsText(const std::vector<std::uint8_t> &data, std::string *line) {
    std::string utf8;
    if (data.empty() || data.back() != 0 ||
        !StoredToUtf8(AsText(data).substr(0, data.size() - 1), &utf8) || HoldsControl(utf8)) {
        return false;
    }
    line->append(Quoted(utf8));
    return true;
}

std::uint32_t LittleEndian(const std::vector<std::uint8_t> &data) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) {
        number = (number << 8) | data[i];
    }
    return number;
}

std::string ValueLine(const Value &value) {
    std::string line = value.name.empty() ? "@" : Quoted(NameToUtf8(value.name));
    line.push_back('=');
    if (value.type == REG_SZ && AppendAsText(value.data, &line)) {
        return line + kLineEnd;
    }
    if (value.type == REG_DWORD && value.data.size() == 4) {
        return line + "dword:" + Number(LittleEndian(value.data), 8) + kLineEnd;
    }
    line += value.type == REG_BINARY ? "hex:" : "hex(" + Number(value.type, 1) + "):";
    AppendBytes(value.data, CountCharacters(line), &line);
    return line + kLineEnd;
}

}  // namespace

std::string FormatHeader() {
    return "Windows Registry Editor Version 5.00\r\n\r\n";
}

std::string FormatKey(std::string_view path, const std::vector<Value> &values) {
    std::string text = "[HKEY_LOCAL_MACHINE";
    if (!path.empty()) {
        text.append("\\").append(NameToUtf8(path));
    }
    text.append("]").append(kLineEnd);
    for (const Value &value : values) {
        text += ValueLine(value);
    }
    return text + kLineEnd;
}

std::string ToUtf16WithMark(std::string_view utf8) {
    std::string utf16 = "\xFF\xFE";
    Converter("UTF-16LE", kFileEncoding).Append(utf8, &utf16);
    return utf16;
}

}  // namespace regfile
