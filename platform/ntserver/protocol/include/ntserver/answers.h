// The answers to requests that read, taken from a snapshot of the store: by the daemon for those
// who ask it, by a mapping client for itself. Texts and data point into the map or into the reader.
#ifndef NTSERVER_ANSWERS_H
#define NTSERVER_ANSWERS_H

#include "ntserver/messages.h"
#include "regstore/environment.h"
#include "regstore/snapshot.h"

namespace ntserver {

inline regstore::Status AnswerTo(const PathRequest &request, regstore::Reader &reader,
                                 KeyAnswer *answer) noexcept {
    return regstore::FindKey(reader.CurrentForPath(), request.key, request.path, &answer->key);
}

inline regstore::Status AnswerTo(const QueryValueRequest &request, regstore::Reader &reader,
                                 ValueAnswer *answer) noexcept {
    regstore::ValueRecord value;
    const regstore::Status status =
        regstore::FindValue(reader.Current(), request.key, request.name, &value);
    if (status != regstore::Status::kSuccess)
        return status;
    answer->type = value.type;
    answer->size = static_cast<std::uint32_t>(value.data.size());
    answer->data = answer->size <= request.capacity ? value.data : std::string_view();
    return status;
}

regstore::Status AnswerTo(const EnumKeyRequest &request, regstore::Reader &reader,
                          EnumKeyAnswer *answer);
regstore::Status AnswerTo(const EnumValueRequest &request, regstore::Reader &reader,
                          EnumValueAnswer *answer);
regstore::Status AnswerTo(const QueryKeyRequest &request, regstore::Reader &reader,
                          QueryKeyAnswer *answer);

}  // namespace ntserver

#endif  // NTSERVER_ANSWERS_H
