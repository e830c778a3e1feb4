// What the groups for the alert manager's settings share: records as JSON objects that are shown,
// compared and reported the same way everywhere, and options with the limits of a record's fields.
//
// Conventions
//  1. A record is a JSON object whose names are the fields' names in the output; texts are UTF-8.
//     The output for people is made from it too.
//  2. "Stored" texts are as the registry holds them.
#ifndef VELOXCTL_SETTINGS_FIELDS_H
#define VELOXCTL_SETTINGS_FIELDS_H

#include <regfile/regfile.h>

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "arguments.h"

namespace veloxctl::settings {

using Json = nlohmann::ordered_json;

// ---- Showing ------------------------------------------------------------------------------------

// A stored text for a record.
Json FromStored(const char *stored);

// One line a field.
void PrintRecord(const Json &record);

// One line a record under a line of titles, which are the fields' names.
void PrintTable(const Json &records, std::span<const char *const> fields);

// The record or the list in the form that is asked for.
void ShowRecord(const Arguments &arguments, const Json &record);
void ShowTable(const Arguments &arguments, const Json &records,
               std::span<const char *const> fields);

// Says which fields of the record differ from what they were.
void ReportChanges(const Arguments &arguments, const std::string &name, const Json &before,
                   const Json &after);

// Says that something was, for example, "deleted". The names are UTF-8.
void ReportDone(const Arguments &arguments, const char *deed,
                const std::vector<std::string> &names);

// ---- Options ------------------------------------------------------------------------------------

// The number of an option, which was given.
std::uint32_t NumberOf(const Arguments &arguments, const char *option, std::uint32_t lowest,
                       std::uint32_t highest);

// The same into *number when the option was given; false when it was not.
bool TakeNumber(const Arguments &arguments, const char *option, std::uint32_t lowest,
                std::uint32_t highest, std::uint32_t *number);

// Copies a text into a field. Fails (EX_DATAERR) when it does not fit with its terminator.
void FillField(const std::string &stored, const char *what, char *field, std::size_t capacity);

// The text of an option, when it was given; false when it was not.
bool TakeText(const Arguments &arguments, const char *option, char *field, std::size_t capacity);

template <std::size_t N>
bool TakeText(const Arguments &arguments, const char *option, char (&field)[N]) {
    return TakeText(arguments, option, field, N);
}

// A word of the command line that is the name of one key, as stored: not empty, without backslash
// and within the limit. Fails (EX_USAGE) otherwise.
std::string NameOf(const std::string &word, const char *what);

// ---- Writing ------------------------------------------------------------------------------------

// The making of a key, or the deletion of one with everything below it.
regfile::Change KeyChange(regfile::Change::Kind kind, const std::string &path);

// Fails when the record is not what it was to become: the settings functions do not tell when the
// registry refuses a value.
void RequireStored(const Json &wanted, const Json &stored, const std::string &name);

// Fails because the registry refused what was to be stored.
[[noreturn]] void FailToStore(const char *what);

}  // namespace veloxctl::settings

#endif  // VELOXCTL_SETTINGS_FIELDS_H
