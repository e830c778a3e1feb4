/* The header alone, as C, and a call through it. */
#include "velox/mail_destination.h"

BOOL SetScheduleFromC(const DEST_DATA *schedule);

BOOL SetScheduleFromC(const DEST_DATA *schedule) {
    return SetAMAMDeseSetting(NULL, schedule);
}
