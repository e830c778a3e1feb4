// Writing one event, and linking all events of a source.
#include "destination_kinds.h"
#include "event_table.h"
#include "key_values.h"
#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr std::size_t NAME_CAPACITY = 1024;

// A link is made only for an event that exists.
void ChangeLink(const KEYPATH &event, const char *lpszDestID, DWORD nDestAction) noexcept {
    const KEYPATH link = NamePath(LinksPath(event), lpszDestID);
    AutoRegKey key;
    if (nDestAction == EVENT_DEST_UNLINK) {
        (void)DeletePath(link);
    } else if (nDestAction == EVENT_DEST_LINK && OpenPath(event, KEY_READ, &key) == ERROR_SUCCESS) {
        (void)CreatePath(link, &key);
    }
}

bool CheckFields(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept {
    const char *szFault = nullptr;
    const DWORD dwKind = *fields.lpObstacleKind;
    if (*fields.lpnAction > 2) {
        szFault = table.set.szBadAction;
    } else if (dwKind == 0 || dwKind == 5 || dwKind > 6) {
        szFault = table.set.szBadObstacleKind;
    } else if (*fields.lpAliveLevel > 8) {
        szFault = table.set.szBadAliveLevel;
    }
    if (szFault != nullptr) {
        TRACE_AS(table.set.szFunction, TRACE_FAILURE, "%s", szFault);
    }
    return szFault == nullptr;
}

bool WriteEventSetting(const EVENT_TABLE &table, const KEYPATH &event, const EVENT_FIELDS &fields,
                       bool bWriteRecovery) noexcept {
    AutoRegKey key;
    if (!OpenEventKey(table.set.szFunction, event, "EVENTSETTING", KEY_READ, &key)) {
        return false;
    }
    SetNumber(key.Get(), "ACTION", *fields.lpnAction);
    SetNumber(key.Get(), "OBSTACLEKIND", *fields.lpObstacleKind);
    SetNumber(key.Get(), "ALIVELEVEL", *fields.lpAliveLevel);
    if (bWriteRecovery) {
        SetText(key.Get(), "RECOVERYACTION", fields.lpszRecoveryAction, EVENT_RECOVERY_CAPACITY);
    }
    return true;
}

// Needs the event's list of links, which is not created here.
bool LinkListedEvent(const KEYPATH &event, const char *lpszDestID) noexcept {
    AutoRegKey links;
    AutoRegKey link;
    return OpenPath(LinksPath(event), KEY_ALL_ACCESS, &links) == ERROR_SUCCESS &&
           CreatePath(NamePath(LinksPath(event), lpszDestID), &link) == ERROR_SUCCESS;
}

// Any action but linking unlinks here.
bool ChangeListedEvent(const KEYPATH &source, const char *lpszEventID,
                       const EVENT_FIELDS &fields) noexcept {
    const KEYPATH event = NamePath(source, lpszEventID);
    if (*fields.lpnDestAction != EVENT_DEST_LINK) {
        (void)DeletePath(NamePath(LinksPath(event), fields.lplpszDestID[0]));
        return true;
    }
    (void)CopyText(fields.lpszEventID, EVENT_NAME_CAPACITY, lpszEventID);
    return LinkListedEvent(event, fields.lplpszDestID[0]);
}

}  // namespace

bool OpenEventKey(const char *szFunction, const KEYPATH &event, const char *szKey,
                  REGSAM samDesired, AutoRegKey *lpKey) noexcept {
    const KEYPATH path = SubPath(event, szKey);
    if (OpenPath(path, samDesired, lpKey) != ERROR_SUCCESS) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.", path.szText);
        return false;
    }
    return true;
}

int SetEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields, bool bWriteRecovery) noexcept {
    const char *lpszDestID = fields.lplpszDestID[0];
    const KEYPATH destination = DestinationPath(lpszDestID);
    if (!DestinationOpens(destination)) {
        TRACE_AS(table.set.szFunction, TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -2.",
                 destination.szText);
        return -2;
    }
    const KEYPATH event = NamePath(SourcePath(table, fields.lpszSourceName), fields.lpszEventID);
    ChangeLink(event, lpszDestID, *fields.lpnDestAction);
    const bool bWritten = CheckFields(table, fields) &&
                          WriteEventSetting(table, event, fields, bWriteRecovery) &&
                          (table.pfnWriteMore == nullptr || table.pfnWriteMore(event, fields));
    return bWritten ? 0 : -1;
}

int SetEventsOfSource(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept {
    const auto &texts = table.setForSource;
    const KEYPATH destination = DestinationPath(fields.lplpszDestID[0]);
    if (!DestinationOpens(destination)) {
        TRACE_AS(texts.szFunction, TRACE_FAILURE, texts.szNoDestination, destination.szText);
        return -1;
    }
    const KEYPATH source = SourcePath(table, fields.lpszSourceName);
    const LONG lEvents = CountSubKeys(source);
    if (lEvents == -1) {
        TRACE_AS(texts.szFunction, TRACE_FAILURE, "%s", texts.szNoSource);
        return -2;
    }
    const auto dwEvents = static_cast<DWORD>(lEvents);
    const AutoBlocks<char> names(
        AllocateBlocks<char>(texts.szFunction, texts.names, dwEvents + 1, NAME_CAPACITY));
    if (!names.IsValid()) {
        return -1;
    }
    DWORD dwListed = 0;
    (void)ListSubKeys(source, names.Get(), dwEvents, &dwListed);
    int nResult = 0;
    for (DWORD i = 0; i < dwListed; ++i) {
        if (!ChangeListedEvent(source, names.Get()[i], fields)) {
            nResult = -1;
        }
    }
    TRACE_AS(texts.szFunction, TRACE_NOTE, texts.szExit, nResult);
    return nResult;
}
