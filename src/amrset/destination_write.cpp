// Adding, modifying and deleting report destinations.
#include <records/schedule.h>

#include <cstring>

#include "destination_kinds.h"
#include "key_values.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "separated_list.h"
#include "velox/destination_setting.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

// How the writer of a kind differs from the others.
struct DEST_WRITER {
    const char *szFunction;
    const char *szFailure;  // of a key that cannot be created
    const char *szMethod;   // "METHOD"; null: the record's text as it stands
    void (*pfnWriteAddress)(HKEY hAddress, const DEST_DATA &destData);
};

// ---- The values of "Address" --------------------------------------------------------------------

void WriteCommand(HKEY hAddress, const DEST_DATA &destData) noexcept {
    SetNumber(hAddress, "DisplayFlag", 1);
    SetText(hAddress, "CommandLine", destData.szCommandLine);
}

void WriteManager(HKEY hAddress, const DEST_DATA &destData) noexcept {
    SetText(hAddress, "ManagerIP", destData.szManagerIP);
    SetText(hAddress, "IPorHost", destData.szManagerIP);
    SetNumber(hAddress, "PortNumber", destData.dwPortNumber);
}

void WriteDialUp(HKEY hAddress, const DEST_DATA &destData) noexcept {
    char szEntry[3 * DEST_TEXT_CAPACITY];
    constexpr int MAXIMUM = DEST_TEXT_CAPACITY - 1;
    if (FormatText(szEntry, sizeof szEntry, "%.*s %.*s %.*s", MAXIMUM, destData.szTelNo, MAXIMUM,
                   destData.szUserName, MAXIMUM, destData.szPassWord)) {
        SetText(hAddress, "RASENTRY", szEntry);
    }
    WriteManager(hAddress, destData);
    SetText(hAddress, "TelNo", destData.szTelNo);
    SetText(hAddress, "UserName", destData.szUserName);
    SetText(hAddress, "PassWord", destData.szPassWord);
}

void WriteNothing(HKEY, const DEST_DATA &) noexcept {}

// ---- The three keys of a destination ------------------------------------------------------------

bool CreateDestinationKey(const DEST_WRITER &writer, const KEYPATH &path,
                          AutoRegKey *lpKey) noexcept {
    if (CreatePath(path, lpKey) != ERROR_SUCCESS) {
        TRACE_AS(writer.szFunction, TRACE_FAILURE, writer.szFailure, path.szText);
        return false;
    }
    return true;
}

bool WriteHead(const DEST_WRITER &writer, const DEST_DATA &destData) noexcept {
    AutoRegKey key;
    if (!CreateDestinationKey(writer, DestinationPath(destData.szDestID), &key)) {
        return false;
    }
    SetNumber(key.Get(), "ADDRESSSET", 1);
    SetNumber(key.Get(), "ATTRIBUTE", 1);
    SetText(key.Get(), "COMMENT", "");
    SetText(key.Get(), "METHOD", writer.szMethod == nullptr ? destData.szMethod : writer.szMethod,
            DEST_TEXT_CAPACITY);
    SetText(key.Get(), "REPORTKIND", "Report");
    return true;
}

bool WriteAddress(const DEST_WRITER &writer, const DEST_DATA &destData) noexcept {
    AutoRegKey key;
    if (!CreateDestinationKey(writer, SubPath(DestinationPath(destData.szDestID), "Address"),
                              &key)) {
        return false;
    }
    writer.pfnWriteAddress(key.Get(), destData);
    return true;
}

bool WriteSchedule(const DEST_WRITER &writer, const DEST_DATA &destData) noexcept {
    AutoRegKey key;
    if (!CreateDestinationKey(writer, SubPath(DestinationPath(destData.szDestID), "SCHEDULE"),
                              &key)) {
        return false;
    }
    SCHEDULE_VALUE aValues[SCHEDULE_VALUES];
    MakeScheduleValues(destData, aValues);
    for (const SCHEDULE_VALUE &value : aValues) {
        SetNumber(key.Get(), value.szName, value.dwNumber);
    }
    return true;
}

bool WriteDestination(const DEST_WRITER &writer, const DEST_DATA &destData) noexcept {
    return WriteHead(writer, destData) && WriteAddress(writer, destData) &&
           WriteSchedule(writer, destData);
}

