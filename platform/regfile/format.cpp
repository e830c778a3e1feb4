#include <ntwin32/registry.h>
#include <regfile/regfile.h>

#include <algorithm>
#include <cstdio>

#include "encoding.h"

namespace regfile {

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr std::size_t kLineWidth = 76;

std::string_view AsText(const std::vector<std::uint8_t> &data) {
    return {reinterpret_cast<const char *>(data.data()), data.size()};
}

// Both directions between the registry's texts and the file's.
class Writer {
  public:
    // The text in UTF-8; false when its bytes would not be read back from there.
    bool TextToUtf8(std::string_view stored, std::string *utf8) {
        if (std::any_of(stored.begin(), stored.end(),
                        [](char byte) { return IsControl(static_cast<unsigned char>(byte)); })) {
            return false;
        }
        if (IsAscii(stored)) {
            utf8->assign(stored);
            return true;
        }
        utf8->clear();
        std::string back;
        return to_file_.Append(stored, utf8) == stored.size() && !HoldsControlBeyondAscii(*utf8) &&
               to_store_.Append(*utf8, &back) == utf8->size() && back == stored;
    }

    // A name in UTF-8, whatever its bytes.
    std::string NameToUtf8(std::string_view stored) {
        std::string utf8;
        if (!TextToUtf8(stored, &utf8)) {
            utf8.clear();
            while (!stored.empty()) {
                stored.remove_prefix(AppendCharacter(stored, &utf8));
            }
        }
        return utf8;
    }

  private:
    // C1 controls: U+0085 ends a line in some editors.
    static bool HoldsControlBeyondAscii(std::string_view utf8) {
        for (std::size_t at = utf8.find('\xC2'); at != std::string_view::npos;
             at = utf8.find('\xC2', at + 1)) {
            if (static_cast<unsigned char>(utf8[at + 1]) < 0xA0) {
                return true;
            }
        }
        return false;
    }

    // Appends the first character of a name, or its first byte as a private character.
    std::size_t AppendCharacter(std::string_view stored, std::string *utf8) {
        const auto lead = static_cast<unsigned char>(stored[0]);
        const std::size_t length = lead < 0x80 ? 1 : lead == 0x8F ? 3 : 2;
        std::string character;
        if (length <= stored.size() && TextToUtf8(stored.substr(0, length), &character)) {
            utf8->append(character);
            return length;
        }
        AppendUtf8(kRawByte + lead, utf8);
        return 1;
    }

    Converter to_file_{kFileEncoding, kStoredEncoding};
    Converter to_store_{kStoredEncoding, kFileEncoding};
};

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

bool AppendAsText(const std::vector<std::uint8_t> &data, Writer *writer, std::string *line) {
    std::string utf8;
    if (data.empty() || data.back() != 0 ||
        !writer->TextToUtf8(AsText(data).substr(0, data.size() - 1), &utf8)) {
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

std::string ValueLine(const Value &value, Writer *writer) {
    std::string line = value.name.empty() ? "@" : Quoted(writer->NameToUtf8(value.name));
    line.push_back('=');
    if (value.type == REG_SZ && AppendAsText(value.data, writer, &line)) {
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
    // Opening a conversion costs more than a key's lines, so a thread keeps its two.
    static thread_local Writer writer;
    std::string text = "[HKEY_LOCAL_MACHINE";
    if (!path.empty()) {
        text.append("\\").append(writer.NameToUtf8(path));
    }
    text.append("]").append(kLineEnd);
    for (const Value &value : values) {
        text += ValueLine(value, &writer);
    }
    return text + kLineEnd;
}

std::string ToUtf16WithMark(std::string_view utf8) {
    std::string utf16 = "\xFF\xFE";
    Converter("UTF-16LE", kFileEncoding).Append(utf8, &utf16);
    return utf16;
}

}  // namespace regfile
