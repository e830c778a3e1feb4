#include "values.h"

#include <ntwin32/registry.h>
#include <regfile/text.h>

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl {

namespace {

using Json = nlohmann::ordered_json;

struct Type {
    std::uint32_t number;
    const char *name;
};

constexpr Type kTypes[] = {
    {REG_NONE, "REG_NONE"},           {REG_SZ, "REG_SZ"},
    {REG_EXPAND_SZ, "REG_EXPAND_SZ"}, {REG_BINARY, "REG_BINARY"},
    {REG_DWORD, "REG_DWORD"},         {REG_DWORD_BIG_ENDIAN, "REG_DWORD_BIG_ENDIAN"},
    {REG_MULTI_SZ, "REG_MULTI_SZ"},   {REG_QWORD, "REG_QWORD"},
};

bool IsText(std::uint32_t type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

// The width in bytes of a number's type, 0 for the others.
std::size_t NumberWidth(std::uint32_t type) {
    switch (type) {
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN:
            return 4;
        case REG_QWORD:
            return 8;
        default:
            return 0;
    }
}

std::string_view Bytes(const std::vector<std::uint8_t> &data) {
    return {reinterpret_cast<const char *>(data.data()), data.size()};
}

// The text of a value without its terminator; false when it has none or more than one.
bool SingleText(const regfile::Value &value, std::string_view *text) {
    if (!IsText(value.type) || value.data.empty() || value.data.back() != 0) {
        return false;
    }
    *text = Bytes(value.data).substr(0, value.data.size() - 1);
    return text->find('\0') == std::string_view::npos;
}

// The texts of a list; false when it does not end as a list does.
bool TextList(const regfile::Value &value, std::vector<std::string_view> *texts) {
    std::string_view left = Bytes(value.data);
    if (value.type != REG_MULTI_SZ || left.empty() || left.back() != '\0') {
        return false;
    }
    left.remove_suffix(1);
    while (!left.empty()) {
        const std::size_t length = left.find('\0');
        if (length == std::string_view::npos || length == 0) {
            return false;
        }
        texts->push_back(left.substr(0, length));
        left.remove_prefix(length + 1);
    }
    return true;
}

bool Number(const regfile::Value &value, std::uint64_t *number) {
    const std::size_t width = NumberWidth(value.type);
    if (width == 0 || value.data.size() != width) {
        return false;
    }
    *number = 0;
    for (std::size_t i = 0; i < width; ++i) {
        const std::size_t byte = value.type == REG_DWORD_BIG_ENDIAN ? i : width - 1 - i;
        *number = *number << 8 | value.data[byte];
    }
    return true;
}

std::string HexDigits(const std::vector<std::uint8_t> &data) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string digits;
    digits.reserve(data.size() * 2);
    for (const std::uint8_t byte : data) {
        digits += kDigits[byte >> 4];
        digits += kDigits[byte & 0x0Fu];
    }
    return digits;
}

std::vector<std::uint8_t> TextData(const std::string &text) {
    std::vector<std::uint8_t> data(text.begin(), text.end());
    data.push_back(0);
    return data;
}

std::vector<std::uint8_t> ListData(const std::string &text) {
    std::vector<std::uint8_t> data;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find("\\0", start), text.size());
        if (end == start) {
            Fail(EX_USAGE, "a text of the list is empty");
        }
        data.insert(data.end(), text.begin() + static_cast<std::ptrdiff_t>(start),
                    text.begin() + static_cast<std::ptrdiff_t>(end));
        data.push_back(0);
        start = end + 2;
    }
    data.push_back(0);
    return data;
}

std::vector<std::uint8_t> NumberData(std::uint32_t type, const std::string &word) {
    const bool hexadecimal = word.starts_with("0x") || word.starts_with("0X");
    const char *const end = word.data() + word.size();
    const std::size_t width = NumberWidth(type);
    std::uint64_t number = 0;
    const auto [stop, error] =
        std::from_chars(word.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || (width == 4 && number > 0xFFFFFFFFu)) {
        Fail(EX_USAGE, "\"" + word + "\" is no number of " + std::to_string(width * 8) + " bits");
    }
    std::vector<std::uint8_t> data;
    for (std::size_t i = 0; i < width; ++i) {
        data.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    }
    if (type == REG_DWORD_BIG_ENDIAN) {
        std::ranges::reverse(data);
    }
    return data;
}

