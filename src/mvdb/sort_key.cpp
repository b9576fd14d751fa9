#include "mvdb/sort_key.h"

#include <cstdint>
#include <optional>

namespace mvdb {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Views into the text parsed: building no string keeps a key's making to the one allocation of the key,
// and none for short keys. This runs for every record a selection reads.
struct Decimal {
    bool negative = false;
    std::string_view head, tail;  // significant digits: head then tail, no leading or trailing zero;
                                  // both empty for zero
    std::int64_t exponent = 0;    // value = 0.d1d2... x 10^exponent
};

// The number's syntax is the one of base::parseNumber: blanks, a sign, digits with at most one
// decimal comma or point, blanks. Parsed digit by digit so that no length loses precision.
std::optional<Decimal> decompose(std::string_view text) {
    std::size_t i = 0, n = text.size();
    while (i < n && isBlank(text[i]))
        ++i;
    Decimal d;
    if (i < n && (text[i] == '+' || text[i] == '-')) d.negative = text[i++] == '-';
    const std::size_t integerStart = i;
    while (i < n && isDigit(text[i]))
        ++i;
    std::string_view integer = text.substr(integerStart, i - integerStart), fraction;
    if (i < n && (text[i] == ',' || text[i] == '.')) {
        const std::size_t fractionStart = ++i;
        while (i < n && isDigit(text[i]))
            ++i;
        fraction = text.substr(fractionStart, i - fractionStart);
    }
    while (i < n && isBlank(text[i]))
        ++i;
    if (i != n || (integer.empty() && fraction.empty())) return std::nullopt;

    std::size_t firstNonZero = integer.find_first_not_of('0');
    if (firstNonZero != std::string_view::npos) {
        d.head = integer.substr(firstNonZero);
        d.tail = fraction;
        d.exponent = static_cast<std::int64_t>(integer.size() - firstNonZero);
    } else {
        std::size_t lead = fraction.find_first_not_of('0');
        if (lead == std::string_view::npos) return d;  // zero, whatever its sign
        d.head = fraction.substr(lead);
        d.exponent = -static_cast<std::int64_t>(lead);
    }
    std::size_t last = d.tail.find_last_not_of('0');
    if (last == std::string_view::npos) {
        d.tail = {};
        d.head = d.head.substr(0, d.head.find_last_not_of('0') + 1);
    } else {
        d.tail = d.tail.substr(0, last + 1);
    }
    return d;
}

void appendExponent(std::string& out, std::int64_t exponent, bool invert) {
    // Texts are shorter than 2^31 characters, so the exponent fits a biased 32-bit number.
    auto biased = static_cast<std::uint32_t>(exponent + 0x80000000LL);
    if (invert) biased = ~biased;
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>((biased >> shift) & 0xFF);
}

}  // namespace

std::string sortKey(std::string_view value) {
    std::optional<Decimal> d = decompose(value);
    std::string key;
    if (!d) {
        key.reserve(value.size() + 1);
        key += kTextSegment;
        key += value;
        return key;
    }
    key.reserve(d->head.size() + d->tail.size() + 7);
    key += kNumberSegment;
    if (d->head.empty()) {
        key += '\x02';
    } else if (!d->negative) {
        key += '\x03';
        appendExponent(key, d->exponent, false);
        key += d->head;
        key += d->tail;
    } else {
        // A negative number orders backwards: inverted exponent and digits, and a terminator above
        // every inverted digit so that -1,2 sorts after -1,23.
        key += '\x01';
        appendExponent(key, d->exponent, true);
        for (std::string_view digits : {d->head, d->tail}) {
            for (char c : digits)
                key += static_cast<char>(0xFF - static_cast<unsigned char>(c));
        }
        key += '\xFF';
    }
    return key;
}

std::string prefixEnd(std::string_view prefix) {
    std::string end(prefix);
    while (!end.empty() && static_cast<unsigned char>(end.back()) == 0xFF)
        end.pop_back();
    if (!end.empty()) end.back() = static_cast<char>(static_cast<unsigned char>(end.back()) + 1);
    return end;
}

bool couldBeginNumber(std::string_view prefix) {
    for (char c : prefix) {
        if (!isDigit(c) && !isBlank(c) && c != '+' && c != '-' && c != ',' && c != '.') return false;
    }
    return true;
}

}  // namespace mvdb
