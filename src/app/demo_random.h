#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace app {

// The demo's only source of chance. The same seed gives the same draws on every compiler and
// standard library, which the standard distributions do not promise; a demo database must come out
// byte for byte the same wherever it is generated.
class DemoRandom {
public:
    explicit DemoRandom(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next();
    // A whole number in [0, count); 0 when count is not positive.
    int below(int count);
    // A whole number in [low, high], both included.
    int between(int low, int high);
    // True about `percent` times in a hundred.
    bool chance(int percent) { return below(100) < percent; }
    // A multiple of `step` in [low, high]; low and high are themselves multiples of step.
    int stepped(int low, int high, int step) { return low + step * below((high - low) / step + 1); }

    template <typename T>
    const T& pick(const std::vector<T>& items) {
        return items[static_cast<std::size_t>(below(static_cast<int>(items.size())))];
    }

private:
    std::uint64_t m_state;
};

// A draw tied to its inputs rather than to a sequence: the same aidé, day and seed always give the same
// value, whatever was drawn before. It keeps choices stable from week to week (an aidé stays in the
// same tournée) without the order of generation mattering.
std::uint64_t demoHash(std::uint64_t seed, std::string_view text, std::int64_t number = 0);

}  // namespace app
