// "veloxctl queue list" and "veloxctl queue show".
#include <regfile/text.h>

#include <nlohmann/json.hpp>

#include "failure.h"
#include "queue/alert_lines.h"
#include "queue/commands.h"
#include "queue/folder.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::queue {

namespace {

using Json = nlohmann::ordered_json;
using queuestore::Entry;

// An alert, or what is wrong with its file.
struct Listed {
    std::string id;
    Entry entry;
    std::string problem;
};

std::vector<Listed> ReadAll() {
    std::vector<Listed> all;
    std::optional<queuestore::Queue> queue = OpenQueue();
    if (!queue) {
        return all;
    }
    for (const std::string &id : Ids(&*queue)) {
        Listed listed;
        listed.id = id;
        bool missing = false;
        // One that was delivered since the folder was read is simply no longer there.
        if (queue->Load(id, &listed.entry, &listed.problem, &missing) || !missing) {
            all.push_back(std::move(listed));
        }
    }
    return all;
}

Json AsJson(const Listed &listed) {
    if (!listed.problem.empty()) {
        return {{"id", listed.id}, {"problem", listed.problem}};
    }
    const Entry &entry = listed.entry;
    return {{"id", entry.id},
            {"queued", TimeStamp(entry.queued)},
            {"source", regfile::NameToUtf8(entry.item.source)},
            {"message", regfile::NameToUtf8(entry.item.message)},
            {"tries", entry.delivery.tries},
            {"last_try", TimeStamp(entry.delivery.last_try)},
            {"next_try", TimeStamp(entry.delivery.next_try)},
            {"reason", entry.delivery.reason}};
}

void PrintListed(const Listed &listed) {
    if (!listed.problem.empty()) {
        Print(listed.id + "  damaged: " + Utf8ToTerminal(listed.problem) + "\n");
        return;
    }
    const Entry &entry = listed.entry;
    Print(entry.id + "  " + StoredToTerminal(entry.item.source) + ": " +
          StoredToTerminal(entry.item.message) + "\n");
    if (entry.delivery.tries > 0) {
        Print("  tries: " + std::to_string(entry.delivery.tries) + ", last: " +
              TimeStamp(entry.delivery.last_try) + ", next: " + TimeStamp(entry.delivery.next_try) +
              "\n  " + Utf8ToTerminal(entry.delivery.reason) + "\n");
    }
}

Entry ReadOne(const std::string &id) {
    std::optional<queuestore::Queue> queue = OpenQueue();
    Entry entry;
    std::string problem;
    bool missing = true;
    if (!queue || !queuestore::IsId(id) || !queue->Load(id, &entry, &problem, &missing)) {
        if (missing || problem.empty()) {
            Fail(EX_NOINPUT, id + ": there is no such alert in the queue");
        }
        Fail(EX_DATAERR, Utf8ToTerminal(problem));
    }
    return entry;
}

void PrintLine(const char *label, const std::string &text) {
    Print(std::string(label) + text + "\n");
}

}  // namespace

int RunList(const Arguments &arguments) {
    const std::vector<Listed> all = ReadAll();
    if (arguments.Has("json")) {
        Json list = Json::array();
        for (const Listed &listed : all) {
            list.push_back(AsJson(listed));
        }
        PrintJson(list);
        return EX_OK;
    }
    for (const Listed &listed : all) {
        PrintListed(listed);
    }
    return EX_OK;
}

int RunShow(const Arguments &arguments) {
    const Entry entry = ReadOne(arguments.Get("ID"));
    if (arguments.Has("json")) {
        PrintJson(Json::parse(queuestore::Format(entry)));
        return EX_OK;
    }
    PrintLine("Id:          ", entry.id);
    PrintLine("Message-ID:  ", entry.message_id);
    PrintLine("Queued:      ", TimeStamp(entry.queued));
    PrintLine("Destination: ", StoredToTerminal(entry.item.destination));
    PrintLine("Tries:       ", std::to_string(entry.delivery.tries));
    PrintLine("Last try:    ", TimeStamp(entry.delivery.last_try));
    PrintLine("Next try:    ", TimeStamp(entry.delivery.next_try));
    PrintLine("Reason:      ", Utf8ToTerminal(entry.delivery.reason));
    for (const AlertLine &line : LinesOf(entry)) {
        Print(line.heading + "\n" + StoredToTerminal(line.value) + "\n");
    }
    return EX_OK;
}

}  // namespace veloxctl::queue
