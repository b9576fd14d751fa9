#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mvdb {

class DynamicRecord;

// Where a field's values come from: the key, a piece of the key (characters, from 1), or an attribute
// (all of its values: a multi-valued attribute matches when any value does).
struct FieldSource {
    enum class Kind { Key, KeyPart, Attribute };
    Kind kind = Kind::Key;
    std::int32_t attribute = 0;
    std::int32_t start = 1;
    std::int32_t length = 0;

    static FieldSource key() { return {}; }
    static FieldSource keyPart(std::int32_t start, std::int32_t length) {
        return {Kind::KeyPart, 0, start, length};
    }
    static FieldSource attributeNumber(std::int32_t n) {
        return n == 0 ? key() : FieldSource{Kind::Attribute, n, 1, 0};
    }
    bool operator==(const FieldSource&) const = default;

    // The field's values in a record: one value for the key and its pieces; for an attribute, each of
    // its values, and one empty value when it is empty.
    std::vector<std::string_view> values(std::string_view key, const DynamicRecord& record) const;
    // Its first value, for sorting and listing.
    std::string_view firstValue(std::string_view key, const DynamicRecord& record) const;
    // A stable text that names the source, for the store's record of which indexes a file has.
    std::string describe() const;
};

struct DictionaryItem {
    std::string name;
    FieldSource source;
};

// What the database knows of a file beyond its records: the names that sentences may use and the
// fields whose conditions are served by an index.
struct FileDictionary {
    std::string file;
    std::vector<DictionaryItem> items;
    std::vector<FieldSource> indexed;
    bool scratch = false;  // work file: lives with the connection, never synced to disk

    const FieldSource* find(std::string_view name) const;
    // The index number of a source, or -1 when it has no index.
    int indexOf(const FieldSource& source) const;
    std::string describeIndexes() const;
};

// One entry of a file's indexes: the index number and the sort key of one of the record's values.
struct IndexEntry {
    int field = 0;
    std::string sortKey;
    auto operator<=>(const IndexEntry&) const = default;
};

// The index entries of a record, sorted and without repeats.
std::vector<IndexEntry> indexEntries(const FileDictionary& dictionary, std::string_view key,
                                     std::string_view wholeText);

// What a change of one record does to its file's indexes: the entries to remove and those to add. A
// null text stands for no record. Rewriting a record usually changes none.
struct IndexChanges {
    std::vector<IndexEntry> gone, added;
};
IndexChanges indexChanges(const FileDictionary& dictionary, std::string_view key, const std::string* oldText,
                          const std::string* newText);

// Fails with kBadData, naming the file, for a key no store may hold: empty, or holding a mark.
void checkKey(const std::string& file, const std::string& key);

// Fails with kUnknownFile for a name no file may have (see isValidFileName).
void checkNewFileName(const std::string& file);

// The dictionary of a file; a file the service does not describe gets an empty one.
const FileDictionary& dictionaryFor(std::string_view file);

// The files of the service, in the order the screen opens them.
const std::vector<std::string>& serviceFiles();

// True for names the store accepts as file names: letters, digits and "_", at most 64 characters.
bool isValidFileName(std::string_view name);

}  // namespace mvdb
