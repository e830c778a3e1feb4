// The commands of "veloxctl dest", and the destinations that they show and change.
#ifndef VELOXCTL_DEST_COMMANDS_H
#define VELOXCTL_DEST_COMMANDS_H

#include <records/destination_data.h>

#include <memory>
#include <string>

#include "arguments.h"
#include "settings/fields.h"

namespace veloxctl::dest {

// A record is too large for the stack.
using Record = std::unique_ptr<DEST_DATA>;

// The kinds under the names that --kind takes.
enum class Kind { kCommand, kInBand, kOutOfBand, kSnmp, kOther };

Kind KindNamed(const std::string &name);
// What a destination's "METHOD" says.
Kind KindOf(const DEST_DATA &record);
// The text that stands for the kind in a record.
const char *MethodOf(Kind kind);

// The id of the command line.
std::string IdAsked(const Arguments &arguments);

// Nothing when there is no such destination.
Record Find(const std::string &id);
// Fails (EX_NOINPUT) when there is none, or when a part of it is missing.
Record Read(const std::string &id);

enum class Secrets { kHidden, kShown };
settings::Json AsJson(const DEST_DATA &record, Secrets secrets);

int RunList(const Arguments &arguments);
int RunShow(const Arguments &arguments);
int RunAdd(const Arguments &arguments);
int RunModify(const Arguments &arguments);
int RunDelete(const Arguments &arguments);

}  // namespace veloxctl::dest

#endif  // VELOXCTL_DEST_COMMANDS_H
