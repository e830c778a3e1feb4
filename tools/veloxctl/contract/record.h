// Records of the contract data: fixed text fields, each a value of the contract's key.
//
// "set" stores what is given and nothing else, in one transaction: a record that was read and
// written back whole would store stand-ins (the computer's name) and lose texts that are too long
// to be read.
#ifndef VELOXCTL_CONTRACT_RECORD_H
#define VELOXCTL_CONTRACT_RECORD_H

#include <cstddef>
#include <span>

#include "arguments.h"
#include "settings/fields.h"
#include "settings/plan.h"

namespace veloxctl::contract {

using settings::Json;

struct Field {
    const char *name;    // in JSON
    const char *option;  // null: it comes from the key disk alone
    const char *value;   // in the registry
    std::size_t offset;  // in the record
    std::size_t size;    // the most that is read, with the terminator
};

// The fields of a record as they were read.
Json FieldsOf(const void *record, std::span<const Field> fields);

// Plans the fields that are given. Fails (EX_DATAERR), naming the option and the limit, on a text
// that does not fit or has no EUC-JP form.
void PlanFields(const Arguments &arguments, std::span<const Field> fields, settings::Plan *plan);

// The description of every "set" here.
inline constexpr char kSetDescription[] =
    "Stores what is given and leaves the rest, in one step. A text that does not fit its field, or "
    "has no EUC-JP form, is refused before anything is stored.";

// Shows what is read. Fails (EX_NOINPUT) without the contract's key, from which the library would
// read an empty record.
int Show(const Arguments &arguments, Json (*read)());

// Stores the plan and says what has changed. Fails (EX_USAGE) on an empty plan.
int Store(const Arguments &arguments, const char *name, const settings::Plan &plan, Json (*read)());

}  // namespace veloxctl::contract

#endif  // VELOXCTL_CONTRACT_RECORD_H
