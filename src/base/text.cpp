#include "base/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace base {

namespace {

// A text that reads as a number, cut into its parts. The digit runs keep their leading and trailing
// zeros; callers that compare values drop them.
struct NumberParts {
    bool negative = false;
    std::string_view integerDigits;
    std::string_view fractionDigits;
};

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view digitRun(std::string_view text, std::size_t& pos) {
    const std::size_t begin = pos;
    while (pos < text.size() && isDigit(text[pos]))
        ++pos;
    return text.substr(begin, pos - begin);
}

std::optional<NumberParts> scanNumber(std::string_view text) {
    std::size_t pos = 0;
    while (pos < text.size() && isBlank(text[pos]))
        ++pos;
    NumberParts parts;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) parts.negative = text[pos++] == '-';
    parts.integerDigits = digitRun(text, pos);
    if (pos < text.size() && (text[pos] == ',' || text[pos] == '.')) {
        ++pos;
        parts.fractionDigits = digitRun(text, pos);
    }
    if (parts.integerDigits.empty() && parts.fractionDigits.empty()) return std::nullopt;
    while (pos < text.size() && isBlank(text[pos]))
        ++pos;
    if (pos != text.size()) return std::nullopt;
    return parts;
}

std::string_view withoutLeadingZeros(std::string_view digits) {
    const std::size_t first = digits.find_first_not_of('0');
    return first == std::string_view::npos ? std::string_view() : digits.substr(first);
}

std::string_view withoutTrailingZeros(std::string_view digits) {
    const std::size_t last = digits.find_last_not_of('0');
    return last == std::string_view::npos ? std::string_view() : digits.substr(0, last + 1);
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

// Compares two magnitudes given without their non-significant zeros: the longer integer part is the
// larger; then the digits decide, and a fraction that runs on past an equal prefix is the larger.
int compareMagnitudes(const NumberParts& a, const NumberParts& b) {
    if (a.integerDigits.size() != b.integerDigits.size())
        return a.integerDigits.size() < b.integerDigits.size() ? -1 : 1;
    if (const int byInteger = a.integerDigits.compare(b.integerDigits); byInteger != 0)
        return sign(byInteger);
    return sign(a.fractionDigits.compare(b.fractionDigits));
}

std::string_view nonFiniteText(double value) {
    if (std::isnan(value)) return "NaN";
    return value < 0 ? "-Infinity" : "Infinity";
}

// The exponent form of numberText: "1E+15", "-1,5E-05".
std::string exponentText(bool negative, std::string_view digits, int exponent) {
    std::string text = negative ? "-" : "";
    text += digits[0];
    if (digits.size() > 1) {
        text += ',';
        text += digits.substr(1);
    }
    text += exponent < 0 ? "E-" : "E+";
    text += zeroPad(exponent < 0 ? -exponent : exponent, 2);
    return text;
}

// The positional form of numberText, for exponents from -4 to 14.
std::string positionalText(bool negative, std::string_view digits, int exponent) {
    std::string text = negative ? "-" : "";
    if (exponent < 0) {
        text += "0,";
        text.append(static_cast<std::size_t>(-exponent - 1), '0');
        text += digits;
        return text;
    }
    const std::size_t integerLength = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= integerLength) {
        text += digits;
        text.append(integerLength - digits.size(), '0');
        return text;
    }
    text += digits.substr(0, integerLength);
    text += ',';
    text += digits.substr(integerLength);
    return text;
}

// Byte length of the UTF-8 character at `pos`: a well-formed sequence (no overlong form, no
// surrogate, nothing above U+10FFFF) counts whole, anything else is one byte on its own.
std::size_t charLength(std::string_view text, std::size_t pos) {
    const auto lead = static_cast<unsigned char>(text[pos]);
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;  // bounds of the second byte
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return 1;
    }
    if (pos + length > text.size()) return 1;
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[pos + i]);
        const unsigned char min = i == 1 ? low : 0x80, max = i == 1 ? high : 0xBF;
        if (byte < min || byte > max) return 1;
    }
    return length;
}

// Byte offset after `count` characters from the start (the text's size when it has fewer).
std::size_t byteOffset(std::string_view text, std::int64_t count) {
    std::size_t pos = 0;
    for (; count > 0 && pos < text.size(); --count)
        pos += charLength(text, pos);
    return pos;
}

}  // namespace