// Two of the writers cut the start of the record into fields that nobody reads. It is done to a
// copy, because the record stays the caller's, and for its trace records.
void SeparateStart(const DEST_DATA &destData) noexcept {
    char szStart[sizeof destData.nAction + sizeof destData.szDestID + 1] = {};
    std::memcpy(szStart, &destData, sizeof szStart - 1);
    char *lplpField[10] = {};
    SeperateStringBounded(szStart, lplpField, 10);
}

// ---- SetDestSetting -----------------------------------------------------------------------------

int WriteKind(const DEST_DATA &destData) noexcept {
    if (IsDestKind(destData, KIND_COMMAND)) {
        (void)SetCmdDestSetting(&destData);
    } else if (IsDestKind(destData, KIND_IN_BAND)) {
        SetTcpInDestSetting(&destData);
    } else if (IsDestKind(destData, KIND_OUT_OF_BAND)) {
        SetTcpOutDestSetting(&destData);
    } else if (IsDestKind(destData, KIND_SNMP)) {
        SetSnmpDestSetting(&destData);
    } else {
        TRACE_AS("SetDestSetting", TRACE_FAILURE, "<unsupport method.return -1.");
        return -1;
    }
    return 0;
}

int AddDestination(const DEST_DATA &destData) noexcept {
    const KEYPATH path = DestinationPath(destData.szDestID);
    if (DestinationOpens(path)) {
        TRACE_AS("SetDestSetting", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -3.",
                 path.szText);
        return -3;
    }
    return WriteKind(destData);
}

int ModifyDestination(const DEST_DATA &destData) noexcept {
    const KEYPATH path = DestinationPath(destData.szDestID);
    if (!DestinationOpens(path)) {
        TRACE_AS("SetDestSetting", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -2.",
                 path.szText);
        return -2;
    }
    return WriteKind(destData);
}

int ApplyDestination(const DEST_DATA &destData) noexcept {
    switch (destData.nAction) {
        case DEST_ACTION_DELETE:
            (void)DeletePathTree(DestinationPath(destData.szDestID));
            return 0;
        case DEST_ACTION_ADD:
            return AddDestination(destData);
        case DEST_ACTION_MODIFY:
            return ModifyDestination(destData);
        default:
            TRACE_AS("SetDestSetting", TRACE_FAILURE, "<unsupport action.return -1.");
            return -1;
    }
}

}  // namespace

int SetDestSetting(const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">pDestData=%p", static_cast<const void *>(pDestData));
    const int nResult = ApplyDestination(*pDestData);
    if (nResult == 0) {
        TRACE(TRACE_NOTE, "<return 0.");
    }
    return nResult;
}

int SetCmdDestSetting(const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">pDestData=%p", static_cast<const void *>(pDestData));
    if (!WriteDestination({__func__, "<RegCreateKeyEx %s failed.return -1.", nullptr, WriteCommand},
                          *pDestData)) {
        return -1;
    }
    TRACE(TRACE_NOTE, "<return 0.");
    return 0;
}

void SetTcpInDestSetting(const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">pDestData=%p", static_cast<const void *>(pDestData));
    if (WriteDestination(
            {__func__, "<RegCreateKeyEx %s failed.", "Manager (TCP_IP IN-BAND)", WriteManager},
            *pDestData)) {
        TRACE(TRACE_NOTE, "<");
    }
}

void SetTcpOutDestSetting(const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">pDestData=%p", static_cast<const void *>(pDestData));
    SeparateStart(*pDestData);
    if (WriteDestination(
            {__func__, "<RegCreateKeyEx %s failed.", "Manager (TCP_IP Out-of-Band)", WriteDialUp},
            *pDestData)) {
        TRACE(TRACE_NOTE, "<");
    }
}

void SetSnmpDestSetting(const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">pDestData=%p", static_cast<const void *>(pDestData));
    SeparateStart(*pDestData);
    if (WriteDestination({__func__, "<RegCreateKeyEx %s failed.", "Manager (SNMP)", WriteNothing},
                         *pDestData)) {
        TRACE(TRACE_NOTE, "<");
    }
}
