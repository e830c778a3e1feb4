#include "ntserver/answers.h"

namespace ntserver {

using regstore::Status;

Status AnswerTo(const EnumKeyRequest &request, regstore::Reader &reader, EnumKeyAnswer *answer) {
    regstore::SubKeyItem item;
    const Status status =
        reader.Enumeration().SubKeyAt(reader.Current(), request.key, request.index, &item);
    if (status != Status::kSuccess)
        return status;
    answer->name = item.name;
    answer->class_text = item.class_text;
    if (!request.last_write)
        return status;
    regstore::KeyRecord record;
    if (regstore::FindKeyRecord(reader.Current(), item.id, &record) != Status::kSuccess)
        return Status::kStoreFailed;
    answer->last_write = record.last_write;
    return status;
}

Status AnswerTo(const EnumValueRequest &request, regstore::Reader &reader,
                EnumValueAnswer *answer) {
    regstore::ValueItem item;
    const Status status =
        reader.Enumeration().ValueAt(reader.Current(), request.key, request.index, &item);
    if (status != Status::kSuccess)
        return status;
    answer->name = item.name;
    answer->type = item.type;
    answer->size = static_cast<std::uint32_t>(item.data.size());
    answer->data = answer->size <= request.capacity ? item.data : std::string_view();
    return status;
}

Status AnswerTo(const QueryKeyRequest &request, regstore::Reader &reader, QueryKeyAnswer *answer) {
    regstore::KeyRecord record;
    Status status = regstore::FindKeyRecord(reader.Current(), request.key, &record);
    if (status != Status::kSuccess)
        return status;
    regstore::KeyMeasures measures;
    if (request.measure)
        status = regstore::MeasureKey(reader.Current(), request.key, &measures);
    answer->sub_keys = record.sub_keys;
    answer->values = record.values;
    answer->longest_sub_key = measures.sub_key_name;
    answer->longest_class = measures.sub_key_class;
    answer->longest_value_name = measures.value_name;
    answer->longest_value_data = measures.value_data;
    answer->last_write = record.last_write;
    answer->class_text = record.class_text;
    return status;
}

}  // namespace ntserver
