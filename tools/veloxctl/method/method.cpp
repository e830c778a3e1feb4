// "veloxctl method".
#include "method/method.h"

#include <registry/keys.h>
#include <velox/mail_report.h>
#include <velox/report_method.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "failure.h"
#include "groups.h"
#include "registry.h"
#include "settings/fields.h"
#include "terminal.h"

namespace veloxctl {

namespace method {

namespace {

using settings::Json;

constexpr char kMethodKey[] = AM_KEY_REPORT "\\VELOXREPORT\\SETTING";
constexpr char kMethodValue[] = "SelectedMethod";
constexpr char kSetupKey[] = VLX_KEY_SETUP;
constexpr char kSetupValue[] = "SETTING";

// By the method's number.
constexpr const char *kNames[] = {"mail", "dial-up", "manager"};

// What is stored in place of a method, in words.
std::string StoredInstead() {
    const auto value = ReadValue(kMethodKey, kMethodValue);
    if (!value) {
        return "missing";
    }
    const std::string text(value->data.begin(), value->data.end());
    return "\"" + StoredToTerminal(text.substr(0, text.find('\0'))) + "\", which is no method";
}

// Null when it is missing.
Json SetupState() {
    const auto value = ReadValue(kSetupKey, kSetupValue);
    DWORD state = 0;
    if (!value || value->data.size() != sizeof state) {
        return nullptr;
    }
    std::memcpy(&state, value->data.data(), sizeof state);
    return state;
}

Json OpeningStates() {
    return {{"setup", SetupState()}, {"opening", GetEOpening()}};
}

int RunShow(const Arguments &arguments) {
    Json record = {{"method", NameOf(Selected())}};
    record.update(OpeningStates());
    settings::ShowRecord(arguments, record);
    return EX_OK;
}

DWORD MethodAsked(const Arguments &arguments) {
    const std::string &word = arguments.Get("METHOD");
    const auto *found = std::ranges::find(kNames, word);
    if (found == std::end(kNames)) {
        Fail(EX_USAGE, "method set: \"" + word +
                           "\" is no method; there are mail, dial-up and "
                           "manager");
    }
    return static_cast<DWORD>(found - std::begin(kNames));
}

// The method now, or what stands in its place.
Json MethodStored() {
    DWORD method = 0;
    return {{"method", AMGetVlxMethod(&method) == 0 ? NameOf(method) : "none"}};
}

int RunSet(const Arguments &arguments) {
    const DWORD method = MethodAsked(arguments);
    (void)ReadExistingKey(kMethodKey);
    const Json before = MethodStored();
    if (AMSetVlxMethod(method) != 0) {
        settings::FailToStore("the report method");
    }
    settings::ReportChanges(arguments, "report", before, MethodStored());
    return EX_OK;
}

int RunReset(const Arguments &arguments) {
    if (SetupState().is_null()) {
        Fail(EX_CONFIG, std::string(kSetupValue) + " of " + ShownKey(kSetupKey) + " is missing");
    }
    const Json before = OpeningStates();
    if (AMResetOpenSet() != 0) {
        settings::FailToStore("the opening state");
    }
    settings::ReportChanges(arguments, "report", before, OpeningStates());
    return EX_OK;
}

constexpr Operand kSetOperands[] = {{.name = "METHOD", .summary = "mail, dial-up or manager"}};
constexpr Option kOptions[] = {kJsonOption};
constexpr Example kSetExamples[] = {
    {.command = "veloxctl method set manager",
     .effect = "Has reports handed to the management server."},
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the method and the opening state",
     .description = "Shows the method by which reports go out, and how far the service's opening "
                    "got: the set-up state (SETTING, 1 after a successful test report) and the "
                    "opening state (EOpening: 1 the opening report was sent, 2 a test report).",
     .options = kOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "selects the method",
     .description = "Selects the method by which reports go out: by internet mail, over a dial-up "
                    "connection, or handed to a management server (\"veloxctl manager\").",
     .operands = kSetOperands,
     .options = kOptions,
     .examples = kSetExamples,
     .run = RunSet},
    {.name = "reset",
     .summary = "resets the opening state",
     .description = "Brings the set-up state and the opening state back to 0, as before the first "
                    "report.",
     .options = kOptions,
     .run = RunReset},
};

}  // namespace

DWORD Selected() {
    DWORD method = 0;
    if (AMGetVlxMethod(&method) != 0) {
        Fail(EX_CONFIG, "the report method is " + StoredInstead() +
                            "; select one with \"veloxctl method set\"");
    }
    return method;
}

const char *NameOf(DWORD method) {
    return kNames[method];
}

}  // namespace method

extern const Group kMethodGroup = {.name = "method",
                                   .summary = "shows and selects the report method",
                                   .commands = method::kCommands};

}  // namespace veloxctl
