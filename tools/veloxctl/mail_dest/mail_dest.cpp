// "veloxctl mail-dest": where the Velox report goes by mail. Only what is given is stored, in one
// transaction, so that a subject that is missing stays the catalogue's.
#include <ntwin32/registry.h>
#include <records/schedule.h>
#include <registry/keys.h>
#include <velox/mail_destination.h>
#include <velox/mail_report.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "failure.h"
#include "groups.h"
#include "registry.h"
#include "settings/fields.h"
#include "settings/plan.h"
#include "terminal.h"

namespace veloxctl {

namespace {

using settings::Json;
using settings::Plan;

constexpr char kAddress[] = AM_KEY_VELOXREPORT "\\Address";
constexpr char kSchedule[] = AM_KEY_VELOXREPORT "\\SCHEDULE";

// ---- Reading ------------------------------------------------------------------------------------

Json StoredText(const char *path, const char *name) {
    const auto value = ReadValue(path, name);
    if (!value || value->type != REG_SZ) {
        return nullptr;
    }
    return settings::FromStored(std::string(value->data.begin(), value->data.end()).c_str());
}

Json StoredNumber(const char *path, const char *name) {
    const auto value = ReadValue(path, name);
    DWORD number = 0;
    if (!value || value->type != REG_DWORD || value->data.size() != sizeof number) {
        return nullptr;
    }
    std::memcpy(&number, value->data.data(), sizeof number);
    return number;
}

Json ReadAll() {
    (void)ReadExistingKey(AM_KEY_VELOXREPORT);
    return {{"to", StoredText(kAddress, "ETo")},
            {"subject", StoredText(kAddress, "ESubject")},
            {"report_level", StoredNumber(kAddress, "EReportLevel")},
            {"opening_state", StoredNumber(kAddress, "EOpening")},
            {"schedule", StoredNumber(kSchedule, "PARAM0")},
            {"retry_count", StoredNumber(kSchedule, "RETRYCOUNT")},
            {"retry_interval", StoredNumber(kSchedule, "RETRYINTERVAL")}};
}

int RunShow(const Arguments &arguments) {
    settings::ShowRecord(arguments, ReadAll());
    return EX_OK;
}

// ---- Writing ------------------------------------------------------------------------------------

// What the sending of a report would refuse is refused here.
void CheckAddress(const std::string &address) {
    if (address.size() > VX_DESTINATION_LENGTH) {
        Fail(EX_DATAERR, "the address " + address + " is longer than " +
                             std::to_string(VX_DESTINATION_LENGTH) + " characters");
    }
    if (!std::ranges::all_of(address, [](char c) { return c > 0x20 && c < 0x7F; }) ||
        address.find_first_of("<>") != std::string::npos ||
        address.find('@') == std::string::npos) {
        Fail(EX_DATAERR, "\"" + address + "\": an address such as name@host.example is wanted");
    }
}

std::string AddressList(const Arguments &arguments) {
    std::string list;
    for (const std::string &address : arguments.All("to")) {
        CheckAddress(address);
        list += (list.empty() ? "" : ",") + address;
    }
    if (arguments.All("to").size() > VX_DESTINATION_COUNT ||
        list.size() > VX_DESTINATION_LIST_LENGTH) {
        Fail(EX_DATAERR, "at most " + std::to_string(VX_DESTINATION_COUNT) + " addresses and " +
                             std::to_string(VX_DESTINATION_LIST_LENGTH) +
                             " characters are possible");
    }
    return list;
}

void PlanMail(const Arguments &arguments, Plan *plan) {
    char subject[VXML_DEST_TEXT_CAPACITY];
    DWORD level = 0;
    if (arguments.Has("to")) {
        const std::string list = AddressList(arguments);
        plan->SetText(kAddress, "ETo", list);
        plan->SetText(AM_KEY_VELOXREPORT, "Comment", "To: " + list);
    }
    if (settings::TakeText(arguments, "subject", subject)) {
        plan->SetText(kAddress, "ESubject", subject);
    }
    if (settings::TakeNumber(arguments, "level", 0, UINT32_MAX, &level)) {
        plan->SetNumber(kAddress, "EReportLevel", level);
    }
}

// One value of the schedule brings the others along, as every writer of a schedule does.
void PlanSchedule(const Arguments &arguments, const Json &before, Plan *plan) {
    const auto record = std::make_unique<DEST_DATA>();
    const auto former = [&](const char *name) {
        return before[name].is_null() ? DWORD{0} : before[name].get<DWORD>();
    };
    record->dwSchedule = former("schedule");
    record->dwRetryCount = former("retry_count");
    record->dwRetryInterval = former("retry_interval");
    bool given = settings::TakeNumber(arguments, "schedule", 0, UINT32_MAX, &record->dwSchedule);
    given |= settings::TakeNumber(arguments, "retry-count", 0, UINT32_MAX, &record->dwRetryCount);
    given |=
        settings::TakeNumber(arguments, "retry-interval", 0, UINT32_MAX, &record->dwRetryInterval);
    if (!given) {
        return;
    }
    SCHEDULE_VALUE values[SCHEDULE_VALUES];
    MakeScheduleValues(*record, values);
    for (const SCHEDULE_VALUE &value : values) {
        plan->SetNumber(kSchedule, value.szName, value.dwNumber);
    }
}

int RunSet(const Arguments &arguments) {
    const Json before = ReadAll();
    Plan plan;
    PlanMail(arguments, &plan);
    PlanSchedule(arguments, before, &plan);
    if (plan.IsEmpty()) {
        Fail(EX_USAGE, "nothing is to be set; see \"veloxctl mail-dest set --help\"");
    }
    plan.Apply();
    const Json after = ReadAll();
    settings::ReportChanges(arguments, "VELOXREPORT", before, after);
    if (arguments.Has("subject") &&
        TerminalToStored(arguments.Get("subject"), "the subject").size() > VX_SUBJECT_LENGTH) {
        Complain("stored; note: reports carry only the first " + std::to_string(VX_SUBJECT_LENGTH) +
                 " bytes of the subject");
    }
    return EX_OK;
}

constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.short_name = 't',
     .long_name = "to",
     .argument = "ADDRESS",
     .summary = "a mail address of the maintenance centre; given again, one more of them",
     .repeatable = true},
    {.short_name = 's',
     .long_name = "subject",
     .argument = "TEXT",
     .summary = "the subject of reports; a missing one is \"Velox Alert Notification\""},
    {.short_name = 'l',
     .long_name = "level",
     .argument = "NUMBER",
     .summary = "the report level; a missing one is 3"},
    {.long_name = "schedule", .argument = "BITS", .summary = "the schedule word, decimal or 0x..."},
    {.long_name = "retry-count",
     .argument = "NUMBER",
     .summary = "how often a report is tried again"},
    {.long_name = "retry-interval",
     .argument = "NUMBER",
     .summary = "the time between two attempts"},
    kJsonOption,
};
constexpr Example kSetExamples[] = {
    {.command = "veloxctl mail-dest set --to centre@example.com --to deputy@example.com",
     .effect = "Sends the Velox report to two addresses."},
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows addresses, subject, level and schedule",
     .description =
         "Shows where the Velox report goes by mail, and when. The opening state is 1 after a test "
         "report and 2 after an opening report have been sent.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "sets addresses, subject, level and schedule",
     .description = "Stores what is given, in one step; everything else stays as it is. Addresses "
                    "replace all former ones.",
     .options = kSetOptions,
     .examples = kSetExamples,
     .run = RunSet},
};

}  // namespace

extern const Group kMailDestGroup = {
    .name = "mail-dest",
    .summary = "shows and sets where the Velox report goes by mail",
    .commands = kCommands};

}  // namespace veloxctl