std::vector<std::uint8_t> ByteData(const std::string &word) {
    std::vector<std::uint8_t> data;
    const char *const end = word.data() + word.size();
    for (const char *at = word.data(); at < end; at += 2) {
        std::uint8_t byte = 0;
        if (end - at < 2 || std::from_chars(at, at + 2, byte, 16).ptr != at + 2) {
            Fail(EX_USAGE, "\"" + word + "\" is not made of pairs of hexadecimal digits");
        }
        data.push_back(byte);
    }
    return data;
}

// The JSON of a text or a list; discarded when it is none.
Json TextAsJson(const regfile::Value &value) {
    std::string utf8;
    if (std::string_view text; SingleText(value, &text)) {
        return regfile::StoredToUtf8(text, &utf8) ? Json(utf8) : Json(Json::value_t::discarded);
    }
    std::vector<std::string_view> texts;
    Json list = Json::array();
    if (!TextList(value, &texts)) {
        return Json(Json::value_t::discarded);
    }
    for (const std::string_view text : texts) {
        if (!regfile::StoredToUtf8(text, &utf8)) {
            return Json(Json::value_t::discarded);
        }
        list.push_back(utf8);
    }
    return list;
}

}  // namespace

std::string TypeName(std::uint32_t type) {
    const auto *found = std::ranges::find(kTypes, type, &Type::number);
    return found != std::end(kTypes) ? found->name : "REG_TYPE(" + std::to_string(type) + ")";
}

std::uint32_t TypeNamed(const std::string &name) {
    const auto *found = std::ranges::find_if(
        kTypes, [&](const Type &type) { return Folded(type.name) == Folded(name); });
    if (found == std::end(kTypes)) {
        Fail(EX_USAGE, "\"" + name + "\" is no type of a value");
    }
    return found->number;
}

std::vector<std::uint8_t> DataFromWord(std::uint32_t type, const std::string &word) {
    if (IsText(type)) {
        return TextData(TerminalToStored(word, "the data"));
    }
    if (type == REG_MULTI_SZ) {
        return ListData(TerminalToStored(word, "the data"));
    }
    return NumberWidth(type) > 0 ? NumberData(type, word) : ByteData(word);
}

std::string ShownData(const regfile::Value &value) {
    if (std::string_view text; SingleText(value, &text)) {
        return StoredToTerminal(text);
    }
    if (std::uint64_t number = 0; Number(value, &number)) {
        char shown[24];
        std::snprintf(shown, sizeof(shown), "0x%llx", static_cast<unsigned long long>(number));
        return shown;
    }
    std::vector<std::string_view> texts;
    if (!TextList(value, &texts)) {
        return HexDigits(value.data);
    }
    std::string shown;
    for (const std::string_view text : texts) {
        shown += (shown.empty() ? "" : "\\0") + StoredToTerminal(text);
    }
    return shown;
}

std::string ShownName(const std::string &name) {
    return name.empty() ? "(Default)" : StoredToTerminal(name);
}

Json ValueAsJson(const regfile::Value &value) {
    Json json = {{"name", regfile::NameToUtf8(value.name)}, {"type", TypeName(value.type)}};
    if (std::uint64_t number = 0; Number(value, &number)) {
        json["data"] = number;
        return json;
    }
    Json text = TextAsJson(value);
    if (!text.is_discarded()) {
        json["data"] = std::move(text);
    } else if (IsText(value.type) || value.type == REG_MULTI_SZ || NumberWidth(value.type) > 0) {
        json["hex"] = HexDigits(value.data);
    } else {
        json["data"] = HexDigits(value.data);
    }
    return json;
}

void PrintJson(const Json &json) {
    // What is no UTF-8, such as a folder's name, must not keep the rest back.
    Print(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace veloxctl
