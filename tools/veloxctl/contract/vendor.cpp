// "veloxctl vendor".
#include <registry/keys.h>
#include <velox/contract.h>

#include "contract/record.h"
#include "failure.h"
#include "groups.h"

namespace veloxctl {

namespace {

using contract::Json;

constexpr contract::Field kFields[] = {
    {"dealer", "dealer", "SYSSHOPNMN", offsetof(VLX_VEND_DATA, szDealer), VLX_SIZE_SYSSHOPNMN},
    {"sales_office", "sales-office", "SYSEIGYOBUNMN", offsetof(VLX_VEND_DATA, szSalesOffice),
     VLX_SIZE_SYSEIGYOBUNMN},
    {"sales_name", "sales-name", "SYSEIGYONMN", offsetof(VLX_VEND_DATA, szSalesName),
     VLX_SIZE_SYSEIGYONMN},
    {"sales_telephone", "sales-telephone", "SYSEIGYOTEL", offsetof(VLX_VEND_DATA, szSalesTelephone),
     VLX_SIZE_SYSEIGYOTEL},
    {"engineer_department", "engineer-department", "SYSSEBU",
     offsetof(VLX_VEND_DATA, szEngineerDepartment), VLX_SIZE_SYSSEBU},
    {"engineer_name", "engineer-name", "SYSSENMN", offsetof(VLX_VEND_DATA, szEngineerName),
     VLX_SIZE_SYSSENMN},
    {"engineer_telephone", "engineer-telephone", "SYSSETEL",
     offsetof(VLX_VEND_DATA, szEngineerTelephone), VLX_SIZE_SYSSETEL},
};

Json Read() {
    VLX_VEND_DATA data = {};
    DWORD dealers = 0;
    if (GetVlxVendSettingBounded(&data, nullptr, 0, &dealers) == FALSE) {
        Fail(EX_NOINPUT, "the set-up data file of the dealers cannot be read");
    }
    return contract::FieldsOf(&data, kFields);
}

int RunShow(const Arguments &arguments) {
    return contract::Show(arguments, Read);
}

int RunSet(const Arguments &arguments) {
    settings::Plan plan;
    contract::PlanFields(arguments, kFields, &plan);
    return contract::Store(arguments, "vendor", plan, Read);
}

constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.long_name = "dealer",
     .argument = "TEXT",
     .summary = "name of the dealer; dealers lists the known ones"},
    {.long_name = "sales-office",
     .argument = "TEXT",
     .summary = "office of the sales representative"},
    {.long_name = "sales-name", .argument = "TEXT", .summary = "name of the sales representative"},
    {.long_name = "sales-telephone",
     .argument = "TEXT",
     .summary = "telephone number of the sales representative"},
    {.long_name = "engineer-department",
     .argument = "TEXT",
     .summary = "department of the system engineer"},
    {.long_name = "engineer-name", .argument = "TEXT", .summary = "name of the system engineer"},
    {.long_name = "engineer-telephone",
     .argument = "TEXT",
     .summary = "telephone number of the system engineer"},
    kJsonOption,
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the dealer's contract data",
     .description = "Shows the dealer and its staff as reports name them.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "changes the dealer's contract data",
     .description = contract::kSetDescription,
     .options = kSetOptions,
     .run = RunSet},
};

}  // namespace

extern const Group kVendorGroup = {.name = "vendor",
                                   .summary = "shows and changes the dealer's contract data",
                                   .commands = kCommands};

}  // namespace veloxctl
