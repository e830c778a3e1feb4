// Code conversion: no input may crash it; widening twice is widening once; both results fit twice
// the source, on which the import relies.
#include <cstdint>
#include <cstdlib>

#include "conversion.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string_view source(reinterpret_cast<const char *>(data), size);
    const std::string wide = agent::WidenKatakana(source);
    if (wide.size() > 2 * size || agent::WidenKatakana(wide) != wide) {
        std::abort();
    }
    const auto euc = agent::SjisToEuc(wide);
    if (euc && euc->size() > 2 * size) {
        std::abort();
    }
    if (agent::SjisToEuc(source).has_value() && !euc) {
        std::abort();
    }
    return 0;
}
