// The form of a key disk: a text in UTF-8 with one section a file. docs/formats.md describes it.
//
//   # comment
//   %customer                  %address        %heartbeat
//   [CONTRACT]                 [E-MAIL]        [HEART-BEAT-INT]
//   Corporate                  a@b.example     10
#ifndef VELOXCTL_KEYDISK_FORM_H
#define VELOXCTL_KEYDISK_FORM_H

#include <records/key_disk.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace veloxctl::keydisk {

enum Part : std::size_t { kCustomer = 0, kAddress = 1, kHeartbeat = 2 };

struct PartRow {
    const char *file;
    const char *section;
    const char *title;
};

inline constexpr PartRow kParts[] = {
    {KEYDISK_CUSTOMER_FILE, "%customer", "customer file"},
    {KEYDISK_ADDRESS_FILE, "%address", "address file"},
    {KEYDISK_HEARTBEAT_FILE, "%heartbeat", "heart-beat file"},
};
inline constexpr std::size_t kPartCount = std::size(kParts);

struct FormLine {
    std::string bytes;     // as on the disk, without line end
    std::size_t line = 0;  // in the form
};

struct FormPart {
    bool present = false;
    std::vector<FormLine> lines;
};

using Form = std::array<FormPart, kPartCount>;

// Reads a form; name is the file's for messages. Fails (EX_DATAERR) with file, line and column.
Form ParseForm(std::string_view text, const std::string &name);

// The text of a file on the disk, before its encoding: every line ended by CR LF.
std::string PartText(const FormPart &part);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_FORM_H
