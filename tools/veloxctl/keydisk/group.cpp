// The rows of "veloxctl keydisk".
#include "groups.h"
#include "keydisk/commands.h"

namespace veloxctl {

namespace {

constexpr char kLanguages[] = "en ja";

constexpr Operand kCreateOperands[] = {
    {.name = "FORM",
     .summary = "the form, a text in UTF-8; - is standard input",
     .completes = Completes::kFiles},
};
constexpr Option kCreateOptions[] = {
    {.short_name = 'o',
     .long_name = "output",
     .argument = "DIR|IMAGE",
     .summary = "the folder or the image that is made; a folder exists or has a slash behind",
     .completes = Completes::kFiles},
    {.long_name = "lang",
     .argument = "LANGUAGE",
     .summary =
         "the language of the import that the disk is for, en or ja; without it the language "
         "of the form's items",
     .choices = kLanguages},
    {.short_name = 'f', .long_name = "force", .summary = "replaces files that exist"},
    {.long_name = "unchecked", .summary = "makes the disk even if the import would refuse it"},
};
constexpr Example kCreateExamples[] = {
    {.command = "veloxctl keydisk create form.txt -o keydisk.img",
     .effect = "Makes an image of a key disk."},
    {.command = "veloxctl keydisk create form.txt -o /mnt/floppy",
     .effect = "Makes the files of a key disk in a folder."},
};

constexpr Option kTemplateOptions[] = {
    {.long_name = "lang",
     .argument = "LANGUAGE",
     .summary = "the language of the items, en or ja; without it this system's",
     .choices = kLanguages},
};
constexpr Example kTemplateExamples[] = {
    {.command = "veloxctl keydisk template --lang en >form.txt",
     .effect = "Writes a form to begin with."},
};

constexpr Operand kShowOperands[] = {
    {.name = "DISK",
     .summary = "the folder of a mounted disk, an image, or the drive",
     .completes = Completes::kFiles},
};
constexpr Option kShowOptions[] = {
    {.long_name = "lang",
     .argument = "LANGUAGE",
     .summary = "checks for an import in this language, en or ja; without it in this system's",
     .choices = kLanguages},
    kJsonOption,
};

constexpr Command kCommands[] = {
    {.name = "create",
     .summary = "makes a key disk from a form",
     .description = "Makes the files of a key disk in a folder, or an image of a 1.44 MB floppy "
                    "disk with them. "
                    "Mistakes of the form are reported with file, line and column. A disk that the "
                    "import would "
                    "refuse is not made; what the import would pass over is reported.",
     .operands = kCreateOperands,
     .options = kCreateOptions,
     .examples = kCreateExamples,
     .run = keydisk::RunCreate},
    {.name = "template",
     .summary = "writes a form filled with an example",
     .description =
         "Writes a form with every item of a key disk, filled with an example, in UTF-8.",
     .options = kTemplateOptions,
     .examples = kTemplateExamples,
     .run = keydisk::RunTemplate},
    {.name = "show",
     .summary = "shows what a key disk holds, and what the import would make of it",
     .description =
         "Decodes a key disk and shows it in the writing of a form. Messages tell what the import "
         "would refuse, what it would pass over and what it would take otherwise than it looks. "
         "The "
         "exit status is 65 when the import would refuse the disk.",
     .operands = kShowOperands,
     .options = kShowOptions,
     .run = keydisk::RunShow},
};

}  // namespace

extern const Group kKeydiskGroup = {
    .name = "keydisk", .summary = "makes and shows key disks", .commands = kCommands};

}  // namespace veloxctl
