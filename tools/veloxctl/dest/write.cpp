// "veloxctl dest add", "modify" and "delete".
#include <registry/keys.h>
#include <velox/destination_setting.h>

#include <algorithm>
#include <cstring>
#include <span>

#include "dest/commands.h"
#include "failure.h"
#include "prompt.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::dest {

namespace {

using settings::Json;

constexpr std::uint32_t kHighestPort = 65535;

constexpr const char *kCommandOptions[] = {"command-line"};
constexpr const char *kInBandOptions[] = {"address", "port"};
constexpr const char *kOutOfBandOptions[] = {"address", "port", "telephone", "user"};
constexpr const char *kPasswordOptions[] = {"password", "password-file"};

std::span<const char *const> OptionsOf(Kind kind) {
    switch (kind) {
        case Kind::kCommand:
            return kCommandOptions;
        case Kind::kInBand:
            return kInBandOptions;
        case Kind::kOutOfBand:
            return kOutOfBandOptions;
        default:
            return {};
    }
}

bool HasPassword(const Arguments &arguments) {
    return arguments.Has("password") || arguments.Has("password-file");
}

// An option that is not of the destination's kind would be lost without a word.
void RefuseOtherOptions(const Arguments &arguments, Kind kind) {
    const std::span<const char *const> own = OptionsOf(kind);
    for (const char *option : {"command-line", "address", "port", "telephone", "user"}) {
        const bool is_own = std::ranges::any_of(
            own, [&](const char *other) { return std::strcmp(option, other) == 0; });
        if (arguments.Has(option) && !is_own) {
            Fail(EX_USAGE, std::string("--") + option + " is no option of this kind");
        }
    }
    for (const char *option : kPasswordOptions) {
        if (arguments.Has(option) && kind != Kind::kOutOfBand) {
            Fail(EX_USAGE, std::string("--") + option + " is no option of this kind");
        }
    }
}

void RequireOptions(const Arguments &arguments, Kind kind) {
    for (const char *option : OptionsOf(kind)) {
        if (!arguments.Has(option)) {
            Fail(EX_USAGE, std::string("--") + option + " is needed");
        }
    }
    if (kind == Kind::kOutOfBand && !HasPassword(arguments)) {
        Fail(EX_USAGE, "--password or --password-file is needed");
    }
}

void TakePassword(const Arguments &arguments, DEST_DATA *record) {
    if (arguments.Has("password") && arguments.Has("password-file")) {
        Fail(EX_USAGE, "--password and --password-file exclude each other");
    }
    const Secret password = ReadSecret(arguments.GetOr("password-file", ""), "dial-up password",
                                       sizeof record->szPassWord - 1);
    const Secret stored(TerminalToStored(password.Text(), "the password"));
    settings::FillField(stored.Text(), "the password", record->szPassWord,
                        sizeof record->szPassWord);
}

void TakeOptions(const Arguments &arguments, DEST_DATA *record) {
    settings::TakeText(arguments, "command-line", record->szCommandLine);
    settings::TakeText(arguments, "address", record->szManagerIP);
    settings::TakeNumber(arguments, "port", 0, kHighestPort, &record->dwPortNumber);
    settings::TakeText(arguments, "telephone", record->szTelNo);
    settings::TakeText(arguments, "user", record->szUserName);
    settings::TakeNumber(arguments, "schedule", 0, UINT32_MAX, &record->dwSchedule);
    settings::TakeNumber(arguments, "retry-count", 0, UINT32_MAX, &record->dwRetryCount);
    settings::TakeNumber(arguments, "retry-interval", 0, UINT32_MAX, &record->dwRetryInterval);
    if (HasPassword(arguments)) {
        TakePassword(arguments, record);
    }
}

// The record as it must come back. The kinds' names are stored in a spelling of their own.
Json Wanted(const DEST_DATA &record, const DEST_DATA &stored) {
    Json wanted = AsJson(record, Secrets::kShown);
    if (Folded(record.szMethod) == Folded(stored.szMethod)) {
        wanted["method"] = settings::FromStored(stored.szMethod);
    }
    return wanted;
}

Record Store(DEST_DATA *record) {
    const std::string id = record->szDestID;
    switch (SetDestSetting(record)) {
        case 0:
            break;
        case -2:
            Fail(EX_TEMPFAIL, StoredToTerminal(id) + ": it was deleted meanwhile");
        case -3:
            Fail(EX_CANTCREAT, StoredToTerminal(id) + ": the destination exists");
        default:
            Fail(EX_SOFTWARE, StoredToTerminal(id) + ": refused; see the trace with --verbose");
    }
    auto stored = std::make_unique<DEST_DATA>();
    settings::FillField(id, "the id", stored->szDestID, sizeof stored->szDestID);
    (void)GetDestSetting(stored.get());
    settings::RequireStored(Wanted(*record, *stored), AsJson(*stored, Secrets::kShown),
                            settings::FromStored(id.c_str()));
    return stored;
}

}  // namespace

