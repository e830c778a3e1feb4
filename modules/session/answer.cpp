#include "session/answer.h"

namespace session {

void GiveAnswer(std::string_view reason, char *answer, std::size_t capacity) noexcept {
    std::size_t length = 0;
    for (; length < reason.size() && length < capacity - 1; ++length)
        answer[length] = reason[length] >= 0x20 && reason[length] <= 0x7E ? reason[length] : '?';
    answer[length] = '\0';
}

}  // namespace session
