// Texts with %NAME% in them.
#ifndef WIN32_ENVIRONMENT_TEXT_H
#define WIN32_ENVIRONMENT_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace win32 {

// Replaces each %NAME% by the environment variable NAME; an unknown name stays with its signs, and
// so does a sign without a partner. "%KesDir%" is always known. None when the product's root cannot
// be told.
std::optional<std::string> ExpandEnvironment(std::string_view text);

}  // namespace win32

#endif  // WIN32_ENVIRONMENT_TEXT_H
