// Reading a whole event table: a first pass counts the events and sizes the records, a second one
// fills them. What other programs add between the two is left out, what they remove is not counted.
#include <algorithm>

#include "event_table.h"
#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

// The lists of a NAME_LISTS while they are in use.
class NameBuffers {
  public:
    [[nodiscard]] bool Allocate(const char *szFunction, const NAME_LISTS &lists,
                                DWORD dwNames) noexcept {
        for (DWORD i = 0; i < lists.dwLists; ++i) {
            const NAME_LIST &list = lists.lpLists[i];
            const DWORD dwBuffers = list.cbName == 0 ? 0 : dwNames;
            m_aLists[i].Reset(AllocateBlocks<char>(szFunction, list.texts, dwBuffers, list.cbName));
            if (!m_aLists[i].IsValid()) {
                return false;
            }
        }
        m_dwNames = lists.dwNames;
        return true;
    }
    [[nodiscard]] char **Names() const noexcept { return m_aLists[m_dwNames].Get(); }

  private:
    AutoBlocks<char> m_aLists[3];
    DWORD m_dwNames = 0;
};

// What the reading of an event does not write to. The rest is left as it is until then: clearing
// the texts of many records whole takes time.
void PresetRecord(const EVENT_FIELDS &fields) noexcept {
    std::fill_n(fields.lplpszDestID, EVENT_MAX_DEST, nullptr);
    *fields.lpnDestAction = EVENT_DEST_UNLINK;
}

// A table's records lie in more memory than a cache holds. What the reading of an event writes to
// is therefore fetched ahead, while other events are read.
void PrefetchRecord(const EVENT_FIELDS &fields) noexcept {
    static constexpr DWORD POINTERS_A_LINE = 64 / sizeof(char *);
    const void *const lpFields[] = {
        fields.lpszSourceName, fields.lpszEventID,     fields.lpnDestIDCount,
        fields.lpnAction,      fields.lpszTrapName,    fields.lpszRecoveryAction,
        fields.lpszKeyWord,    fields.lpdwReportCount, fields.lpdwSystemDefined};
    for (const void *lpField : lpFields) {
        __builtin_prefetch(lpField, 1);
    }
    for (DWORD i = 0; i < EVENT_MAX_DEST; i += POINTERS_A_LINE) {
        __builtin_prefetch(fields.lplpszDestID + i);
    }
}

// The first buffers, as many as most events have links.
void PrefetchLinks(const EVENT_FIELDS &fields) noexcept {
    static constexpr DWORD USUAL_LINKS = 4;
    for (DWORD i = 0; i < USUAL_LINKS; ++i) {
        __builtin_prefetch(fields.lplpszDestID[i], 1);
    }
}

// The records while they are being filled.
class EventRecords {
  public:
    explicit EventRecords(const EVENT_TABLE &table) noexcept : m_table(table) {}
    EventRecords(const EventRecords &) = delete;
    EventRecords &operator=(const EventRecords &) = delete;
    ~EventRecords() { FreeEvents(m_table, m_lplpRecords); }

    [[nodiscard]] bool Allocate(DWORD dwRecords) noexcept {
        const auto &texts = m_table.getAll;
        m_lplpRecords =
            AllocateBlocks<void>(texts.szFunction, texts.records, dwRecords, m_table.cbRecord);
        m_dwCapacity = m_lplpRecords == nullptr ? 0 : dwRecords;
        for (DWORD i = 0; i < m_dwCapacity; ++i) {
            PresetRecord(m_table.pfnFields(m_lplpRecords[i]));
        }
        for (DWORD i = 0; i < m_dwCapacity; ++i) {
            if (!AllocateDestinations(i)) {
                return false;
            }
        }
        return m_lplpRecords != nullptr;
    }

    // Reads an event into the next record; false when there is none left.
    bool Add(const char *lpszSourceName, const char *lpszEventID) noexcept {
        if (m_dwUsed == m_dwCapacity) {
            return false;
        }
        const EVENT_FIELDS fields = m_table.pfnFields(m_lplpRecords[m_dwUsed++]);
        PrefetchNext();
        (void)CopyText(fields.lpszSourceName, EVENT_NAME_CAPACITY, lpszSourceName);
        (void)CopyText(fields.lpszEventID, EVENT_NAME_CAPACITY, lpszEventID);
        (void)ReadEvent(m_table, fields, &m_catalogue);
        return true;
    }

    // Gives up the records that were filled; the others are released.
    void Release(EVENT_LIST *lpList) noexcept {
        for (DWORD i = m_dwUsed; i < m_dwCapacity; ++i) {
            FreeEvent(m_table, m_lplpRecords[i]);
            m_lplpRecords[i] = nullptr;
        }
        lpList->lplpRecords = m_lplpRecords;
        lpList->dwRecords = m_dwUsed;
        m_lplpRecords = nullptr;
    }

