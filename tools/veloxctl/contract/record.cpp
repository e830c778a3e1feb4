#include "contract/record.h"

#include <registry/keys.h>

#include "failure.h"
#include "registry.h"

namespace veloxctl::contract {

Json FieldsOf(const void *record, std::span<const Field> fields) {
    Json json = Json::object();
    for (const Field &field : fields) {
        json[field.name] = settings::FromStored(static_cast<const char *>(record) + field.offset);
    }
    return json;
}

void PlanFields(const Arguments &arguments, std::span<const Field> fields, settings::Plan *plan) {
    for (const Field &field : fields) {
        std::string text(field.size, '\0');
        if (field.option != nullptr &&
            settings::TakeText(arguments, field.option, text.data(), field.size)) {
            plan->SetText(VLX_KEY_SETTING, field.value, text.c_str());
        }
    }
}

int Show(const Arguments &arguments, Json (*read)()) {
    (void)ReadExistingKey(VLX_KEY_SETTING);
    settings::ShowRecord(arguments, read());
    return EX_OK;
}

int Store(const Arguments &arguments, const char *name, const settings::Plan &plan,
          Json (*read)()) {
    if (plan.IsEmpty()) {
        Fail(EX_USAGE,
             std::string("nothing is to be set; see \"veloxctl ") + name + " set --help\"");
    }
    const Json before = read();
    plan.Apply();
    settings::ReportChanges(arguments, name, before, read());
    return EX_OK;
}

}  // namespace veloxctl::contract