std::string numberText(double value) {
    if (!std::isfinite(value)) return std::string(nonFiniteText(value));
    if (value == 0) return "0";
    // Fifteen significant digits, rounded once; the exponent is read after the rounding so that
    // 999999999999999.9 becomes "1E+15", as %.15G does.
    char buffer[32];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, 14);
    const std::string_view text(buffer, static_cast<std::size_t>(result.ptr - buffer));
    const bool negative = text[0] == '-';
    const std::size_t mantissaStart = negative ? 1 : 0;
    const std::size_t e = text.find('e');
    std::string digits;
    digits += text[mantissaStart];
    digits += text.substr(mantissaStart + 2, e - mantissaStart - 2);
    int exponent = 0;
    std::from_chars(text.data() + e + (text[e + 1] == '+' ? 2 : 1), text.data() + text.size(), exponent);
    const std::string_view significant = withoutTrailingZeros(digits);
    if (exponent >= 15 || exponent < -4) return exponentText(negative, significant, exponent);
    return positionalText(negative, significant, exponent);
}

std::optional<double> parseNumber(std::string_view text) {
    const auto parts = scanNumber(text);
    if (!parts) return std::nullopt;
    std::string normalized = "0";
    normalized += parts->integerDigits;
    normalized += '.';
    normalized += parts->fractionDigits;
    normalized += '0';
    double value = 0;
    const auto result = std::from_chars(normalized.data(), normalized.data() + normalized.size(), value,
                                        std::chars_format::fixed);
    if (result.ec == std::errc::result_out_of_range) {
        // Only a huge integer part can overflow; a long run of zeros after the comma underflows to 0.
        const bool huge = !withoutLeadingZeros(parts->integerDigits).empty();
        value = huge ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return parts->negative ? -value : value;
}

bool isNumeric(std::string_view text) {
    return scanNumber(text).has_value();
}

double toNumber(std::string_view text) {
    return parseNumber(text).value_or(0.0);
}

int compareValues(std::string_view a, std::string_view b) {
    auto left = scanNumber(a);
    auto right = scanNumber(b);
    if (!left || !right) return sign(a.compare(b));
    for (NumberParts* parts : {&*left, &*right}) {
        parts->integerDigits = withoutLeadingZeros(parts->integerDigits);
        parts->fractionDigits = withoutTrailingZeros(parts->fractionDigits);
        // Zero has no sign: "-0" equals "0".
        if (parts->integerDigits.empty() && parts->fractionDigits.empty()) parts->negative = false;
    }
    if (left->negative != right->negative) return left->negative ? -1 : 1;
    const int magnitude = compareMagnitudes(*left, *right);
    return left->negative ? -magnitude : magnitude;
}

double Int(double value) {
    return std::floor(value);
}

std::int64_t roundHalfEven(double value) {
    // 2^63 is exact in a double; anything at or beyond it (and NaN, taken as 0) cannot be converted.
    constexpr double kLimit = 9223372036854775808.0;
    if (std::isnan(value)) return 0;
    if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
    if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
    const double below = std::floor(value);
    // Exact: a double's distance to its floor is representable.
    const double fraction = value - below;
    double rounded = below;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(below, 2.0) != 0)) rounded = below + 1;
    if (rounded >= kLimit) return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(rounded);
}

int toInteger(std::string_view text) {
    // The narrowing keeps the low 32 bits, as the tables' integers always were taken.
    return static_cast<int>(roundHalfEven(toNumber(text)));
}

std::string formatFixed(double value, int decimals) {
    // The longest text: a sign, 309 integer digits, the comma and the decimals, which stop at 1074.
    std::string text(static_cast<std::size_t>(std::clamp(decimals, 0, 1074)) + 320, '\0');
    text.resize(formatFixed(std::span<char>(text), value, decimals).size());
    return text;
}

std::string_view formatFixed(std::span<char> buffer, double value, int decimals) {
    if (!std::isfinite(value)) {
        const std::string_view text = nonFiniteText(value);
        if (text.size() > buffer.size()) return {};
        std::copy(text.begin(), text.end(), buffer.begin());
        return {buffer.data(), text.size()};
    }
    // A double has no digit beyond the 1074th decimal; more would only add zeros.
    const int precision = std::clamp(decimals, 0, 1074);
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, precision);
    if (result.ec != std::errc()) return {};
    std::size_t length = static_cast<std::size_t>(result.ptr - buffer.data());
    const std::span<char> text = buffer.first(length);
    std::replace(text.begin(), text.end(), '.', ',');
    // A value that rounds to zero is shown without a sign: "-0,00" would read as a debt.
    const auto isZeroDigit = [](char c) { return c == '0' || c == ','; };
    if (text[0] == '-' && std::all_of(text.begin() + 1, text.end(), isZeroDigit)) {
        std::copy(text.begin() + 1, text.end(), text.begin());
        --length;
    }
    return {buffer.data(), length};
}

