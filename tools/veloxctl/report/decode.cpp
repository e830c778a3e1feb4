// "veloxctl report decode".
#include <dlfcn.h>

#include <filesystem>
#include <optional>
#include <vector>

#include "failure.h"
#include "files.h"
#include "report/commands.h"
#include "report/encoded_text.h"
#include "report/mail_reader.h"
#include "report/text.h"
#include "terminal.h"

namespace veloxctl::report {

namespace {

constexpr std::size_t kLargestMail = std::size_t{64} << 20;

struct Report {
    std::size_t mail = 0;
    std::string subject;
    std::string from;
    std::string date;
    std::string text;  // as stored
};

struct Reading {
    std::vector<Report> reports;
    bool damaged = false;
};

// Loaded once and kept: what stands behind it does not survive being unloaded. It lies beside the
// program.
VELOXCTL_READ_MAIL *MailReader() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const auto file = program.parent_path() / VELOXCTL_MAIL_READER_FILE;
    void *library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void *function = library != nullptr ? dlsym(library, VELOXCTL_READ_MAIL_NAME) : nullptr;
    if (function == nullptr) {
        Fail(EX_OSFILE, dlerror());
    }
    return reinterpret_cast<VELOXCTL_READ_MAIL *>(function);
}

void TakeText(const MAIL_TEXT *part, void *context) {
    auto *reading = static_cast<Reading *>(context);
    const std::string_view lines = EncodedLines({part->lpContent, part->nSize});
    if (lines.empty()) {
        return;
    }
    if (auto text = Decode(lines)) {
        reading->reports.push_back(
            {part->nMail, part->szSubject, part->szFrom, part->szDate, std::move(*text)});
    } else {
        reading->damaged = true;
    }
}

// The reports in a file: in its mails, or in the bare encoded lines that somebody saved.
Reading ReadReports(const std::string &name) {
    const std::string bytes = ReadFile(name, kLargestMail);
    Reading reading;
    const long mails = MailReader()(bytes.data(), bytes.size(), TakeText, &reading);
    if (mails < 0) {
        throw std::bad_alloc();
    }
    if (reading.reports.empty() && !reading.damaged) {
        const MAIL_TEXT whole = {1, "", "", "", bytes.data(), bytes.size()};
        TakeText(&whole, &reading);
    }
    if (reading.damaged) {
        Fail(EX_DATAERR, name + ": the encoded report is damaged");
    }
    if (reading.reports.empty()) {
        Fail(EX_DATAERR, name + ": it holds no encoded report");
    }
    return reading;
}

void PrintHeading(const Report &report) {
    Print("== " + std::to_string(report.mail) + ": " + Utf8ToTerminal(report.subject) + ", from " +
          Utf8ToTerminal(report.from) + ", " + Utf8ToTerminal(report.date) + "\n");
}

}  // namespace

int RunDecode(const Arguments &arguments) {
    const Reading reading = ReadReports(arguments.GetOr("FILE", "-"));
    const bool raw = arguments.Has("raw");
    for (const Report &report : reading.reports) {
        if (reading.reports.size() > 1 && !raw) {
            PrintHeading(report);
        }
        if (raw) {
            Print(report.text);
        } else {
            PrintStored(report.text);
        }
    }
    return EX_OK;
}

}  // namespace veloxctl::report
