// "veloxctl machine".
#include <registry/keys.h>
#include <velox/contract.h>

#include "contract/record.h"
#include "groups.h"

namespace veloxctl {

namespace {

using contract::Json;

constexpr contract::Field kFields[] = {
    {"server_name", "server-name", "SYSNMN", offsetof(VLX_MACH_DATA, szServerName),
     VLX_SIZE_SYSNMN},
    {"device_code", "device-code", "SOCHICD", offsetof(VLX_MACH_DATA, szDeviceCode),
     VLX_SIZE_SOCHICD},
    {"serial_number", "serial-number", "SYSGOKI", offsetof(VLX_MACH_DATA, szSerialNumber),
     VLX_SIZE_SYSGOKI},
    {"guarantee_number", "guarantee-number", "GUARANTEE",
     offsetof(VLX_MACH_DATA, szGuaranteeNumber), VLX_SIZE_GUARANTEE},
    {"os_name", "os-name", "OSNMA", offsetof(VLX_MACH_DATA, szOsName), VLX_SIZE_OSNMA},
    {"os_version", "os-version", "OSREV", offsetof(VLX_MACH_DATA, szOsVersion), VLX_SIZE_OSREV},
};

Json Read() {
    VLX_MACH_DATA data = {};
    (void)GetVlxMachSetting(&data);
    return contract::FieldsOf(&data, kFields);
}

int RunShow(const Arguments &arguments) {
    return contract::Show(arguments, Read);
}

int RunSet(const Arguments &arguments) {
    settings::Plan plan;
    contract::PlanFields(arguments, kFields, &plan);
    return contract::Store(arguments, "machine", plan, Read);
}

constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.long_name = "server-name", .argument = "TEXT", .summary = "name of the server"},
    {.long_name = "device-code", .argument = "TEXT", .summary = "device code"},
    {.long_name = "serial-number", .argument = "TEXT", .summary = "serial number"},
    {.long_name = "guarantee-number", .argument = "TEXT", .summary = "guarantee number"},
    {.long_name = "os-name",
     .argument = "TEXT",
     .summary = "name of the operating system; os-names lists the usual ones"},
    {.long_name = "os-version", .argument = "TEXT", .summary = "version of the operating system"},
    kJsonOption,
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the machine's contract data",
     .description = "Shows the machine as reports name it. Without a server name the computer's "
                    "stands, without a device code the hardware's product name.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "changes the machine's contract data",
     .description = contract::kSetDescription,
     .options = kSetOptions,
     .run = RunSet},
};

}  // namespace

extern const Group kMachineGroup = {.name = "machine",
                                    .summary = "shows and changes the machine's contract data",
                                    .commands = kCommands};

}  // namespace veloxctl
