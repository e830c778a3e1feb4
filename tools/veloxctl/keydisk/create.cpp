// "veloxctl keydisk create".
#include <keyfd/item_text.h>
#include <records/customer_items.h>
#include <regfile/text.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "failure.h"
#include "files.h"
#include "keydisk/check.h"
#include "keydisk/commands.h"
#include "keydisk/customer_code.h"
#include "keydisk/disk_text.h"
#include "keydisk/form.h"
#include "keydisk/image.h"
#include "keydisk/media.h"
#include "terminal.h"

namespace veloxctl::keydisk {

namespace {

// A disk names customers and their addresses.
constexpr mode_t kFileMode = 0600;

bool IsFolder(const std::string &path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string PartFile(const Form &form, std::size_t part) {
    const std::string text = PartText(form[part]);
    return part == kCustomer ? EncodeCustomerFile(text) : text;
}

// Fails when anything stands where a disk's files go, so that no half of a disk is written.
void ExpectNoFiles(const Form &form, const std::string &folder) {
    for (std::size_t part = 0; part < kPartCount; ++part) {
        const std::string path = folder + "/" + kParts[part].file;
        struct stat status = {};
        if (lstat(path.c_str(), &status) == 0) {
            Fail(EX_CANTCREAT,
                 path + (form[part].present ? ": it exists; -f replaces it"
                                            : ": it exists and the form has no such file; -f "
                                              "removes it"));
        }
    }
}

// Writes the files of the form into a folder, and removes the one that the form does not have.
void WriteFolder(const Form &form, const std::string &folder, bool replace) {
    if (!replace) {
        ExpectNoFiles(form, folder);
    }
    for (std::size_t part = 0; part < kPartCount; ++part) {
        const std::string path = folder + "/" + kParts[part].file;
        if (form[part].present) {
            WriteFile(path, PartFile(form, part), kFileMode, replace);
        } else if (unlink(path.c_str()) != 0 && errno != ENOENT) {
            FailSystem(path, errno);
        }
    }
}

// The language whose customer items the form begins with.
const char *LanguageOf(const Form &form) {
    for (const FormLine &line : form[kCustomer].lines) {
        const std::string &bytes = line.bytes;
        if (!bytes.starts_with('[') || !bytes.ends_with(']')) {
            continue;
        }
        std::string name;
        regfile::Utf8ToName(DiskToUtf8(std::string_view(bytes).substr(1, bytes.size() - 2)), &name);
        if (FindItem(CUSTOMER_TABLE, ITEM_JAPANESE, name.c_str()).eResult == ITEM_FOUND) {
            return "ja";
        }
        return "en";
    }
    return "en";
}

std::string PlaceOf(const Finding &finding, const Form &form, const std::string &name) {
    const std::vector<FormLine> &lines = form[finding.part].lines;
    if (finding.line == 0 || finding.line > lines.size()) {
        return name + ": " + kParts[finding.part].section;
    }
    return name + ":" + std::to_string(lines[finding.line - 1].line);
}

// Tells what the import would make of the disk; fails when it would refuse it.
void CheckForm(const Form &form, const std::string &name, const std::string &folder) {
    bool refused = false;
    for (const Finding &finding : CheckDisk(folder)) {
        refused = refused || finding.severity == Severity::kRefused;
        Complain(PlaceOf(finding, form, name) + ": " + SeverityName(finding.severity) + ": " +
                 Utf8ToTerminal(finding.text));
    }
    if (refused) {
        Fail(EX_DATAERR, name + ": no disk was made, since the import would refuse it");
    }
}

void WriteDisk(const Form &form, const PrivateFolder &work, const std::string &target,
               bool replace) {
    if (IsFolder(target)) {
        WriteFolder(form, target, replace);
    } else if (target.ends_with('/')) {
        if (mkdir(target.c_str(), 0700) != 0) {
            FailSystem(target, errno);
        }
        WriteFolder(form, target, replace);
    } else {
        WriteFile(target, MakeImage(work.Path()), kFileMode, replace);
    }
}

}  // namespace

void UseImportLanguage(const std::string &language) {
    setenv("KES_LANG", language == "ja" ? "ja_JP.eucJP" : "en_US", 1);
}

int RunCreate(const Arguments &arguments) {
    const std::string &file = arguments.Get("FORM");
    const std::string name = file == "-" ? "standard input" : file;
    const Form form = ParseForm(ReadFile(file), name);
    if (!arguments.Has("output")) {
        Fail(EX_USAGE, "keydisk create: --output is missing");
    }
    const PrivateFolder work;
    WriteFolder(form, work.Path(), true);
    if (!arguments.Has("unchecked")) {
        UseImportLanguage(arguments.GetOr("lang", LanguageOf(form)));
        CheckForm(form, name, work.Path());
    }
    WriteDisk(form, work, arguments.Get("output"), arguments.Has("force"));
    return EX_OK;
}

}  // namespace veloxctl::keydisk