std::size_t Len(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t pos = 0; pos < text.size(); pos += charLength(text, pos))
        ++count;
    return count;
}

std::string Left(std::string_view text, std::int64_t count) {
    return std::string(text.substr(0, byteOffset(text, count)));
}

std::string Right(std::string_view text, std::int64_t count) {
    if (count <= 0) return {};
    // Counted from the start, so that the cut falls where the forward reading puts it even in
    // text with invalid bytes.
    const auto length = static_cast<std::int64_t>(Len(text));
    if (count >= length) return std::string(text);
    return std::string(text.substr(byteOffset(text, length - count)));
}

std::string Mid(std::string_view text, std::int64_t start) {
    return std::string(text.substr(byteOffset(text, start < 1 ? 0 : start - 1)));
}

std::string Mid(std::string_view text, std::int64_t start, std::int64_t count) {
    return Left(text.substr(byteOffset(text, start < 1 ? 0 : start - 1)), count);
}

std::string UCase(std::string_view text) {
    std::string upper(text);
    for (std::size_t pos = 0; pos < upper.size();) {
        const std::size_t length = charLength(upper, pos);
        const auto lead = static_cast<unsigned char>(upper[pos]);
        const auto next = length == 2 ? static_cast<unsigned char>(upper[pos + 1]) : 0;
        if (lead >= 'a' && lead <= 'z') {
            upper[pos] = static_cast<char>(lead - 0x20);
        } else if (lead == 0xC3 && next >= 0xA0 && next <= 0xBE && next != 0xB7) {
            // U+00E0..U+00FE, except the division sign, sit 0x20 above their capitals.
            upper[pos + 1] = static_cast<char>(next - 0x20);
        } else if (lead == 0xC3 && next == 0xBF) {
            upper.replace(pos, 2, "\xC5\xB8");  // ÿ -> Ÿ (U+0178)
        } else if (lead == 0xC5 && next == 0x93) {
            upper[pos + 1] = static_cast<char>(0x92);  // œ -> Œ
        }
        pos += length;
    }
    return upper;
}

std::string searchKey(std::string_view text) {
    // The capitals U+00C0 to U+00DE by their letter without accent; the multiplication sign among them
    // (U+00D7) is no letter and stays.
    static constexpr std::string_view kSansAccent = "AAAAAAACEEEEIIIIDNOOOOO.OUUUUYT";
    const std::string upper = UCase(text);
    std::string key;
    key.reserve(upper.size());
    for (std::size_t pos = 0; pos < upper.size();) {
        const std::size_t length = charLength(upper, pos);
        const auto lead = static_cast<unsigned char>(upper[pos]);
        const auto next = length == 2 ? static_cast<unsigned char>(upper[pos + 1]) : 0;
        if (lead == 0xC3 && next >= 0x80 && next <= 0x9E && next != 0x97) {
            if (next == 0x86) {
                key += "AE";
            } else if (next == 0x9E) {
                key += "TH";
            } else {
                key += kSansAccent[next - 0x80];
            }
        } else if (lead == 0xC5 && next == 0x92) {
            key += "OE";
        } else if (lead == 0xC5 && next == 0xB8) {
            key += 'Y';
        } else {
            key.append(upper, pos, length);
        }
        pos += length;
    }
    return key;
}

std::string zeroPad(std::int64_t value, int width) {
    // Through the unsigned magnitude, so that the most negative value has one too.
    const std::uint64_t magnitude =
        value < 0 ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
    std::string digits = std::to_string(magnitude);
    if (width > 0 && digits.size() < static_cast<std::size_t>(width))
        digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
    return value < 0 ? "-" + digits : digits;
}

bool allDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string padZeros(std::string_view text, int width) {
    auto length = static_cast<int>(Len(text));
    if (length >= width) return std::string(text);
    return std::string(static_cast<std::size_t>(width - length), '0').append(text);
}

}  // namespace base
