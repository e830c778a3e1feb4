#include "text.h"

#include <regfile/converter.h>

namespace amrvxmn {

std::string ToUtf8(std::string_view stored) {
    constexpr char kReplacement[] = "\xEF\xBF\xBD";
    regfile::Converter converter("UTF-8", "EUC-JP-MS");
    std::string utf8;
    while (!stored.empty()) {
        stored.remove_prefix(converter.Append(stored, &utf8));
        if (!stored.empty()) {
            utf8 += kReplacement;
            stored.remove_prefix(1);
        }
    }
    return utf8;
}

}  // namespace amrvxmn
