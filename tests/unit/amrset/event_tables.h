// Both event tables for typed tests: what each calls its functions, its key and its trace texts.
#ifndef UNIT_AMRSET_EVENT_TABLES_H
#define UNIT_AMRSET_EVENT_TABLES_H

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "sweep.h"
#include "velox/agent_setting.h"
#include "velox/syslog_setting.h"

namespace event_tables {

struct Agent {
    using Data = AGNT_DATA;
    static constexpr bool kSyslog = false;
    static constexpr char kRoot[] =
        "SOFTWARE\\XEV\\KESALERTMAN\\REPORTTABLE\\USEREPORTAPI_EVENTLOG\\SYSTEM";
    static int Set(Data *data, LONG recovery) { return SetAgntSetting(data, recovery); }
    static int SetForSource(Data *data) { return SetAgntDataForSN(data); }
    static int Get(Data *data) { return GetAgntSetting(data); }
    static int GetAll(Data ***list, DWORD *count, DWORD *sources, DWORD *most) {
        return GetAllAgntSetting(list, count, sources, most);
    }
    static void Free(Data **list) { FreeAgntSettings(list); }

    static constexpr char kSet[] = "SetAgntSetting";
    static constexpr char kSetEntry[] = "0 > pAgntData=0x[0-9a-f]+";
    static constexpr char kSetExit[] = "0 <return 0";
    static constexpr char kBadAction[] = "1 <pAgntData->nAction invalid.return -1.";
    static constexpr char kBadKind[] = "1 <pAgntData->ObstacleKind error.return -1.";
    static constexpr char kBadLevel[] = "1 <pAgntData->AliveLevel error.return -1.";
    static constexpr char kForSource[] = "SetAgntDataForSN";
    static constexpr char kForSourceEntry[] = "0 >CPAgntData=0x[0-9a-f]+";
    static constexpr char kForSourceNoDest[] = "1 <RegOpenKeyEx() ";
    static constexpr char kForSourceNoSource[] = "1 <CalculateSubKey() return -1.return -2.";
    static constexpr char kForSourceNoArray[] = "2 <malloc IDresult error!return -1.";
    static constexpr char kForSourceDone[] = "0 <return 0";
    static constexpr char kForSourcePartly[] = "0 <return -1";
    static constexpr char kGet[] = "GetAgntSetting";
    static constexpr char kGetEntry[] = "0 >lpAgntData=0x[0-9a-f]+";
    static constexpr char kNoTrapName[] = "  ";
    static constexpr char kGetAll[] = "GetAllAgntSetting";
    static constexpr char kGetAllEntry[] =
        "0 >lplplpAgntData=0x[0-9a-f]+,len=0x[0-9a-f]+,pSN=0x[0-9a-f]+,pEvntID=0x[0-9a-f]+";
};

struct Syslog {
    using Data = SYSLOG_DATA;
    static constexpr bool kSyslog = true;
    static constexpr char kRoot[] =
        "SOFTWARE\\XEV\\KESALERTMAN\\REPORTTABLE\\EVENTLOG\\APPLICATION";
    static int Set(Data *data, LONG recovery) { return SetSyslogSetting(data, recovery); }
    static int SetForSource(Data *data) { return SetSyslogDataForSN(data); }
    static int Get(Data *data) { return GetSyslogSetting(data); }
    static int GetAll(Data ***list, DWORD *count, DWORD *sources, DWORD *most) {
        return GetAllSyslogSetting(list, count, sources, most);
    }
    static void Free(Data **list) { FreeSyslogSettings(list); }

