// What the import (vlxfd) would do with a key disk other than it seems: found with the import's own
// readers and parsers, under the same language.
#ifndef VELOXCTL_KEYDISK_CHECK_H
#define VELOXCTL_KEYDISK_CHECK_H

#include <records/item_row.h>

#include <cstddef>
#include <string>
#include <vector>

#include "keydisk/form.h"

namespace veloxctl::keydisk {

enum class Severity {
    kRefused,  // the import fails here
    kDropped,  // something of the disk is not imported
    kNote,     // something is imported otherwise than it looks
};

struct Finding {
    Severity severity;
    Part part;
    std::size_t line;  // of the file's text, from 1; 0: the file as a whole
    std::string text;  // in UTF-8
};

const char *SeverityName(Severity severity);

// The import's language on this system. It follows KES_LANG as the import does.
ITEM_LANGUAGE ImportLanguage();

// Checks the three files of a folder. The findings stand in the order of the import.
std::vector<Finding> CheckDisk(const std::string &folder);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_CHECK_H
