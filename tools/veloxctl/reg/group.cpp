// The rows of "veloxctl reg".
#include "groups.h"
#include "reg/commands.h"

namespace veloxctl {

namespace {

constexpr Operand kKey = {.name = "KEY", .summary = "the key, for example HKLM\\SOFTWARE\\XEV"};

constexpr Option kValue = {.short_name = 'v',
                           .long_name = "value",
                           .argument = "NAME",
                           .summary = "only the value of this name"};
constexpr Option kDefaultValue = {.long_name = "ve", .summary = "only the key's default value"};
constexpr Option kRecursive = {
    .short_name = 'r', .long_name = "recursive", .summary = "with every key below"};

constexpr Operand kKeyAlone[] = {kKey};

constexpr Option kQueryOptions[] = {kValue, kDefaultValue, kRecursive, kJsonOption};
constexpr Example kQueryExamples[] = {
    {.command = "veloxctl reg query 'HKLM\\SOFTWARE\\XEV\\VLXService' -r",
     .effect = "Shows the settings of the Velox service."},
    {.command = "veloxctl reg query SOFTWARE/XEV/VLXService/SETUP -v VERSION --json",
     .effect = "Shows one value, for a program to read."},
};

constexpr Option kAddOptions[] = {
    {.short_name = 'v',
     .long_name = "value",
     .argument = "NAME",
     .summary = "the name of the value; without it the key alone is made"},
    {.long_name = "ve", .summary = "the key's default value"},
    {.short_name = 't',
     .long_name = "type",
     .argument = "TYPE",
     .summary = "the type: REG_SZ (if none is given), REG_EXPAND_SZ, REG_MULTI_SZ, REG_DWORD, "
                "REG_DWORD_BIG_ENDIAN, REG_QWORD, REG_BINARY or REG_NONE"},
    {.short_name = 'd',
     .long_name = "data",
     .argument = "DATA",
     .summary = "the data: text, a number (decimal or 0x...), texts separated by \\0, or bytes in "
                "hexadecimal digits"},
    {.short_name = 'f', .long_name = "force", .summary = "replaces a value without asking"},
};
constexpr Example kAddExamples[] = {
    {.command =
         "veloxctl reg add 'HKLM\\SOFTWARE\\XEV\\VLXService\\HEARTBEAT' -v HBINTERVAL -t REG_DWORD "
         "-d 10 -f",
     .effect = "Sets the heart-beat interval."},
};

constexpr Option kDeleteOptions[] = {
    kValue,
    kDefaultValue,
    {.long_name = "va", .summary = "every value of the key, not the key itself"},
    {.short_name = 'f', .long_name = "force", .summary = "deletes sub-keys without asking"},
};

constexpr Operand kCopyOperands[] = {
    {.name = "SOURCE", .summary = "the key that is copied"},
    {.name = "TARGET", .summary = "the key that gets the copy; it is made when it does not exist"},
};
constexpr Option kCopyOptions[] = {
    kRecursive,
    {.short_name = 'f', .long_name = "force", .summary = "replaces values without asking"},
};

constexpr Operand kCompareOperands[] = {
    {.name = "LEFT", .summary = "one key"},
    {.name = "RIGHT", .summary = "the other key"},
};
constexpr Option kCompareOptions[] = {kValue, kDefaultValue, kRecursive, kJsonOption};

constexpr Operand kExportOperands[] = {
    kKey,
    {.name = "FILE",
     .summary = "the file that is written; standard output without it or with -",
     .required = false,
     .completes = Completes::kFiles},
};
constexpr Option kExportOptions[] = {
    {.long_name = "utf16", .summary = "writes UTF-16 as Windows does, not UTF-8"},
    {.short_name = 'f', .long_name = "force", .summary = "replaces a file that exists"},
};
constexpr Example kExportExamples[] = {
    {.command = "veloxctl reg export 'HKLM\\SOFTWARE\\XEV' backup.reg",
     .effect = "Saves every setting."},
};

constexpr Operand kImportOperands[] = {
    {.name = "FILE",
     .summary = "the file that is read; - is standard input",
     .completes = Completes::kFiles},
};
constexpr Option kImportOptions[] = {
    {.short_name = 'n',
     .long_name = "dry-run",
     .summary = "only checks the file and shows what the import would make, change and delete"},
    {.long_name = "json", .summary = "writes what --dry-run shows as JSON, in UTF-8"},
};
constexpr Example kImportExamples[] = {
    {.command = "veloxctl reg import -n backup.reg",
     .effect = "Shows what the import would change."},
};

constexpr Command kCommands[] = {
    {.name = "query",
     .summary = "shows keys and values",
     .description =
         "Shows the values of a key and the names of its sub-keys.\n\n"
         "JSON is an object with key, values and subkeys, with --recursive a list of objects with "
         "key and values. A value has name, type and data; data is a text, a number, a list of "
         "texts or hexadecimal digits. A text whose bytes are no EUC-JP text with one terminator "
         "has hex in the place of data.",
     .operands = kKeyAlone,
     .options = kQueryOptions,
     .examples = kQueryExamples,
     .run = reg::RunQuery},
    {.name = "add",
     .summary = "makes a key, or sets a value",
     .description =
         "Makes a key with every missing key on the way, or sets one value of it. Before "
         "another value is replaced the command asks; where it cannot ask it fails.",
     .operands = kKeyAlone,
     .options = kAddOptions,
     .examples = kAddExamples,
     .run = reg::RunAdd},
    {.name = "delete",
     .summary = "deletes a key or values",
     .description =
         "Deletes a key with everything below it, or values of it. Before sub-keys are deleted the "
         "command asks; where it cannot ask it fails.",
     .operands = kKeyAlone,
     .options = kDeleteOptions,
     .run = reg::RunDelete},
    {.name = "copy",
     .summary = "copies a key's values to another key",
     .description = "Copies the values of a key to another one, in one step. Before a value is "
                    "replaced by another one the command asks; where it cannot ask it fails.",
     .operands = kCopyOperands,
     .options = kCopyOptions,
     .run = reg::RunCopy},
    {.name = "compare",
     .summary = "compares two keys",
     .description =
         "Shows the values, and with --recursive the sub-keys, that differ: those of the left key "
         "behind <, those of the right key behind >. The exit status is 1 when any differ.",
     .operands = kCompareOperands,
     .options = kCompareOptions,
     .run = reg::RunCompare},
    {.name = "export",
     .summary = "writes a key with everything below it as a .reg file",
     .description = "Writes a registry file of version 5.00 in UTF-8. Every byte comes back when "
                    "the file is imported.",
     .operands = kExportOperands,
     .options = kExportOptions,
     .examples = kExportExamples,
     .run = reg::RunExport},
    {.name = "import",
     .summary = "makes the changes of a .reg file",
     .description =
         "Reads a registry file of version 5.00 (UTF-16LE with byte order mark, or UTF-8). The "
         "whole file is checked before anything is written; a mistake is reported with file, line "
         "and column. All changes are made in one step, or none of them.",
     .operands = kImportOperands,
     .options = kImportOptions,
     .examples = kImportExamples,
     .run = reg::RunImport},
    {.name = "verify",
     .summary = "has the server verify the whole registry store",
     .description = "Has the registry server read every record of its store. The exit status is 65 "
                    "when the store is damaged.",
     .run = reg::RunVerify},
};

}  // namespace

extern const Group kRegGroup = {
    .name = "reg", .summary = "shows and changes the registry", .commands = kCommands};

}  // namespace veloxctl