    static void FreeEvent(const EVENT_TABLE &table, void *lpRecord) noexcept {
        char **lplpszDestID = table.pfnFields(lpRecord).lplpszDestID;
        for (DWORD i = 0; i < EVENT_MAX_DEST; ++i) {
            std::free(lplpszDestID[i]);
        }
        std::free(lpRecord);
    }

  private:
    // The pointers of a record must be there before what they point at can be fetched.
    void PrefetchNext() const noexcept {
        if (m_dwUsed + 1 < m_dwCapacity) {
            PrefetchRecord(m_table.pfnFields(m_lplpRecords[m_dwUsed + 1]));
        }
        if (m_dwUsed < m_dwCapacity) {
            PrefetchLinks(m_table.pfnFields(m_lplpRecords[m_dwUsed]));
        }
    }

    [[nodiscard]] bool AllocateDestinations(DWORD dwRecord) noexcept {
        char **lplpszDestID = m_table.pfnFields(m_lplpRecords[dwRecord]).lplpszDestID;
        for (DWORD i = 0; i < EVENT_MAX_DEST; ++i) {
            lplpszDestID[i] = AllocateText(EVENT_DEST_CAPACITY);
            if (lplpszDestID[i] == nullptr) {
                TRACE_AS(m_table.getAll.szFunction, TRACE_MEMORY, m_table.getAll.szNoDestID,
                         static_cast<int>(dwRecord), static_cast<int>(i));
                return false;
            }
        }
        return true;
    }

    const EVENT_TABLE &m_table;
    EVENT_CATALOGUE m_catalogue;
    void **m_lplpRecords = nullptr;
    DWORD m_dwCapacity = 0;
    DWORD m_dwUsed = 0;
};

// A source that cannot be counted has none.
DWORD CountEvents(const EVENT_TABLE &table, const char *lpszSourceName) noexcept {
    return static_cast<DWORD>(std::max(CountSubKeys(SourcePath(table, lpszSourceName)), LONG{0}));
}

DWORD CountAllEvents(const EVENT_TABLE &table, char **lplpszSources, DWORD dwSources) noexcept {
    DWORD dwTotal = 0;
    for (DWORD i = 0; i < dwSources; ++i) {
        dwTotal += CountEvents(table, lplpszSources[i]);
    }
    return dwTotal;
}

bool ReadSource(const EVENT_TABLE &table, const char *lpszSourceName, EventRecords *lpRecords,
                DWORD *lpdwMostEvents) noexcept {
    const DWORD dwEvents = CountEvents(table, lpszSourceName);
    NameBuffers events;
    if (!events.Allocate(table.getAll.szFunction, table.getAll.events, dwEvents)) {
        return false;
    }
    DWORD dwListed = 0;
    (void)ListSubKeys(SourcePath(table, lpszSourceName), events.Names(), dwEvents, &dwListed);
    *lpdwMostEvents = std::max(*lpdwMostEvents, dwListed);
    for (DWORD i = 0; i < dwListed; ++i) {
        if (!lpRecords->Add(lpszSourceName, events.Names()[i])) {
            break;
        }
    }
    return true;
}

bool ReadTable(const EVENT_TABLE &table, DWORD dwSources, EVENT_LIST *lpList) noexcept {
    NameBuffers sources;
    if (!sources.Allocate(table.getAll.szFunction, table.getAll.sources, dwSources)) {
        return false;
    }
    DWORD dwListed = 0;
    (void)ListSubKeys(RootPath(table.szRoot), sources.Names(), dwSources, &dwListed);
    EventRecords records(table);
    if (!records.Allocate(CountAllEvents(table, sources.Names(), dwListed))) {
        return false;
    }
    DWORD dwMostEvents = 0;
    for (DWORD i = 0; i < dwListed; ++i) {
        if (!ReadSource(table, sources.Names()[i], &records, &dwMostEvents)) {
            return false;
        }
    }
    records.Release(lpList);
    lpList->dwSources = dwListed;
    lpList->dwMostEvents = dwMostEvents;
    return true;
}

}  // namespace

int GetAllEvents(const EVENT_TABLE &table, EVENT_LIST *lpList) noexcept {
    const char *szFunction = table.getAll.szFunction;
    const LONG lSources = CountSubKeys(RootPath(table.szRoot));
    if (lSources == -1) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<CalculateSubKey failed.return -1.");
        return -1;
    }
    if (!ReadTable(table, static_cast<DWORD>(lSources), lpList)) {
        TRACE_AS(szFunction, TRACE_NOTE, "<return -1.");
        return -1;
    }
    TRACE_AS(szFunction, TRACE_NOTE, "<return 0.");
    return 0;
}

void FreeEvents(const EVENT_TABLE &table, void **lplpRecords) noexcept {
    for (void **lplpNext = lplpRecords; lplpNext != nullptr && *lplpNext != nullptr; ++lplpNext) {
        EventRecords::FreeEvent(table, *lplpNext);
    }
    std::free(static_cast<void *>(lplpRecords));
}
