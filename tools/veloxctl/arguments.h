// The arguments of one command, parsed by its row of the table.
#ifndef VELOXCTL_ARGUMENTS_H
#define VELOXCTL_ARGUMENTS_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "table.h"

namespace veloxctl {

// Every name that is asked for must stand in the command's row: options under their long name,
// operands under theirs. Texts are as given, in the terminal's encoding.
class Arguments {
  public:
    // Takes the words behind the command. A Failure (EX_USAGE) tells what is wrong with them. With
    // help among them, nothing else is checked.
    Arguments(const Group &group, const Command &command, std::vector<std::string> words);

    bool Has(const char *name) const { return !All(name).empty(); }
    // The argument, which must be there: a required operand, or what Has() found.
    const std::string &Get(const char *name) const;
    std::string GetOr(const char *name, const char *otherwise) const;
    const std::vector<std::string> &All(const char *name) const;

    // "reg add", for messages.
    const std::string &CommandName() const { return command_name_; }

  private:
    std::vector<std::string> *Slot(const char *name) { return &found_[name]; }
    void Parse(const Command &command, std::vector<std::string> words);

    std::string command_name_;
    std::map<std::string_view, std::vector<std::string>> found_;
};

}  // namespace veloxctl

#endif  // VELOXCTL_ARGUMENTS_H
