// Reading destinations; "veloxctl dest list" and "veloxctl dest show".
#include <ntwin32/registry.h>
#include <registry/keys.h>
#include <velox/destination_setting.h>

#include <algorithm>
#include <iterator>

#include "dest/commands.h"
#include "failure.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::dest {

namespace {

using settings::FromStored;
using settings::Json;

struct KindRow {
    Kind kind;
    const char *name;
    const char *method;
};

constexpr KindRow kKinds[] = {
    {Kind::kCommand, "command", "RUN COMMAND"},
    {Kind::kInBand, "in-band", "MANAGER (TCP_IP IN-BAND)"},
    {Kind::kOutOfBand, "out-of-band", "MANAGER (TCP_IP OUT-OF-BAND)"},
    {Kind::kSnmp, "snmp", "MANAGER (SNMP)"},
};

void AddManager(const DEST_DATA &record, Json *json) {
    (*json)["address"] = FromStored(record.szManagerIP);
    (*json)["port"] = record.dwPortNumber;
}

void AddDialUp(const DEST_DATA &record, Secrets secrets, Json *json) {
    AddManager(record, json);
    (*json)["telephone"] = FromStored(record.szTelNo);
    (*json)["user"] = FromStored(record.szUserName);
    (*json)["password_state"] = record.szPassWord[0] == '\0' ? "empty" : "stored";
    if (secrets == Secrets::kShown) {
        (*json)["password"] = FromStored(record.szPassWord);
    }
}

}  // namespace

Kind KindNamed(const std::string &name) {
    const auto *found = std::ranges::find(kKinds, name, &KindRow::name);
    if (found == std::end(kKinds)) {
        Fail(EX_USAGE, "\"" + name + "\" is none of the kinds command, in-band, out-of-band, snmp");
    }
    return found->kind;
}

Kind KindOf(const DEST_DATA &record) {
    const auto *found = std::ranges::find_if(
        kKinds, [&](const KindRow &row) { return Folded(row.method) == Folded(record.szMethod); });
    return found == std::end(kKinds) ? Kind::kOther : found->kind;
}

const char *MethodOf(Kind kind) {
    return std::ranges::find(kKinds, kind, &KindRow::kind)->method;
}

std::string IdAsked(const Arguments &arguments) {
    return settings::NameOf(arguments.Get("ID"), "the id");
}

Record Find(const std::string &id) {
    return KeyExists(Below(AM_KEY_ID_LIST, id)) ? Read(id) : nullptr;
}

Record Read(const std::string &id) {
    auto record = std::make_unique<DEST_DATA>();
    settings::FillField(id, "the id", record->szDestID, sizeof record->szDestID);
    if (!KeyExists(Below(AM_KEY_ID_LIST, id))) {
        Fail(EX_NOINPUT, StoredToTerminal(id) + ": there is no such destination");
    }
    if (GetDestSetting(record.get()) != 0) {
        Fail(EX_NOINPUT, StoredToTerminal(id) + ": its keys are incomplete; delete it");
    }
    return record;
}

Json AsJson(const DEST_DATA &record, Secrets secrets) {
    Json json = {{"id", FromStored(record.szDestID)}, {"method", FromStored(record.szMethod)}};
    switch (KindOf(record)) {
        case Kind::kCommand:
            json["command_line"] = FromStored(record.szCommandLine);
            break;
        case Kind::kInBand:
            AddManager(record, &json);
            break;
        case Kind::kOutOfBand:
            AddDialUp(record, secrets, &json);
            break;
        case Kind::kSnmp:
        case Kind::kOther:
            break;
    }
    json["schedule"] = record.dwSchedule;
    json["retry_count"] = record.dwRetryCount;
    json["retry_interval"] = record.dwRetryInterval;
    return json;
}

int RunList(const Arguments &arguments) {
    std::vector<Record> records;
    std::vector<DEST_DATA *> pointers;
    DWORD filled = 0;
    LONG needed = static_cast<LONG>(ReadExistingKey(AM_KEY_ID_LIST).sub_keys.size());
    do {
        while (records.size() < static_cast<std::size_t>(needed)) {
            records.push_back(std::make_unique<DEST_DATA>());
            pointers.push_back(records.back().get());
        }
        needed =
            GetAllDestSettingBounded(pointers.data(), static_cast<DWORD>(pointers.size()), &filled);
    } while (needed > static_cast<LONG>(filled));
    Json list = Json::array();
    for (DWORD i = 0; i < filled; ++i) {
        if (records[i]->szDestID[0] != '\0') {  // empty: deleted while it was read
            list.push_back(AsJson(*records[i], Secrets::kHidden));
        }
    }
    constexpr const char *kFields[] = {"id", "method"};
    settings::ShowTable(arguments, list, kFields);
    return EX_OK;
}

int RunShow(const Arguments &arguments) {
    const Record record = Read(IdAsked(arguments));
    settings::ShowRecord(
        arguments,
        AsJson(*record, arguments.Has("show-secrets") ? Secrets::kShown : Secrets::kHidden));
    return EX_OK;
}

}  // namespace veloxctl::dest
