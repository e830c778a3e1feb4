// Locale and message catalogue: TheLibc().catalogue. A message without translation stays the
// pointer it was, as gettext does.
#include <libintl.h>
#include <clocale>

#include "fakes/libc.h"
#include "state.h"

using fakes::Enter;
using fakes::TheLibc;

namespace {

std::string current_domain = "messages";

}  // namespace

extern "C" char *__wrap_setlocale(int category, const char *locale) {
    static char name[] = "C";
    const std::string wanted = locale == nullptr ? "null" : locale;
    return Enter("setlocale", std::to_string(category) + " " + wanted) != 0 ? nullptr : name;
}

extern "C" char *__wrap_bindtextdomain(const char *domain, const char *directory) {
    Enter("bindtextdomain", std::string(domain) + " " + directory);
    return const_cast<char *>(directory);
}

extern "C" char *__wrap_textdomain(const char *domain) {
    if (domain != nullptr) {
        Enter("textdomain", domain);
        current_domain = domain;
    }
    return current_domain.data();
}

extern "C" char *__wrap_dcgettext(const char *domain, const char *message, int category) {
    const std::string in_domain = domain == nullptr ? current_domain : domain;
    Enter("dcgettext", in_domain + ":" + message + " " + std::to_string(category));
    for (auto &[key, translation] : TheLibc().catalogue) {
        if (key == in_domain + ":" + message) {
            return translation.data();
        }
    }
    return const_cast<char *>(message);
}
