#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The selection language, parsed:
//   SELECT file [AVEC field op "value" { AND AVEC field op "value" }] [PAR field | PAR-DECR field]
// A field is an attribute number (0 is the key) or a dictionary name. Operators = < > <= >= <>, with
// or without blanks around them. A value ending in "]" means "begins with".
namespace mvdb {

enum class CompareOp { Equal, Less, Greater, LessOrEqual, GreaterOrEqual, NotEqual };

struct Field {
    std::int32_t attribute = -1;  // attribute number, or -1 when the field is a dictionary name
    std::string name;             // the dictionary name, as written
    bool operator==(const Field&) const = default;
};

struct Condition {
    Field field;
    CompareOp op = CompareOp::Equal;
    std::string value;         // without its quotes, and without the "]" of a prefix
    bool prefix = false;       // the value ended in "]": the field begins with `value`
    std::size_t position = 0;  // 1-based character position of the field in the sentence
    bool operator==(const Condition&) const = default;
};

enum class SortOrder { Ascending, Descending };

struct SortSpec {
    Field field;
    SortOrder order = SortOrder::Ascending;
    std::size_t position = 0;  // 1-based character position of the field in the sentence
    bool operator==(const SortSpec&) const = default;
};

struct Sentence {
    std::string file;
    std::vector<Condition> conditions;
    std::optional<SortSpec> sort;
    bool operator==(const Sentence&) const = default;
};

// Parses a sentence. Fails with base::Error, code kSentence, naming the position and what was
// expected, and quoting the sentence:
//   Phrase incorrecte à la position 24 : opérateur (= < > <= >= <>) attendu dans « SELECT ... »
Sentence parseSentence(std::string_view text);

// Parses the list of attributes to return ("0 1 2 ", blank-separated, trailing blanks allowed).
// Fails with base::Error, code kSentence, on anything but numbers and blanks, or an empty list.
std::vector<std::int32_t> parseAttributeList(std::string_view text);

}  // namespace mvdb
