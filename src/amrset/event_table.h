// The event tables: sources with events, each with its settings and its links to destinations. Both
// tables, the agent's and the system log's, run through the functions below; an EVENT_TABLE says
// what is one table's own: its key, its record, its trace texts, and the steps that only it has.
#ifndef AMRSET_EVENT_TABLE_H
#define AMRSET_EVENT_TABLE_H

#include <records/event_data.h>

#include "blocks.h"
#include "key_path.h"
#include "registry/keys.h"

// The fields of a record, wherever they stand in it.
struct EVENT_FIELDS {
    void *lpRecord;  // for traces only
    char *lpszSourceName;
    char *lpszEventID;
    char **lplpszDestID;
    DWORD *lpnDestIDCount;
    DWORD *lpnDestAction;
    DWORD *lpnAction;
    DWORD *lpObstacleKind;
    DWORD *lpAliveLevel;
    char *lpszTrapName;
    char *lpszRecoveryAction;
    // Null in the agent's record, which has none of them.
    DWORD *lpdwSystemDefined;
    char *lpszKeyWord;
    DWORD *lpdwReportCount;
    DWORD *lpdwWatchTime;
};

// What the listing of names claims: some lists of buffers, one of which receives the names.
struct NAME_LIST {
    BLOCK_TEXTS texts;
    std::size_t cbName;  // 0: only the array of pointers
};
struct NAME_LISTS {
    const NAME_LIST *lpLists;
    DWORD dwLists;
    DWORD dwNames;  // index of the list that receives the names
};

struct EVENT_TABLE {
    const char *szRoot;  // the key of the sources
    std::size_t cbRecord;
    EVENT_FIELDS (*pfnFields)(void *lpRecord);
    const char *szNoTrapName;  // what a missing "TRAPNAME" reads as

    // Steps that only one table has, after those of the event's own key; null: none. They trace
    // their failure and give false.
    bool (*pfnReadMore)(const KEYPATH &event, const EVENT_FIELDS &fields);
    bool (*pfnWriteMore)(const KEYPATH &event, const EVENT_FIELDS &fields);

    struct {
        const char *szFunction;
        const char *szBadAction;
        const char *szBadObstacleKind;
        const char *szBadAliveLevel;
    } set;
    struct {
        const char *szFunction;
        const char *szNoDestination;
        const char *szNoSource;
        BLOCK_TEXTS names;
        const char *szExit;
    } setForSource;
    struct {
        const char *szFunction;
        const char *szEntry;
    } get;
    struct {
        const char *szFunction;
        NAME_LISTS sources;
        NAME_LISTS events;
        BLOCK_TEXTS records;
        const char *szNoDestID;  // for a destination buffer: index of the record, of the buffer
    } getAll;
};

// SetAgntSetting and its like without the entry and the exit of success: 0, -1 or -2.
[[nodiscard]] int SetEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields,
                           bool bWriteRecovery) noexcept;
// SetAgntDataForSN and its like without the entry: 0, -1 or -2.
[[nodiscard]] int SetEventsOfSource(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept;
// GetAgntSetting and its like: 0 or -1.
[[nodiscard]] int GetEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields) noexcept;

struct EVENT_LIST {
    void **lplpRecords;  // dwRecords pointers and a null pointer behind them: FreeEvents
    DWORD dwRecords;
    DWORD dwSources;
    DWORD dwMostEvents;  // of one source
};
// GetAllAgntSetting and its like without the entry: 0, or -1 with the list untouched.
[[nodiscard]] int GetAllEvents(const EVENT_TABLE &table, EVENT_LIST *lpList) noexcept;
void FreeEvents(const EVENT_TABLE &table, void **lplpRecords) noexcept;

// ---- For the functions above and the tables' own steps ------------------------------------------

inline KEYPATH SourcePath(const EVENT_TABLE &table, const char *lpszSourceName) noexcept {
    return NamePath(RootPath(table.szRoot), lpszSourceName);
}

inline KEYPATH LinksPath(const KEYPATH &event) noexcept {
    return SubPath(event, AM_KEY_EVENT_LINKS);
}

// Opens the key szKey of an event; traces its failure as the function szFunction.
[[nodiscard]] bool OpenEventKey(const char *szFunction, const KEYPATH &event, const char *szKey,
                                REGSAM samDesired, AutoRegKey *lpKey) noexcept;

// Whether texts are translated. Each reading of a record asks the system anew, that of a table
// once.
struct EVENT_CATALOGUE {
    bool bChosen = false;
    bool bTranslate = false;
};
// GetEvent for one event of many.
int ReadEvent(const EVENT_TABLE &table, const EVENT_FIELDS &fields,
              EVENT_CATALOGUE *lpCatalogue) noexcept;

#endif  // AMRSET_EVENT_TABLE_H
