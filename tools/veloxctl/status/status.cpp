// "veloxctl status".
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <regfile/text.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <nlohmann/json.hpp>

#include "arguments.h"
#include "failure.h"
#include "files.h"
#include "groups.h"
#include "registry.h"
#include "status/import_log.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl {

namespace {

using Json = nlohmann::ordered_json;
using status::LoggedImport;

constexpr std::size_t kMaxLogBytes = std::size_t{64} << 20;

struct Status {
    LONG server_error = ERROR_SUCCESS;
    KES_REG_SERVER_INFO server = {};
    std::optional<LoggedImport> last_import;
    std::string log_problem;  // why the log could not be read
};

// The newest two files of the log, as one text; a run may begin in the older one.
std::optional<LoggedImport> ReadLastImport() {
    char state[PATH_MAX];
    if (GetKesStatePath(state, sizeof(state)) == FALSE) {
        Fail(EX_CONFIG, "KES_STATE is no absolute path");
    }
    const std::string path = std::string(state) + "/log/vlxfd.log";
    std::string log;
    for (const std::string &file : {path + ".1", path}) {
        if (access(file.c_str(), F_OK) == 0) {
            log += ReadFile(file, kMaxLogBytes);
        } else if (errno != ENOENT && errno != ENOTDIR) {
            FailSystem(file, errno);
        }
    }
    return status::LastImport(log);
}

Json ServerAsJson(const Status &now) {
    if (now.server_error != ERROR_SUCCESS) {
        return {{"running", false}, {"reason", RegistryErrorText(now.server_error)}};
    }
    return {{"running", true},
            {"version", now.server.szVersion},
            {"process", now.server.dwProcessId},
            {"clients", now.server.dwClients},
            {"store", now.server.szStore},
            {"format", now.server.qwFormat},
            {"bytes", now.server.qwStoreBytes},
            {"keys", now.server.qwKeys},
            {"values", now.server.qwValues}};
}

Json ImportAsJson(const std::optional<LoggedImport> &run) {
    if (!run) {
        return nullptr;
    }
    Json json = {{"time", run->time}, {"outcome", OutcomeOf(*run)}, {"status", nullptr}};
    if (run->result) {
        json["status"] = *run->result;
    }
    if (run->failure) {
        json["failure"] = {{"source", run->failure->source},
                           {"function", run->failure->function},
                           {"text", regfile::NameToUtf8(run->failure->text)}};
    }
    return json;
}

void PrintServer(const Status &now) {
    if (now.server_error != ERROR_SUCCESS) {
        Print("Registry server: " + RegistryErrorText(now.server_error) + "\n");
        return;
    }
    const KES_REG_SERVER_INFO &server = now.server;
    Print("Registry server: running, version " + Utf8ToTerminal(server.szVersion) + ", process " +
          std::to_string(server.dwProcessId) + ", clients: " + std::to_string(server.dwClients) +
          "\n");
    Print("Store:           " + Utf8ToTerminal(server.szStore) + ", format " +
          std::to_string(server.qwFormat) + ", " + std::to_string(server.qwStoreBytes) +
          " bytes\n");
    Print("Content:         keys: " + std::to_string(server.qwKeys) +
          ", values: " + std::to_string(server.qwValues) + "\n");
}

void PrintImport(const Status &now) {
    const std::optional<LoggedImport> &run = now.last_import;
    if (!run) {
        Print("Last import:     " +
              (now.log_problem.empty() ? "none is in the log of vlxfd" : now.log_problem) + "\n");
        return;
    }
    Print("Last import:     " + Utf8ToTerminal(run->time) + ", " + OutcomeOf(*run) + "\n");
    if (run->failure) {
        Print("First failure:   " + StoredToTerminal(run->failure->text) + " (" +
              Utf8ToTerminal(run->failure->source) + ", " + Utf8ToTerminal(run->failure->function) +
              ")\n");
    }
}

int RunStatus(const Arguments &arguments) {
    Status now;
    now.server_error = KesRegQueryServer(&now.server);
    try {
        now.last_import = ReadLastImport();
    } catch (const Failure &failure) {
        now.log_problem = failure.message;
    }
    if (arguments.Has("json")) {
        PrintJson({{"server", ServerAsJson(now)}, {"last_import", ImportAsJson(now.last_import)}});
    } else {
        PrintServer(now);
        PrintImport(now);
    }
    return now.server_error == ERROR_SUCCESS ? EX_OK : RegistryErrorStatus(now.server_error);
}

constexpr Option kOptions[] = {kJsonOption};

constexpr Command kCommands[] = {
    {.summary = "tells about the registry server and the last import",
     .description =
         "Tells whether the registry server is running, its version and store, how many keys and "
         "values it holds, and what became of the last run of vlxfd, from the log of vlxfd. The "
         "exit status is 69 when the server is not running.",
     .options = kOptions,
     .run = RunStatus},
};

}  // namespace

extern const Group kStatusGroup = {.name = "status",
                                   .summary = "tells about the registry server and the last import",
                                   .commands = kCommands};

}  // namespace veloxctl
