// The text in which a module tells its caller why it failed.
#ifndef SESSION_ANSWER_H
#define SESSION_ANSWER_H

#include <cstddef>
#include <string_view>

namespace session {

// Copies what fits of the reason into a buffer of this capacity, terminated. Other bytes than
// printable ASCII become '?': the reason may hold whatever a server said.
void GiveAnswer(std::string_view reason, char *answer, std::size_t capacity) noexcept;

}  // namespace session

#endif  // SESSION_ANSWER_H