int RunAdd(const Arguments &arguments) {
    auto record = std::make_unique<DEST_DATA>();
    const std::string id = IdAsked(arguments);
    const Kind kind = KindNamed(arguments.Get("KIND"));
    RefuseOtherOptions(arguments, kind);
    RequireOptions(arguments, kind);
    if (KeyExists(Below(AM_KEY_ID_LIST, id))) {
        Fail(EX_CANTCREAT, StoredToTerminal(id) + ": the destination exists");
    }
    record->nAction = DEST_ACTION_ADD;
    settings::FillField(id, "the id", record->szDestID, sizeof record->szDestID);
    settings::FillField(MethodOf(kind), "the kind", record->szMethod, sizeof record->szMethod);
    record->dwSchedule = 0xFFFFFF;
    record->dwRetryCount = 3;
    record->dwRetryInterval = 5;
    TakeOptions(arguments, record.get());
    const Record stored = Store(record.get());
    if (arguments.Has("json")) {
        settings::ShowRecord(arguments, AsJson(*stored, Secrets::kHidden));
    } else {
        settings::ReportDone(arguments, "added", {settings::FromStored(id.c_str())});
    }
    return EX_OK;
}

int RunModify(const Arguments &arguments) {
    const std::string id = IdAsked(arguments);
    const Record record = Read(id);
    const auto before = std::make_unique<DEST_DATA>(*record);
    const Kind kind = KindOf(*record);
    if (kind == Kind::kOther) {
        Fail(EX_USAGE, StoredToTerminal(id) + ": a destination of the method \"" +
                           StoredToTerminal(record->szMethod) +
                           "\" is not changed here; see \"veloxctl mail-dest\"");
    }
    RefuseOtherOptions(arguments, kind);
    record->nAction = DEST_ACTION_MODIFY;
    TakeOptions(arguments, record.get());
    Json old = AsJson(*before, Secrets::kHidden);
    Json now = AsJson(*Store(record.get()), Secrets::kHidden);
    if (std::strcmp(before->szPassWord, record->szPassWord) != 0) {
        now["password_state"] = record->szPassWord[0] == '\0' ? "empty" : "another one";
    }
    settings::ReportChanges(arguments, settings::FromStored(id.c_str()), old, now);
    return EX_OK;
}

int RunDelete(const Arguments &arguments) {
    auto record = std::make_unique<DEST_DATA>();
    const std::string id = IdAsked(arguments);
    const std::string path = Below(AM_KEY_ID_LIST, id);
    if (Folded(path) == Folded(AM_KEY_VELOXREPORT) && !arguments.Has("force")) {
        Fail(EX_USAGE, StoredToTerminal(id) +
                           ": without it no Velox report goes out; -f deletes it all the same");
    }
    if (!KeyExists(path)) {
        Fail(EX_NOINPUT, StoredToTerminal(id) + ": there is no such destination");
    }
    record->nAction = DEST_ACTION_DELETE;
    settings::FillField(id, "the id", record->szDestID, sizeof record->szDestID);
    (void)SetDestSetting(record.get());
    settings::RequireStored(false, KeyExists(path), settings::FromStored(id.c_str()));
    settings::ReportDone(arguments, "deleted", {settings::FromStored(id.c_str())});
    return EX_OK;
}

}  // namespace veloxctl::dest
