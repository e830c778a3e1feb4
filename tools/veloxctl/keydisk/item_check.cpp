#include "keydisk/item_check.h"

#include <ntwin32/registry.h>
#include <regfile/text.h>
#include <registry/catalogue.h>

#include <cctype>
#include <cstring>

#include "keydisk/disk_text.h"

namespace veloxctl::keydisk {

namespace {

// The name of the item in the disk's language, in UTF-8.
std::string NameOf(const ITEM_ROW &row, ITEM_LANGUAGE language, const char *number) {
    return "[" + regfile::NameToUtf8(row.lpszName[language]) + number + "]";
}

const char *LanguageName(ITEM_LANGUAGE language) {
    return language == ITEM_JAPANESE ? "Japanese" : "English";
}

bool IsCustomerKind(const char *text) {
    return std::strcmp(text, CatalogueText("Corporate")) == 0 ||
           std::strcmp(text, CatalogueText("Personal")) == 0;
}

}  // namespace

ItemCheck::ItemCheck(Part part, const ITEM_RULES &rules, ITEM_LANGUAGE language) : part_(part) {
    StartItems(&parser_, rules, language, Hear, this);
}

bool ItemCheck::Hear(const ITEM_VALUE &value, void *context) noexcept {
    return static_cast<ItemCheck *>(context)->HearItem(value);
}

bool ItemCheck::HearItem(const ITEM_VALUE &value) {
    const std::string value_name = std::string(value.lpRow->lpszValueName) + value.lpszNumber;
    const std::string name = NameOf(*value.lpRow, parser_.eLanguage, value.lpszNumber);
    if (value.bLast && parser_.eState == ITEM_STATE_NAMED) {
        Add(Severity::kNote, name_line_,
            "the last item, " + name + ", has no value and gets the value of the item before it");
    }
    if (value.lpRow->dwType == REG_DWORD && !IsCustomerKind(value.lpszText)) {
        Add(Severity::kRefused, name_line_,
            "the value of " + name + " is neither \"" +
                regfile::NameToUtf8(CatalogueText("Corporate")) + "\" nor \"" +
                regfile::NameToUtf8(CatalogueText("Personal")) + "\"");
        return false;
    }
    if (items_.contains(value_name)) {
        Add(Severity::kNote, name_line_, name + " stands here again and replaces the one before");
    }
    items_[value_name] = value.lpszText;
    return true;
}

bool ItemCheck::Take(std::string_view text, std::size_t line) {
    const ITEM_STATE state = parser_.eState;
    const ITEM_ROW *const row = parser_.lpRow;
    const std::string number = parser_.szNumber;
    const std::size_t previous = name_line_;
    const std::size_t findings = findings_.size();
    if (!TakeItemLine(&parser_, text.data(), text.size())) {
        if (findings == findings_.size()) {
            TellFailure(line);
        }
        return false;
    }
    if (!IsItemLine(parser_.line)) {
        return true;
    }
    if (state == ITEM_STATE_NAMED) {
        Add(Severity::kDropped, previous,
            NameOf(*row, parser_.eLanguage, number.c_str()) + " has no value and is not imported");
    }
    name_line_ = line;
    TellName(line);
    return true;
}

void ItemCheck::End() {
    // A refusal has been told by HearItem.
    (void)TakeItemsEnd(&parser_);
}

// What a name that the import takes may hide.
void ItemCheck::TellName(std::size_t line) {
    const char *number = parser_.szNumber;
    if (*number == '\0') {
        return;
    }
    if (std::isdigit(static_cast<unsigned char>(number[0])) == 0 ||
        std::isdigit(static_cast<unsigned char>(number[1])) == 0) {
        Add(Severity::kNote, line, "the option number is not made of two digits");
    } else if (std::strcmp(number, "00") == 0) {
        Add(Severity::kNote, line, "the option number 00 does not count as an option");
    }
}

void ItemCheck::TellFailure(std::size_t line) {
    const std::string text = part_ == kCustomer ? regfile::NameToUtf8(parser_.line.szText)
                                                : DiskToUtf8(parser_.line.szText);
    switch (parser_.eError) {
        case ITEM_ERROR_NO_NAME_YET:
            Add(Severity::kRefused, line, "a value stands before the first item: " + text);
            break;
        case ITEM_ERROR_LANGUAGE:
            Add(Severity::kRefused, line,
                text + " is an item of a disk in the other language; this import is " +
                    LanguageName(parser_.eLanguage));
            break;
        case ITEM_ERROR_UNKNOWN:
            Add(Severity::kRefused, line, "unknown item: " + text);
            break;
        case ITEM_ERROR_NUMBER:
            Add(Severity::kRefused, line, "an option number has exactly two digits: " + text);
            break;
        case ITEM_ERROR_LINE_TOO_LONG:
            Add(Severity::kRefused, line,
                "the line exceeds " + std::to_string(KEYDISK_MAX_LINE) + " bytes in EUC-JP");
            break;
        case ITEM_ERROR_VALUE_TOO_LONG:
            Add(Severity::kRefused, line,
                "the value exceeds " + std::to_string(KEYDISK_MAX_VALUE) + " bytes");
            break;
        case ITEM_ERROR_NONE:
        case ITEM_ERROR_NOT_STORED:
            break;
    }
}

}  // namespace veloxctl::keydisk