    static constexpr char kSet[] = "SetSyslogSetting";
    static constexpr char kSetEntry[] = "0 >pSyslogData=0x[0-9a-f]+";
    static constexpr char kSetExit[] = "0 <return 0.";
    static constexpr char kBadAction[] = "1 <pSyslogData->nAction error.return -1.";
    static constexpr char kBadKind[] = "1 <pSyslogData->ObstacleKind error.return -1.";
    static constexpr char kBadLevel[] = "1 <pSyslogData->AliveLevel error.return -1.";
    static constexpr char kForSource[] = "SetSyslogDataForSN";
    static constexpr char kForSourceEntry[] = "0 >CPSyslogData=0x[0-9a-f]+";
    static constexpr char kForSourceNoDest[] = "1 <RegOpenKeyEx ";
    static constexpr char kForSourceNoSource[] = "1 <CalculateSubKey() returned -1.return -2.";
    static constexpr char kForSourceNoArray[] = "2 <malloc IDresult error!";
    static constexpr char kForSourceDone[] = "0 <return 0.";
    static constexpr char kForSourcePartly[] = "0 <return -1.";
    static constexpr char kGet[] = "GetSyslogSetting";
    static constexpr char kGetEntry[] = "0 >lpSyslogData=0x[0-9a-f]+";
    static constexpr char kNoTrapName[] = "";
    static constexpr char kGetAll[] = "GetAllSyslogSetting";
    static constexpr char kGetAllEntry[] =
        "0 >lplplpSyslogData=0x[0-9a-f]+,len=0x[0-9a-f]+,pSN=0x[0-9a-f]+,pEvntID=0x[0-9a-f]+";
};

inline const std::string kDestinations = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST";

// A record with destination buffers; every output field holds what no function presets.
template <typename Table>
struct Record {
    explicit Record(const char *source = "SRC", const char *event = "E1",
                    const char *destination = "ID1") {
        std::memset(&data.szTrapName, 'q', sizeof data.szTrapName);
        std::memset(&data.szRecoveryAction, 'q', sizeof data.szRecoveryAction);
        EXPECT_TRUE(CopyText(data.szSourceName, source));
        EXPECT_TRUE(CopyText(data.szEventID, event));
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            data.lplpszDestID[i] = buffers[i].data();
        }
        EXPECT_TRUE(CopyText(buffers[0].data(), buffers[0].size(), destination));
        data.nDestIDCount = 77;
        data.nDestAction = 2;
        data.nAction = 1;
        data.ObstacleKind = 4;
        data.AliveLevel = 5;
        if constexpr (Table::kSyslog) {
            std::memset(&data.szKeyWord, 'q', sizeof data.szKeyWord);
            data.dwReportCount = 11;
            data.dwWatchTime = 12;
            data.dwSystemDefined = 13;
        }
    }

    typename Table::Data data{};
    std::array<std::array<char, EVENT_DEST_CAPACITY>, EVENT_MAX_DEST> buffers{};
};

template <typename Table>
class EventTest : public fakes::PlatformTest {
  protected:
    static std::string Source(const std::string &source = "SRC") {
        return std::string(Table::kRoot) + "\\" + source;
    }
    static std::string Event(const std::string &event = "E1", const std::string &source = "SRC") {
        return Source(source) + "\\" + event;
    }
    static std::string Link(const std::string &event = "E1", const std::string &id = "ID1") {
        return Event(event) + "\\DESTINATIONSETTING\\ID_LIST\\" + id;
    }

    static void StoreEvent(const std::string &event = "E1", const std::string &source = "SRC") {
        const std::string key = Event(event, source);
        fakes::CreateKey(key + "\\DESTINATIONSETTING\\ID_LIST");
        fakes::StoreNumber(key + "\\EVENTSETTING", "ACTION", 2);
        fakes::StoreNumber(key + "\\EVENTSETTING", "OBSTACLEKIND", 6);
        fakes::StoreNumber(key + "\\EVENTSETTING", "ALIVELEVEL", 8);
        fakes::StoreText(key + "\\EVENTSETTING", "TRAPNAME", "Trap");
        fakes::StoreText(key + "\\EVENTSETTING", "RECOVERYACTION", "Recover");
        if constexpr (Table::kSyslog) {
            fakes::StoreNumber(key + "\\EVENTSETTING", "SYSTEMDEFINED", 1);
            fakes::StoreText(key + "\\WATCHSETTING", "KEYWORD", "panic");
            fakes::StoreNumber(key + "\\WATCHSETTING", "WATCHTIME", 0xFFFFFF);
            fakes::StoreNumber(key + "\\WATCHSETTING", "REPORTCOUNT", 1);
            fakes::StoreNumber(key + "\\WATCHSETTING", "THRESHOLD", 9);
        }
    }

    static void Prepare() {
        StoreEvent();
        fakes::CreateKey(kDestinations + "\\ID1");
        fakes::CreateKey(kDestinations + "\\ID2");
    }

    void SetUp() override {
        PlatformTest::SetUp();
        Prepare();
    }
};

using Tables = ::testing::Types<Agent, Syslog>;

struct TableName {
    template <typename Table>
    static std::string GetName(int) {
        return Table::kSyslog ? "Syslog" : "Agent";
    }
};

}  // namespace event_tables

#endif  // UNIT_AMRSET_EVENT_TABLES_H
