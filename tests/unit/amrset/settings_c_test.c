/* The headers of the alert manager's settings alone, as C, and calls through them. */
#include "velox/agent_setting.h"
#include "velox/base_setting.h"
#include "velox/destination_setting.h"
#include "velox/sub_key.h"
#include "velox/syslog_item.h"
#include "velox/syslog_setting.h"

int ReadKindFromC(BASE_DATA *record);
int ReadTablesFromC(void);

int ReadKindFromC(BASE_DATA *record) {
    return GetBaseSetting(record);
}

/* The sum of the results: 0 when both tables could be read and released. */
int ReadTablesFromC(void) {
    AGNT_DATA **events = NULL;
    SYSLOG_DATA **items = NULL;
    DWORD count = 0;
    DWORD sources = 0;
    DWORD most = 0;
    const int result = GetAllAgntSetting(&events, &count, &sources, &most) +
                       GetAllSyslogSetting(&items, &count, &sources, &most);
    FreeAgntSettings(events);
    FreeSyslogSettings(items);
    return result;
}
