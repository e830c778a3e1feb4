// The values of a destination's "SCHEDULE" key, in the order in which every writer stores them.
#ifndef RECORDS_SCHEDULE_H
#define RECORDS_SCHEDULE_H

#include "records/destination_data.h"

struct SCHEDULE_VALUE {
    const char *szName;
    DWORD dwNumber;
};

inline constexpr DWORD SCHEDULE_VALUES = 9;

// Fills the list from the three fields of the record that belong to the schedule.
inline void MakeScheduleValues(const DEST_DATA &destData,
                               SCHEDULE_VALUE (&aValues)[SCHEDULE_VALUES]) noexcept {
    constexpr DWORD ALWAYS = 0xFFFFFF;
    aValues[0] = {"PARAM0", destData.dwSchedule};
    aValues[1] = {"PARAM1", ALWAYS};
    aValues[2] = {"PARAM2", ALWAYS};
    aValues[3] = {"PARAM3", ALWAYS};
    aValues[4] = {"PARAM4", ALWAYS};
    aValues[5] = {"PARAM5", ALWAYS};
    aValues[6] = {"PARAM6", ALWAYS};
    aValues[7] = {"RETRYCOUNT", destData.dwRetryCount};
    aValues[8] = {"RETRYINTERVAL", destData.dwRetryInterval};
}

#endif  // RECORDS_SCHEDULE_H
