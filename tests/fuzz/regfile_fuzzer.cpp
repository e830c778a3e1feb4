// .reg text: no input may crash the reader, and what it read must survive the writer.
#include <regfile/regfile.h>

#include <cstdlib>

namespace {

// Writes a change as the writer would and expects the reader to give it back.
void CheckRoundTrip(const regfile::Change &change) {
    const regfile::Value value = {change.name, change.type, change.data};
    std::vector<regfile::Change> changes;
    regfile::Problem problem;
    const std::string text = regfile::FormatHeader() + regfile::FormatKey(*change.path, {value});
    if (!regfile::Parse(text, &changes, &problem) || changes.size() != 2 ||
        *changes[1].path != *change.path || changes[1].name != change.name ||
        changes[1].type != change.type || changes[1].data != change.data) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::vector<regfile::Change> changes;
    regfile::Problem problem;
    if (!regfile::Parse({reinterpret_cast<const char *>(data), size}, &changes, &problem)) {
        if (problem.line == 0 || problem.column == 0 || problem.cause.empty()) {
            std::abort();
        }
        return 0;
    }
    for (const regfile::Change &change : changes) {
        if (change.kind == regfile::Change::Kind::kSetValue) {
            CheckRoundTrip(change);
        }
    }
    return 0;
}
