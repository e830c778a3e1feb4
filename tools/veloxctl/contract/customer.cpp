// "veloxctl customer".
#include <records/customer_items.h>
#include <registry/keys.h>
#include <velox/contract.h>

#include "contract/record.h"
#include "groups.h"

namespace veloxctl {

namespace {

using contract::Json;

constexpr contract::Field kFields[] = {
    {"name_kana", "name-kana", "TOKUINMA", offsetof(VLX_USER_DATA, szNameKana), VLX_SIZE_TOKUINMA},
    {"name", "name", "TOKUINMN", offsetof(VLX_USER_DATA, szName), VLX_SIZE_TOKUINMN},
    {"department", "department", "BUNMN", offsetof(VLX_USER_DATA, szDepartment), VLX_SIZE_BUNMN},
    {"postal_code", "postal-code", "ZIPNO", offsetof(VLX_USER_DATA, szPostalCode), VLX_SIZE_ZIPNO},
    {"address_kana", "address-kana", "ADRSNMA", offsetof(VLX_USER_DATA, szAddressKana),
     VLX_SIZE_ADRSNMA},
    {"address", "address", "ADRSNMN", offsetof(VLX_USER_DATA, szAddress), VLX_SIZE_ADRSNMN},
    {"address_details", "address-details", "SHOZAINMN", offsetof(VLX_USER_DATA, szAddressDetails),
     VLX_SIZE_SHOZAINMN},
    {"telephone", "telephone", "BUTEL", offsetof(VLX_USER_DATA, szTelephone), VLX_SIZE_BUTEL},
    {"mail", "mail", "MAIL", offsetof(VLX_USER_DATA, szMail), VLX_SIZE_MAIL},
    {"contact_kana", "contact-kana", "BUTANNMA", offsetof(VLX_USER_DATA, szContactKana),
     VLX_SIZE_BUTANNMA},
    {"contact", "contact", "BUTANNMN", offsetof(VLX_USER_DATA, szContact), VLX_SIZE_BUTANNMN},
    {"user_code", nullptr, "USERCODE", offsetof(VLX_USER_DATA, szUserCode), VLX_SIZE_USERCODE},
};

Json Read() {
    VLX_USER_DATA data = {};
    (void)GetVlxUserSetting(&data);
    Json json = {{"kind", data.dwKind == VLX_CUSTOMER_CORPORATE ? "corporate" : "personal"}};
    json.update(contract::FieldsOf(&data, kFields));
    return json;
}

void PlanKind(const Arguments &arguments, settings::Plan *plan) {
    if (arguments.Has("kind")) {
        plan->SetNumber(VLX_KEY_SETTING, "KAISHAKBN",
                        arguments.Get("kind") == "corporate" ? CUSTOMER_KIND_CORPORATE
                                                             : CUSTOMER_KIND_PERSONAL);
    }
}

int RunShow(const Arguments &arguments) {
    return contract::Show(arguments, Read);
}

int RunSet(const Arguments &arguments) {
    settings::Plan plan;
    PlanKind(arguments, &plan);
    contract::PlanFields(arguments, kFields, &plan);
    return contract::Store(arguments, "customer", plan, Read);
}

constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.long_name = "kind",
     .argument = "KIND",
     .summary = "corporate or personal",
     .choices = "corporate personal"},
    {.long_name = "name-kana", .argument = "TEXT", .summary = "name, in kana"},
    {.long_name = "name", .argument = "TEXT", .summary = "name"},
    {.long_name = "department", .argument = "TEXT", .summary = "department"},
    {.long_name = "postal-code", .argument = "TEXT", .summary = "postal code"},
    {.long_name = "address-kana", .argument = "TEXT", .summary = "address, in kana"},
    {.long_name = "address", .argument = "TEXT", .summary = "address"},
    {.long_name = "address-details", .argument = "TEXT", .summary = "building, floor and the like"},
    {.long_name = "telephone", .argument = "TEXT", .summary = "telephone number"},
    {.long_name = "mail", .argument = "TEXT", .summary = "mail address; reports need one"},
    {.long_name = "contact-kana", .argument = "TEXT", .summary = "contact person, in kana"},
    {.long_name = "contact", .argument = "TEXT", .summary = "contact person"},
    kJsonOption,
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the customer's contract data",
     .description = "Shows the customer as reports name it. The user code comes from the key disk "
                    "and cannot be changed.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "changes the customer's contract data",
     .description = contract::kSetDescription,
     .options = kSetOptions,
     .run = RunSet},
};

}  // namespace

extern const Group kCustomerGroup = {.name = "customer",
                                     .summary = "shows and changes the customer's contract data",
                                     .commands = kCommands};

}  // namespace veloxctl
