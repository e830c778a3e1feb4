// The commands of "veloxctl keydisk".
#ifndef VELOXCTL_KEYDISK_COMMANDS_H
#define VELOXCTL_KEYDISK_COMMANDS_H

#include <string>

#include "arguments.h"

namespace veloxctl::keydisk {

int RunCreate(const Arguments &arguments);
int RunTemplate(const Arguments &arguments);
int RunShow(const Arguments &arguments);

// Lets the import's functions in this process work in a language: "en" or "ja".
void UseImportLanguage(const std::string &language);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_COMMANDS_H
