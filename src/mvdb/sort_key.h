#pragma once

#include <string>
#include <string_view>

// Order-preserving byte keys for values, so that an index of plain bytes serves the database's
// comparison: numbers compare as numbers (exactly, whatever their length), other texts as bytes.
// Every number sorts before every other text; among numbers the key order is the numeric order, and
// among texts it is the byte order. Equal numbers written differently ("08", "8,0") get equal keys.
namespace mvdb {

std::string sortKey(std::string_view value);

// The first byte of every number's key and of every text's key; a key range within one of these
// segments never reaches into the other.
inline constexpr char kNumberSegment = '\x10';
inline constexpr char kTextSegment = '\x20';

// The smallest key greater than every key that begins with `prefix`; empty when there is none
// (the prefix is all 0xFF bytes).
std::string prefixEnd(std::string_view prefix);

// True when some number's text could begin with `prefix` (blanks, signs, digits and separators only).
bool couldBeginNumber(std::string_view prefix);

}  // namespace mvdb
