// One libFuzzer target; ZANDOREL_FUZZ_ENTRY names the entry of entries.h it feeds.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "entries.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ZANDOREL_FUZZ_ENTRY(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}
