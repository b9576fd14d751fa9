#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mvdb {

// The marks that separate attributes, values and sub-values in a record's whole text. They are bytes
// that never occur in UTF-8 text.
inline constexpr char kAttributeMark = '\xFE';
inline constexpr char kValueMark = '\xFD';
inline constexpr char kSubValueMark = '\xFC';

// Piece `index` (from 1) of `whole` cut at `mark`, or the empty string when there is none. Walks only
// `whole`, and stops as soon as the marks run out.
std::string_view piece(std::string_view whole, char mark, std::int64_t index);

// Every piece of `whole` cut at `mark`, from the first, into `out` (emptied first), in one pass: n marks
// give n + 1 pieces, the empty text one empty piece. Stops after `most` pieces. For a reader of every
// value of a long list, which piece() would walk again from the start for each.
void splitPieces(std::string_view whole, char mark, std::vector<std::string_view>& out,
                 std::size_t most = std::numeric_limits<std::size_t>::max());

// Where a record read from or made for a file goes back to on DBWrite and DBDelete.
class RecordSink {
public:
    virtual ~RecordSink() = default;
    virtual void writeRecord(const std::string& key, const std::string& wholeText) = 0;
    virtual void deleteRecord(const std::string& key) = 0;
};

// The dynamic record: record buffer, query request and reply, and working table (row is attribute,
// column is value). Attributes, values and sub-values are numbered from 1.
//
// It behaves exactly like its whole text with marks: reading an address that does not exist gives the
// empty string; writing one creates it and all before it; a text written with marks in it becomes
// that many attributes, values or sub-values. The empty text is the record with no attribute
// (DCount 0). A table of thousands of rows reads a cell without walking the rows before it: a record
// made from a whole text keeps that text with where each attribute starts, which costs one pass over
// it (a display reads thousands of records and changes few); its first change cuts it into one string
// per attribute, the form every later change works on.
class DynamicRecord {
public:
    DynamicRecord() = default;
    explicit DynamicRecord(std::string_view wholeText);

    // Whole text, with marks.
    std::string text() const;
    void setText(std::string_view wholeText);
    // The same as setText, keeping the string itself rather than a copy.
    void takeText(std::string&& wholeText);
    // Replaces the whole text by the one `read` puts in the string it is given, whose storage is the
    // record's own where it has some: a buffer that takes one record after another then allocates
    // nothing. When `read` gives false or throws, having left the string alone, the record stays as it
    // was.
    bool readText(const std::function<bool(std::string&)>& read);

    // Reads; an address that does not exist gives the empty string. Indexes below 1 give the empty
    // string too.
    std::string operator()(std::int64_t attribute) const;
    std::string operator()(std::int64_t attribute, std::int64_t value) const;
    std::string operator()(std::int64_t attribute, std::int64_t value, std::int64_t subValue) const;
    // The same reads without a copy; the view lasts until the record next changes.
    std::string_view view(std::int64_t attribute) const;
    std::string_view view(std::int64_t attribute, std::int64_t value) const;
    std::string_view view(std::int64_t attribute, std::int64_t value, std::int64_t subValue) const;

    // Writes, creating the address and all before it. Indexes below 1 are ignored.
    void set(std::int64_t attribute, std::string_view text);
    void set(std::int64_t attribute, std::int64_t value, std::string_view text);
    void set(std::int64_t attribute, std::int64_t value, std::int64_t subValue, std::string_view text);

    // Number of attributes; 0 for the empty record.
    std::int64_t DCount() const;
    // Number of values of an attribute; 0 when it is empty or absent.
    std::int64_t DCount(std::int64_t attribute) const;

    // Opens a new attribute at `row` holding `value` in value 1 and moves the later ones down. A row
    // past the end creates the empty attributes before it.
    void Insert(std::int64_t row, std::string_view value);
    // Removes attribute `row` and closes the gap; a row that does not exist changes nothing.
    void Delete(std::int64_t row);

    // The file and key this record was read from or made for.
    void bind(std::shared_ptr<RecordSink> file, std::string key);
    const std::string& key() const { return m_key; }
    bool isBound() const { return m_file != nullptr; }
    // Writes the record to its file under its key; fails with kNotBound when it has none.
    void DBWrite() const;
    // Deletes the record from its file; fails with kNotBound when it has none.
    void DBDelete() const;

    bool operator==(const DynamicRecord& other) const;

private:
    // Finds where each attribute of m_whole starts; the record is then read in place.
    void pack();
    // Cuts a packed record into m_attributes, before its first change.
    void unpack();
    // Unpacks before a change to `attribute` whose `text` may be a view of this very record. Unpacking
    // frees the packed text, growing past the capacity moves every attribute (a short one with its
    // bytes), and a write inside an attribute can move its bytes: then `text` is first copied into
    // `keep`. Gives the view to write.
    std::string_view stableText(std::string_view text, std::int64_t attribute, std::string& keep);
    void normalize();
    // Attribute `attribute` (from 1), created with the empty ones before it when missing.
    std::string& attributeForWrite(std::int64_t attribute);
    // Cuts attribute `attribute` into several where a write left attribute marks in it.
    void spliceAttribute(std::int64_t attribute);

    // Packed: the whole text and the start of each attribute in it (none for the empty text).
    bool m_packed = false;
    std::string m_whole;
    std::vector<std::size_t> m_starts;
    // Otherwise each attribute's text, values and sub-values marked.
    std::vector<std::string> m_attributes;
    std::shared_ptr<RecordSink> m_file;
    std::string m_key;
};

}  // namespace mvdb
