#include "app/demo_random.h"

namespace app {
namespace {

// The finaliser of splitmix64: every input bit reaches every output bit.
std::uint64_t mix(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

}  // namespace

std::uint64_t DemoRandom::next() {
    m_state += 0x9E3779B97F4A7C15ULL;
    return mix(m_state);
}

int DemoRandom::below(int count) {
    if (count <= 0) return 0;
    return static_cast<int>(next() % static_cast<std::uint64_t>(count));
}

int DemoRandom::between(int low, int high) {
    return low + below(high - low + 1);
}

std::uint64_t demoHash(std::uint64_t seed, std::string_view text, std::int64_t number) {
    std::uint64_t h = 0xCBF29CE484222325ULL ^ mix(seed);
    for (unsigned char c : text)
        h = (h ^ c) * 0x100000001B3ULL;
    return mix(h ^ mix(static_cast<std::uint64_t>(number) + 0x9E3779B97F4A7C15ULL));
}

}  // namespace app
