#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// The text and number rules of the system, in the French locale. Every layer uses these; none
// re-implements one, because the system's results depend on them to the character
// (a start of 883.5 cut to four characters is "883,").
namespace base {

// The text of a number as the system writes it: at most 15 significant digits, decimal comma,
// no trailing zeros, no decimal separator for whole numbers ("8,3", "850", "-0,25").
// Magnitudes of 1e15 and more, or below 1e-4, take the exponent form "1E+15", "1,5E-05".
std::string numberText(double value);

// Reads a text as a number. Accepts an optional sign, digits, and a decimal comma or point;
// blanks around the number are ignored. Empty text, several separators, letters: nullopt.
std::optional<double> parseNumber(std::string_view text);

// True when the text reads as a number under parseNumber's rules.
bool isNumeric(std::string_view text);

// Reads a text as a number, 0 when it is none (for values the system itself wrote).
double toNumber(std::string_view text);

// Compares two values as the database and the tables do: as numbers when both read as numbers
// (exactly, digit by digit, whatever their length), otherwise as UTF-8 text, byte by byte.
// Returns <0, 0 or >0.
int compareValues(std::string_view a, std::string_view b);

// Int of the system: the largest integer not above the value.
double Int(double value);

// Conversion to an integer: the nearest one, halves to the even neighbour (2.5 -> 2, 3.5 -> 4).
std::int64_t roundHalfEven(double value);

// A table's text as a whole number: read as toNumber does, then converted to an integer as above.
int toInteger(std::string_view text);

// Fixed number of decimals with a decimal comma: formatFixed(12.5, 2) is "12,50".
std::string formatFixed(double value, int decimals);
// The same text written at the start of a caller's buffer, without allocating, for the routines that
// run at every mouse move. Empty when the buffer is too small for it.
std::string_view formatFixed(std::span<char> buffer, double value, int decimals);

// Character counts and cuts on UTF-8 text. A character is a code point; invalid bytes count as one
// character each, so no input is refused. Lengths below 0 count as 0.
std::size_t Len(std::string_view text);
std::string Left(std::string_view text, std::int64_t count);
std::string Right(std::string_view text, std::int64_t count);
// Mid from a 1-based character position, to the end when count is omitted.
std::string Mid(std::string_view text, std::int64_t start);
std::string Mid(std::string_view text, std::int64_t start, std::int64_t count);

// Upper case of ASCII and of the accented Latin letters of French names ("é" -> "É").
std::string UCase(std::string_view text);

// A text for searching by: upper case as UCase, accents and ligatures left out ("Hélène" and "HELENE"
// both give "HELENE", "Œuvre" gives "OEUVRE").
std::string searchKey(std::string_view text);

// Whether the text is one or more of the digits 0 to 9, and nothing else.
bool allDigits(std::string_view text);

// A text left-padded with "0" to `width` characters; a longer text is left as it is.
std::string padZeros(std::string_view text, int width);

// Text of a whole number on at least `width` digits, left-padded with "0" (850 -> "0850").
std::string zeroPad(std::int64_t value, int width);

}  // namespace base
