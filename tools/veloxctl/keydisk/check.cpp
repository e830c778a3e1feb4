#include "keydisk/check.h"

#include <keyfd/customer_text.h>
#include <keyfd/heartbeat_text.h>
#include <keyfd/keyfd.h>
#include <ntwin32/system.h>
#include <regfile/text.h>
#include <registry/catalogue.h>

#include <algorithm>

#include "keydisk/customer_code.h"
#include "keydisk/disk_lines.h"
#include "keydisk/disk_text.h"
#include "keydisk/item_check.h"
#include "keydisk/media.h"
#include "terminal.h"

namespace veloxctl::keydisk {

namespace {

// The largest mail address that the step behind the import can read.
constexpr std::size_t kMaxMailAddress = 127;

using Findings = std::vector<Finding>;

void Append(Findings *findings, Findings more) {
    findings->insert(findings->end(), std::make_move_iterator(more.begin()),
                     std::make_move_iterator(more.end()));
}

// The line of the text in which an offset lies, from 1.
std::size_t LineAt(std::string_view text, std::size_t offset) {
    std::vector<std::size_t> starts;
    SplitLines(text, &starts);
    return static_cast<std::size_t>(std::ranges::upper_bound(starts, offset) - starts.begin());
}

// Why the text of a readable customer file cannot be had; nothing when it can.
Findings CheckCustomerEncoding(const MediaFile &file, std::string *decoded) {
    if (!DecodeCustomerFile(file.bytes, decoded)) {
        return {{Severity::kRefused, kCustomer, 0, "the uuencoded text is damaged or incomplete"}};
    }
    const std::string_view text = std::string_view(*decoded).substr(0, decoded->find('\0'));
    const std::size_t bad = FirstBadByte(text);
    if (bad < text.size()) {
        return {{Severity::kRefused, kCustomer, LineAt(text, bad),
                 "the text is not Shift-JIS: " + DiskToUtf8(text.substr(bad, 1))}};
    }
    if (text.size() < decoded->size()) {
        return {{Severity::kDropped, kCustomer, LineAt(*decoded, text.size()),
                 "what follows the zero byte is not imported"}};
    }
    return {};
}

class CustomerCheck {
  public:
    CustomerCheck(const CUSTOMER_TEXT &text, ITEM_LANGUAGE language)
        : text_(text.text.Get(), text.dwSize), check_(kCustomer, CUSTOMER_RULES, language) {
        SplitLines(Visible(), &starts_);
    }

    Findings Run() {
        std::size_t start = 0;
        LONG end = NextEnd(start);
        if (end <= 0) {
            check_.Add(Severity::kRefused, 1,
                       Visible().find_first_of("\r\n") == std::string_view::npos
                           ? "the text has no line end"
                           : "the text begins with an empty line");
            return std::move(check_.Findings());
        }
        while (end > 0) {
            const std::size_t next = static_cast<std::size_t>(end) + 1;
            TellEmptyLines(start, next);
            if (!check_.Take(text_.substr(start, next - start), LineOf(start))) {
                return std::move(check_.Findings());
            }
            start = next;
            end = start < text_.size() ? NextEnd(start) : 0;
        }
        Finish(start, end);
        return std::move(check_.Findings());
    }

  private:
    std::string_view Visible() const { return text_.substr(0, text_.find('\0')); }
    std::size_t LineOf(std::size_t offset) const {
        return static_cast<std::size_t>(std::ranges::upper_bound(starts_, offset) -
                                        starts_.begin());
    }
    LONG NextEnd(std::size_t start) const {
        return GetCRLF(static_cast<DWORD>(start), text_.data(), static_cast<DWORD>(text_.size()));
    }

    // The import takes a whole run of line breaks for one line end and keeps all but one of them.
    void TellEmptyLines(std::size_t start, std::size_t next) {
        for (std::size_t line = LineOf(start) + 1;
             line <= starts_.size() && starts_[line - 1] < next; ++line) {
            check_.Add(Severity::kNote, line,
                       "the empty line becomes a part of the line before it");
        }
    }

