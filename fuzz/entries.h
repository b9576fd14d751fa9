#pragma once

#include <string_view>

// The entry points the fuzzers and the corpus replayer share. Each takes any bytes; a base::Error is
// an answer (the input was refused with a message), anything else escaping is a finding.
namespace fuzz {

// Parses the bytes as a sentence and as a list of attributes.
void sentence(std::string_view bytes);
// Reads the bytes as a record's text, then uses the bytes again as a short program of set, read,
// Insert and Delete, and checks that the record's text reads back as the same record.
void record(std::string_view bytes);
// Reads the bytes as a line of `zandorel load`, and writes back what it read.
void loadLine(std::string_view bytes);
// Plays the bytes as scenario lines after `init`, on a service in memory.
void playLines(std::string_view bytes);

}  // namespace fuzz
