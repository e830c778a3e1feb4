// The events as the library's records hold them.
#include <registry/keys.h>
#include <velox/agent_setting.h>
#include <velox/syslog_setting.h>

#include <array>
#include <memory>

#include "event/events.h"

namespace veloxctl::event {

namespace {

// A record of either table with its destination buffers; too large for the stack.
template <typename Data>
struct Record {
    Record() {
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            data.lplpszDestID[i] = buffers[i].data();
        }
    }
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;

    Data data{};
    std::array<std::array<char, EVENT_DEST_CAPACITY>, EVENT_MAX_DEST> buffers{};
};

template <typename Data>
std::unique_ptr<Record<Data>> RecordOf(const Event &event) {
    auto record = std::make_unique<Record<Data>>();
    settings::FillField(event.source, "the source", record->data.szSourceName, EVENT_NAME_CAPACITY);
    settings::FillField(event.id, "the event", record->data.szEventID, EVENT_NAME_CAPACITY);
    return record;
}

void CopyWatch(const AGNT_DATA &, Event *) {}

void CopyWatch(const SYSLOG_DATA &data, Event *event) {
    event->watch = Watch{.keyword = data.szKeyWord,
                         .report_count = data.dwReportCount,
                         .watch_time = data.dwWatchTime,
                         .system_defined = data.dwSystemDefined == 1};
}

template <typename Data>
Event EventOf(const Data &data) {
    Event event;
    event.source = data.szSourceName;
    event.id = data.szEventID;
    event.links.assign(data.lplpszDestID, data.lplpszDestID + data.nDestIDCount);
    event.trap_name = data.szTrapName;
    event.recovery = data.szRecoveryAction;
    event.action = data.nAction;
    event.obstacle_kind = data.ObstacleKind;
    event.alive_level = data.AliveLevel;
    CopyWatch(data, &event);
    return event;
}

template <typename Data, auto Get>
bool ReadOne(Event *event) {
    const auto record = RecordOf<Data>(*event);
    if (Get(&record->data) != 0) {
        return false;
    }
    *event = EventOf(record->data);
    return true;
}

template <typename Data, auto GetAll, auto Free>
bool ReadAll(std::vector<Event> *events) {
    Data **list = nullptr;
    DWORD count = 0;
    DWORD sources = 0;
    DWORD most = 0;
    if (GetAll(&list, &count, &sources, &most) != 0) {
        return false;
    }
    const std::unique_ptr<Data *, decltype(Free)> owner(list, Free);
    for (DWORD i = 0; i < count; ++i) {
        events->push_back(EventOf(*list[i]));
    }
    return true;
}

void FillWatch(const Event &, AGNT_DATA *) {}

void FillWatch(const Event &event, SYSLOG_DATA *data) {
    data->dwReportCount = event.watch->report_count;
    data->dwWatchTime = event.watch->watch_time;
}

template <typename Data, auto Set>
bool Write(const Event &event, const std::string &destination, bool with_recovery) {
    constexpr DWORD kNoLinkIsChanged = 2;
    const auto record = RecordOf<Data>(event);
    Data &data = record->data;
    settings::FillField(destination, "the destination", data.lplpszDestID[0], EVENT_DEST_CAPACITY);
    settings::FillField(event.recovery, "the recovery text", data.szRecoveryAction,
                        EVENT_RECOVERY_CAPACITY);
    data.nDestAction = kNoLinkIsChanged;
    data.nAction = event.action;
    data.ObstacleKind = event.obstacle_kind;
    data.AliveLevel = event.alive_level;
    FillWatch(event, &data);
    return Set(&data, with_recovery ? 1 : 0) == 0;
}

}  // namespace

const EventTable kAgentTable = {AM_KEY_AGENT_SOURCES, ReadOne<AGNT_DATA, GetAgntSetting>,
                                ReadAll<AGNT_DATA, GetAllAgntSetting, &FreeAgntSettings>,
                                Write<AGNT_DATA, SetAgntSetting>};
const EventTable kSyslogTable = {AM_KEY_SYSLOG_SOURCES, ReadOne<SYSLOG_DATA, GetSyslogSetting>,
                                 ReadAll<SYSLOG_DATA, GetAllSyslogSetting, &FreeSyslogSettings>,
                                 Write<SYSLOG_DATA, SetSyslogSetting>};

}  // namespace veloxctl::event