    void Finish(std::size_t start, LONG end) {
        if (end < 0) {
            check_.Add(Severity::kRefused, LineOf(start), "the text ends within a line break");
            return;
        }
        if (start < Visible().size()) {
            check_.Add(Severity::kDropped, LineOf(start),
                       "the last line has no line end and is not imported");
        }
        check_.End();
    }

    std::string_view text_;
    std::vector<std::size_t> starts_;
    ItemCheck check_;
};

Findings CheckCustomerFile(const std::string &folder, ITEM_LANGUAGE language) {
    const MediaFile file = ReadMediaFile(folder, KEYDISK_CUSTOMER_FILE);
    if (!file.readable) {
        return {{Severity::kRefused, kCustomer, 0, file.problem}};
    }
    std::string decoded;
    Findings findings = CheckCustomerEncoding(file, &decoded);
    CUSTOMER_TEXT text = {};
    if (!ReadCustomerText((folder + "/" KEYDISK_CUSTOMER_FILE).c_str(), &text)) {
        if (findings.empty()) {
            findings.push_back({Severity::kRefused, kCustomer, 0, "the text does not convert"});
        }
        return findings;
    }
    Append(&findings, CustomerCheck(text, language).Run());
    return findings;
}

// Whether the file was read to its end, where a line's first byte ended it.
void TellEarlyEnd(const DiskLines &lines, Part part, Findings *findings) {
    if (!lines.EndedEarly()) {
        return;
    }
    findings->push_back(
        {Severity::kDropped, part, lines.Line(),
         "an empty line ended by LF alone, or a zero byte, ends the file; what follows is not "
         "imported"});
}

void TellOddBytes(const MediaFile &file, Part part, Findings *findings) {
    const auto tell = [&](char byte, const char *text) {
        const std::size_t at = file.bytes.find(byte);
        if (at != std::string::npos) {
            findings->push_back({Severity::kNote, part, LineAt(file.bytes, at), text});
        }
    };
    tell('\xFF', "the byte FF is taken for the end of a line");
    tell('\0', "what follows the zero byte on its line is not imported");
}

Findings CheckAddressFile(const std::string &folder, ITEM_LANGUAGE language) {
    const MediaFile file = ReadMediaFile(folder, KEYDISK_ADDRESS_FILE);
    if (!file.readable) {
        return {{Severity::kRefused, kAddress, 0, file.problem}};
    }
    ItemCheck check(kAddress, ADDRESS_RULES, language);
    TellOddBytes(file, kAddress, &check.Findings());
    DiskLines lines(folder + "/" KEYDISK_ADDRESS_FILE, file.bytes.size());
    while (lines.Next()) {
        if (!lines.IsWhole()) {
            check.Add(Severity::kNote, lines.Line(),
                      "the line exceeds " + std::to_string(KEYDISK_MAX_LINE - 1) +
                          " bytes and is imported as several lines");
        }
        if (!check.Take(lines.Text(), lines.Line())) {
            return std::move(check.Findings());
        }
        if (std::ranges::any_of(lines.Text(), [](char byte) { return (byte & 0x80) != 0; }) &&
            lines.Text()[0] != '[') {
            check.Add(Severity::kNote, lines.Line(),
                      "the value is stored in Shift-JIS as it stands");
        }
    }
    check.End();
    TellEarlyEnd(lines, kAddress, &check.Findings());
    if (!check.Found("MailAdrs")) {
        check.Add(Severity::kNote, 0,
                  "there is no mail address; unless the registry holds one the set-up ends with 0");
    } else if (check.ValueOf("MailAdrs").size() > kMaxMailAddress) {
        check.Add(
            Severity::kNote, 0,
            "the mail address exceeds 127 bytes; the set-up will end with 0 behind the import");
    }
    return std::move(check.Findings());
}

const char *HeartbeatProblem(HEARTBEAT_ERROR error) {
    switch (error) {
        case HEARTBEAT_ERROR_ITEM:
            return "the first line is not the item line of the heart-beat file";
        case HEARTBEAT_ERROR_VALUE:
            return "the interval holds what is no digit";
        case HEARTBEAT_ERROR_TERMINATE:
            return "something follows the interval";
        case HEARTBEAT_ERROR_THIRD_LINE:
            return "a third line is not allowed";
        case HEARTBEAT_ERROR_NONE:
            break;
    }
    return "";
}

// The interval's digits without leading zeros.
std::string SignificantDigits(std::string_view text) {
    const std::size_t first = std::min(text.find_first_of("123456789"), text.size());
    text.remove_prefix(first);
    return std::string(text.substr(0, text.find_first_not_of("0123456789")));
}

void TellInterval(const HEARTBEAT_PARSER &parser, const std::string &value, std::size_t line,
                  Findings *findings) {
    if (parser.nLines <= 1) {
        findings->push_back({Severity::kNote, kHeartbeat, 0, "there is no interval; it becomes 1"});
    } else if (parser.nLines > 1 && SignificantDigits(value) != std::to_string(parser.dwInterval) &&
               !SignificantDigits(value).empty()) {
        findings->push_back(
            {Severity::kNote, kHeartbeat, line,
             "the interval exceeds 32 bits and becomes " + std::to_string(parser.dwInterval)});
    } else if (parser.nLines > 1 && parser.dwInterval == 0) {
        findings->push_back({Severity::kNote, kHeartbeat, line, "the interval 0 becomes 1"});
    }
}

Findings CheckHeartbeatFile(const std::string &folder) {
    const MediaFile file = ReadMediaFile(folder, KEYDISK_HEARTBEAT_FILE);
    Findings findings;
    if (!file.present) {
        return findings;
    }
    if (!file.readable) {
        // A file that opens and is too large fails in the reading.
        const bool opens = !file.bytes.empty();
        findings.push_back({opens ? Severity::kRefused : Severity::kDropped, kHeartbeat, 0,
                            file.problem + (opens ? "" : "; the import passes over it")});
        return findings;
    }
    TellOddBytes(file, kHeartbeat, &findings);
    HEARTBEAT_PARSER parser = HEARTBEAT_START;
    DiskLines lines(folder + "/" KEYDISK_HEARTBEAT_FILE, file.bytes.size());
    std::string value;
    std::size_t value_line = 0;
    while (lines.Next()) {
        if (!TakeHeartbeatLine(&parser, lines.Text().c_str())) {
            findings.push_back(
                {Severity::kRefused, kHeartbeat, lines.Line(),
                 HeartbeatProblem(parser.eError) + std::string(": ") + DiskToUtf8(lines.Shown())});
            return findings;
        }
        if (parser.nLines == 2 && value_line == 0) {
            value = lines.Text();
            value_line = lines.Line();
        }
    }
    TellEarlyEnd(lines, kHeartbeat, &findings);
    TellInterval(parser, value, value_line, &findings);
    return findings;
}

}  // namespace

const char *SeverityName(Severity severity) {
    switch (severity) {
        case Severity::kRefused:
            return "refused";
        case Severity::kDropped:
            return "not imported";
        case Severity::kNote:
            return "note";
    }
    return "";
}

ITEM_LANGUAGE ImportLanguage() {
    return GetSystemDefaultLangID() == LANGID_JAPANESE ? ITEM_JAPANESE : ITEM_ENGLISH;
}

std::vector<Finding> CheckDisk(const std::string &folder) {
    // The import's catalogue brings the import's locale, and the terminal must keep its own.
    (void)TerminalEncoding();
    UseCatalogue("", CATALOGUE_VELOX);
    const ITEM_LANGUAGE language = ImportLanguage();
    Findings findings = CheckCustomerFile(folder, language);
    Append(&findings, CheckAddressFile(folder, language));
    Append(&findings, CheckHeartbeatFile(folder));
    return findings;
}

}  // namespace veloxctl::keydisk
