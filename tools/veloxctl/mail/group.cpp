// The rows of "veloxctl mail".
#include "groups.h"
#include "mail/commands.h"

namespace veloxctl {

namespace {

constexpr char kSwitch[] = "on off";

constexpr Option kShowOptions[] = {kJsonOption};

constexpr Option kSetOptions[] = {
    {.long_name = "server",
     .argument = "HOST",
     .summary = "the SMTP server, a name or an IPv4 address; a name is resolved now"},
    {.long_name = "port", .argument = "NUMBER", .summary = "its port"},
    {.long_name = "sender", .argument = "ADDRESS", .summary = "the address that mail comes from"},
    {.long_name = "protection",
     .argument = "HOW",
     .summary = "plain, tls (from the first byte), starttls (required), or offered (STARTTLS when "
                "the server offers it)",
     .choices = "plain tls starttls offered"},
    {.long_name = "verify",
     .argument = "on|off",
     .summary = "whether the server's certificate must be good",
     .choices = kSwitch},
    {.long_name = "pop",
     .argument = "on|off",
     .summary = "whether a log-in to a POP server comes before every report",
     .choices = kSwitch},
    {.long_name = "pop-server", .argument = "HOST", .summary = "the POP server"},
    {.long_name = "pop-port",
     .argument = "NUMBER",
     .summary = "its port; 995 is TLS from the first byte"},
    {.long_name = "pop-user", .argument = "NAME", .summary = "the account"},
    {.long_name = "pop-password", .summary = "asks for the account's password"},
    {.long_name = "pop-password-file",
     .argument = "FILE",
     .summary = "takes the password from the first line of a file; - is standard input",
     .completes = Completes::kFiles},
    {.long_name = "pop-wait",
     .argument = "SECONDS",
     .summary = "how long to wait between log-in and mail"},
};
constexpr Example kSetExamples[] = {
    {.command = "veloxctl mail set --server mail.example.com --sender server@example.com "
                "--protection starttls",
     .effect = "Sets the server and has it always use STARTTLS."},
    {.command = "veloxctl mail set --pop on --pop-server pop.example.com --pop-port 995 "
                "--pop-user reporter --pop-password",
     .effect = "Logs in before every report; asks for the password."},
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the settings and what is wrong with them",
     .description = "Shows the SMTP server, the sender, the protection and the POP log-in, and "
                    "every problem that keeps reports from going out or lets them go out in clear "
                    "text. The POP password is never shown, only whether there is one.",
     .options = kShowOptions,
     .run = mail::RunShow},
    {.name = "set",
     .summary = "changes settings",
     .description = "Changes what is given and leaves the rest. Everything is checked first and "
                    "stored at once, or not at all.\n\n"
                    "A server name needs a part with at least four characters among its first "
                    "four parts: a shorter one is taken for an IPv4 address and refused.",
     .options = kSetOptions,
     .examples = kSetExamples,
     .run = mail::RunSet},
};

}  // namespace

extern const Group kMailGroup = {
    .name = "mail", .summary = "shows and changes the mail settings", .commands = kCommands};

}  // namespace veloxctl
