// The check of a file of items: its lines go through the import's parser, and what the parser
// passes over in silence is told.
#ifndef VELOXCTL_KEYDISK_ITEM_CHECK_H
#define VELOXCTL_KEYDISK_ITEM_CHECK_H

#include <keyfd/item_parser.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "keydisk/check.h"

namespace veloxctl::keydisk {

class ItemCheck {
  public:
    ItemCheck(Part part, const ITEM_RULES &rules, ITEM_LANGUAGE language);
    ItemCheck(const ItemCheck &) = delete;
    ItemCheck &operator=(const ItemCheck &) = delete;

    // A line as the import takes it, number line of the file's text. False: the import fails there.
    bool Take(std::string_view text, std::size_t line);
    // The end of the file.
    void End();

    void Add(Severity severity, std::size_t line, std::string text) {
        findings_.push_back({severity, part_, line, std::move(text)});
    }
    std::vector<Finding> &Findings() { return findings_; }
    // True when an item of this value name was handed out.
    bool Found(const char *value_name) const { return items_.contains(value_name); }
    // The item's value as it was handed out last.
    const std::string &ValueOf(const char *value_name) const { return items_.at(value_name); }

  private:
    static bool Hear(const ITEM_VALUE &value, void *context) noexcept;
    bool HearItem(const ITEM_VALUE &value);
    void TellName(std::size_t line);
    void TellFailure(std::size_t line);

    Part part_;
    ITEM_PARSER parser_;
    std::size_t name_line_ = 0;  // of the item at hand
    std::map<std::string, std::string> items_;
    std::vector<Finding> findings_;
};

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_ITEM_CHECK_H
