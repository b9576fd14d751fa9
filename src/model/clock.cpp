#include "model/clock.h"

#include <cmath>
#include <limits>

namespace model {

namespace {

// A double as a 32-bit float. Finite values beyond the float range become infinities, as the
// hardware would make them, without the undefined conversion.
float single(double value) {
    constexpr double kMax = std::numeric_limits<float>::max();
    if (value > kMax) return std::numeric_limits<float>::infinity();
    if (value < -kMax) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

// The whole hours and the part after them times 100. The subtraction and the product are rounded to
// a float once, at the end: that rounding is what turns (8.30 - 8) * 100 into exactly 30.
void splitHours(double valeur, float& hours, float& hundredths) {
    hours = single(std::floor(valeur));
    hundredths = single((valeur - hours) * 100.0);
}

// hours + hundredths / 100 as the double nearest the decimal H.hh, so that 8 and 15 give the
// literal 8.15 and print as "8,15". Both operands are small integers, exact in a double.
double joinHours(float hours, float hundredths) {
    return (static_cast<double>(hours) * 100.0 + static_cast<double>(hundredths)) / 100.0;
}

}  // namespace

double CentiemesVersHeure(double valeur) {
    float hours = 0, hundredths = 0;
    splitHours(valeur, hours, hundredths);
    const float minutes = std::floor(0.5f + hundredths * 0.6f);
    const float rounded = std::floor(minutes / 5.0f + 0.5f) * 5.0f;
    // From 58 minutes the hour carries over; 23.99 gives 24, not 0.
    if (rounded == 60.0f) return static_cast<double>(hours) + 1.0;
    return joinHours(hours, rounded);
}

double HeureVersCentiemes(double valeur) {
    float hours = 0, minutes = 0;
    splitHours(valeur, hours, minutes);
    const float hundredths = std::floor(0.5f + minutes / 0.6f);
    return joinHours(hours, hundredths);
}

}  // namespace model
