// Reading one event.
#include <ntwin32/system.h>

#include <initializer_list>

#include "event_table.h"
#include "key_values.h"
#include "registry/catalogue.h"
#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

// What a missing value reads as. The action lies outside what the writers accept.
void PresetFields(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept {
    *fields.lpnDestIDCount = 0;
    *fields.lpnAction = 3;
    *fields.lpObstacleKind = 2;
    *fields.lpAliveLevel = 3;
    (void)CopyText(fields.lpszTrapName, EVENT_TRAPNAME_CAPACITY, table.szNoTrapName);
    for (char *lpszText : {fields.lpszRecoveryAction, fields.lpszKeyWord}) {
        if (lpszText != nullptr) {
            lpszText[0] = '\0';
        }
    }
    for (DWORD *lpdwNumber :
         {fields.lpdwSystemDefined, fields.lpdwReportCount, fields.lpdwWatchTime}) {
        if (lpdwNumber != nullptr) {
            *lpdwNumber = 0;
        }
    }
}

// As many links as the record has buffers for; further ones are not listed.
void ReadLinks(const KEYPATH &event, const EVENT_FIELDS &fields) noexcept {
    DWORD dwBuffers = 0;
    while (dwBuffers < EVENT_MAX_DEST && fields.lplpszDestID[dwBuffers] != nullptr) {
        ++dwBuffers;
    }
    (void)ListSubKeys(LinksPath(event), fields.lplpszDestID, dwBuffers, fields.lpnDestIDCount);
}

bool ReadEventSetting(const EVENT_TABLE &table, const KEYPATH &event,
                      const EVENT_FIELDS &fields) noexcept {
    AutoRegKey key;
    if (!OpenEventKey(table.get.szFunction, event, "EVENTSETTING", KEY_ALL_ACCESS, &key)) {
        return false;
    }
    QueryNumber(key.Get(), "ACTION", fields.lpnAction);
    QueryNumber(key.Get(), "OBSTACLEKIND", fields.lpObstacleKind);
    QueryNumber(key.Get(), "ALIVELEVEL", fields.lpAliveLevel);
    if (fields.lpdwSystemDefined != nullptr) {
        QueryNumber(key.Get(), "SYSTEMDEFINED", fields.lpdwSystemDefined);
    }
    QueryText(key.Get(), "TRAPNAME", fields.lpszTrapName, EVENT_TRAPNAME_CAPACITY);
    QueryText(key.Get(), "RECOVERYACTION", fields.lpszRecoveryAction, EVENT_RECOVERY_CAPACITY);
    return true;
}

// Chosen when the first text is there to be translated, and once for a whole table.
bool UseEventCatalogue(EVENT_CATALOGUE *lpCatalogue) noexcept {
    if (!lpCatalogue->bChosen) {
        lpCatalogue->bChosen = true;
        lpCatalogue->bTranslate = GetSystemDefaultLangID() == LANGID_JAPANESE;
        if (lpCatalogue->bTranslate) {
            UseCatalogue("ja_JP", CATALOGUE_REPORT_TABLE);
        }
    }
    return lpCatalogue->bTranslate;
}

// The empty message is the catalogue's own header, so that it is never looked up.
void Translate(char *lpszText, std::size_t dwCapacity) noexcept {
    if (lpszText[0] == '\0') {
        return;
    }
    const char *lpszTranslation = CatalogueText(lpszText);
    if (lpszTranslation != lpszText) {
        CutText(lpszText, dwCapacity, lpszTranslation);
    }
}

}  // namespace

int ReadEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields,
              EVENT_CATALOGUE *lpCatalogue) noexcept {
    TRACE_AS(table.get.szFunction, TRACE_NOTE, table.get.szEntry, fields.lpRecord);
    const KEYPATH event = NamePath(SourcePath(table, fields.lpszSourceName), fields.lpszEventID);
    PresetFields(table, fields);
    ReadLinks(event, fields);
    if (!ReadEventSetting(table, event, fields)) {
        return -1;
    }
    if (UseEventCatalogue(lpCatalogue)) {
        Translate(fields.lpszTrapName, EVENT_TRAPNAME_CAPACITY);
        Translate(fields.lpszRecoveryAction, EVENT_RECOVERY_CAPACITY);
    }
    if (table.pfnReadMore != nullptr && !table.pfnReadMore(event, fields)) {
        return -1;
    }
    TRACE_AS(table.get.szFunction, TRACE_NOTE, "<return 0.");
    return 0;
}

int GetEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept {
    EVENT_CATALOGUE catalogue;
    return ReadEvent(table, fields, &catalogue);
}
