#pragma once

#include <string>
#include <string_view>

// Records as JSON Lines, the exchange format of `zandorel load` and `dump`:
//   {"file":"SSIADTOURNEE","key":"...","attrs":["0900", ["v1","v2"], [["s1","s2"]]]}
// An attribute is a string when it holds one value of one sub-value, otherwise an array of values; a
// value is a string, or an array of its sub-values when it has several.
namespace app {

struct RecordLine {
    std::string file;
    std::string key;
    std::string text;  // the record's whole text, with marks
};

// One line of JSON, without its line end. Bytes that are not UTF-8 are written as U+FFFD.
std::string recordToJson(const RecordLine& record);

// Reads one line. Fails with base::Error (kBadData) saying what is wrong with the line, without its
// number: the caller adds it.
RecordLine recordFromJson(std::string_view line);

}  // namespace app
