#include "mvdb/dynamic_record.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

#include "base/error.h"

namespace mvdb {
namespace {

// Writing an address pads the record up to it, so the cost of a write grows with its index. An index
// computed from bad data (a date read as a row number) must fail rather than exhaust memory; a
// million is far beyond any table or multi-value list the screens build.
constexpr std::int64_t kMaxWriteIndex = 1'000'000;

void checkWriteIndex(std::int64_t index) {
    if (index > kMaxWriteIndex) {
        throw base::Error(base::codes::kBadData,
                          "Adresse trop grande dans un enregistrement : " + std::to_string(index));
    }
}

// Replaces piece `index` (from 1) of `whole` cut at `mark` with `text`, adding the marks that open
// the missing pieces before it. `text` goes in as is: marks inside it make more pieces.
void replacePiece(std::string& whole, char mark, std::int64_t index, std::string_view text) {
    std::size_t start = 0;
    for (std::int64_t i = 1; i < index; ++i) {
        const std::size_t next = whole.find(mark, start);
        if (next == std::string::npos) {
            whole.append(static_cast<std::size_t>(index - i), mark);
            start = whole.size();
            break;
        }
        start = next + 1;
    }
    const std::size_t end = whole.find(mark, start);
    whole.replace(start, end == std::string::npos ? std::string::npos : end - start, text);
}

std::vector<std::string> splitAttributes(std::string_view wholeText) {
    std::vector<std::string> attributes;
    attributes.reserve(
        1 + static_cast<std::size_t>(std::count(wholeText.begin(), wholeText.end(), kAttributeMark)));
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = wholeText.find(kAttributeMark, start);
        if (end == std::string_view::npos) {
            attributes.emplace_back(wholeText.substr(start));
            return attributes;
        }
        attributes.emplace_back(wholeText.substr(start, end - start));
        start = end + 1;
    }
}

}  // namespace

std::string_view piece(std::string_view whole, char mark, std::int64_t index) {
    if (index < 1) return {};
    std::size_t start = 0;
    for (std::int64_t i = 1; i < index; ++i) {
        const std::size_t next = whole.find(mark, start);
        if (next == std::string_view::npos) return {};
        start = next + 1;
    }
    const std::size_t end = whole.find(mark, start);
    return whole.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
}

void splitPieces(std::string_view whole, char mark, std::vector<std::string_view>& out, std::size_t most) {
    out.clear();
    std::size_t start = 0;
    while (out.size() < most) {
        const std::size_t end = whole.find(mark, start);
        if (end == std::string_view::npos) {
            out.push_back(whole.substr(start));
            return;
        }
        out.push_back(whole.substr(start, end - start));
        start = end + 1;
    }
}

DynamicRecord::DynamicRecord(std::string_view wholeText) {
    setText(wholeText);
}

std::string DynamicRecord::text() const {
    if (m_packed) return m_whole;
    std::size_t length = m_attributes.size();
    for (const std::string& attribute : m_attributes)
        length += attribute.size();
    std::string whole;
    whole.reserve(length);
    for (std::size_t i = 0; i < m_attributes.size(); ++i) {
        if (i > 0) whole += kAttributeMark;
        whole += m_attributes[i];
    }
    return whole;
}

void DynamicRecord::setText(std::string_view wholeText) {
    m_whole.assign(wholeText);
    pack();
}

void DynamicRecord::takeText(std::string&& wholeText) {
    m_whole = std::move(wholeText);
    pack();
}

bool DynamicRecord::readText(const std::function<bool(std::string&)>& read) {
    // A packed record lends its text's storage and gets it back, unchanged, when nothing was read.
    std::string buffer = m_packed ? std::move(m_whole) : std::string();
    bool found = false;
    try {
        found = read(buffer);
    } catch (...) {
        if (m_packed) m_whole = std::move(buffer);
        throw;
    }
    if (!found) {
        if (m_packed) m_whole = std::move(buffer);
        return false;
    }
    m_whole = std::move(buffer);
    pack();
    return true;
}

void DynamicRecord::pack() {
    m_packed = true;
    m_attributes.clear();
    m_starts.clear();
    if (m_whole.empty()) return;
    // Records are short: a count and one pass over the bytes beat a search per mark.
    m_starts.resize(1 + static_cast<std::size_t>(std::count(m_whole.begin(), m_whole.end(), kAttributeMark)));
    std::size_t attribute = 1;
    for (std::size_t i = 0; i < m_whole.size(); ++i) {
        if (m_whole[i] == kAttributeMark) m_starts[attribute++] = i + 1;
    }
}

void DynamicRecord::unpack() {
    if (!m_packed) return;
    m_attributes = m_whole.empty() ? std::vector<std::string>() : splitAttributes(m_whole);
    m_packed = false;
    m_whole = std::string();
    m_starts = std::vector<std::size_t>();
}

std::string_view DynamicRecord::stableText(std::string_view text, std::int64_t attribute, std::string& keep) {
    const auto index = static_cast<std::size_t>(attribute - 1);
    const std::less<const char*> before;
    const bool inTarget = index < m_attributes.size() && !before(text.data(), m_attributes[index].data()) &&
                          !before(m_attributes[index].data() + m_attributes[index].size(), text.data());
    if (m_packed || index >= m_attributes.capacity() || inTarget) {
        keep.assign(text);
        text = keep;
    }
    unpack();
    return text;
}

bool DynamicRecord::operator==(const DynamicRecord& other) const {
    if (DCount() != other.DCount()) return false;
    for (std::int64_t attribute = 1; attribute <= DCount(); ++attribute) {
        if (view(attribute) != other.view(attribute)) return false;
    }
    return true;
}

std::string DynamicRecord::operator()(std::int64_t attribute) const {
    return std::string(view(attribute));
}

std::string DynamicRecord::operator()(std::int64_t attribute, std::int64_t value) const {
    return std::string(view(attribute, value));
}

std::string DynamicRecord::operator()(std::int64_t attribute, std::int64_t value,
                                      std::int64_t subValue) const {
    return std::string(view(attribute, value, subValue));
}

std::string_view DynamicRecord::view(std::int64_t attribute) const {
    if (attribute < 1 || attribute > DCount()) return {};
    const auto index = static_cast<std::size_t>(attribute - 1);
    if (!m_packed) return m_attributes[index];
    const std::size_t start = m_starts[index];
    const std::size_t end = index + 1 < m_starts.size() ? m_starts[index + 1] - 1 : m_whole.size();
    return std::string_view(m_whole).substr(start, end - start);
}

std::string_view DynamicRecord::view(std::int64_t attribute, std::int64_t value) const {
    return piece(view(attribute), kValueMark, value);
}

std::string_view DynamicRecord::view(std::int64_t attribute, std::int64_t value,
                                     std::int64_t subValue) const {
    return piece(view(attribute, value), kSubValueMark, subValue);
}

void DynamicRecord::set(std::int64_t attribute, std::string_view text) {
    if (attribute < 1) return;
    std::string keep;
    text = stableText(text, attribute, keep);
    attributeForWrite(attribute) = text;
    spliceAttribute(attribute);
}

void DynamicRecord::set(std::int64_t attribute, std::int64_t value, std::string_view text) {
    if (attribute < 1 || value < 1) return;
    checkWriteIndex(value);
    std::string keep;
    text = stableText(text, attribute, keep);
    replacePiece(attributeForWrite(attribute), kValueMark, value, text);
    spliceAttribute(attribute);
}

void DynamicRecord::set(std::int64_t attribute, std::int64_t value, std::int64_t subValue,
                        std::string_view text) {
    if (attribute < 1 || value < 1 || subValue < 1) return;
    checkWriteIndex(value);
    checkWriteIndex(subValue);
    std::string keep;
    text = stableText(text, attribute, keep);
    std::string& whole = attributeForWrite(attribute);
    std::string changed(piece(whole, kValueMark, value));
    replacePiece(changed, kSubValueMark, subValue, text);
    replacePiece(whole, kValueMark, value, changed);
    spliceAttribute(attribute);
}

std::int64_t DynamicRecord::DCount() const {
    return static_cast<std::int64_t>(m_packed ? m_starts.size() : m_attributes.size());
}

std::int64_t DynamicRecord::DCount(std::int64_t attribute) const {
    const std::string_view whole = view(attribute);
    if (whole.empty()) return 0;
    std::int64_t count = 1;
    for (const char c : whole)
        count += c == kValueMark ? 1 : 0;
    return count;
}

void DynamicRecord::Insert(std::int64_t row, std::string_view value) {
    if (row < 1) return;
    checkWriteIndex(row);
    std::string keep;
    // Cut (and so copied) before the attributes move.
    std::vector<std::string> inserted = splitAttributes(stableText(value, row, keep));
    const auto index = static_cast<std::size_t>(row - 1);
    if (index > m_attributes.size()) m_attributes.resize(index);
    m_attributes.insert(m_attributes.begin() + static_cast<std::ptrdiff_t>(index),
                        std::make_move_iterator(inserted.begin()), std::make_move_iterator(inserted.end()));
    normalize();
}

void DynamicRecord::Delete(std::int64_t row) {
    if (row < 1 || row > DCount()) return;
    unpack();
    m_attributes.erase(m_attributes.begin() + static_cast<std::ptrdiff_t>(row - 1));
    normalize();
}

void DynamicRecord::bind(std::shared_ptr<RecordSink> file, std::string key) {
    m_file = std::move(file);
    m_key = std::move(key);
}

void DynamicRecord::DBWrite() const {
    if (!m_file) {
        throw base::Error(base::codes::kNotBound, "Enregistrement sans fichier : écriture impossible");
    }
    m_file->writeRecord(m_key, text());
}

void DynamicRecord::DBDelete() const {
    if (!m_file) {
        throw base::Error(base::codes::kNotBound, "Enregistrement sans fichier : suppression impossible");
    }
    m_file->deleteRecord(m_key);
}

// The whole text "" has no attribute; the vector must say the same, or DCount and equality would
// tell apart two records with the same text.
void DynamicRecord::normalize() {
    if (m_attributes.size() == 1 && m_attributes.front().empty()) m_attributes.clear();
}

std::string& DynamicRecord::attributeForWrite(std::int64_t attribute) {
    checkWriteIndex(attribute);
    unpack();
    const auto index = static_cast<std::size_t>(attribute - 1);
    if (index >= m_attributes.size()) m_attributes.resize(index + 1);
    return m_attributes[index];
}

// A write whose text held attribute marks has left several attributes in one string: cut it into
// them, in place, so that the record stays what splicing the text into the whole text would give.
void DynamicRecord::spliceAttribute(std::int64_t attribute) {
    const auto index = static_cast<std::size_t>(attribute - 1);
    if (m_attributes[index].find(kAttributeMark) != std::string::npos) {
        std::vector<std::string> pieces = splitAttributes(m_attributes[index]);
        m_attributes[index] = std::move(pieces.front());
        m_attributes.insert(m_attributes.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                            std::make_move_iterator(pieces.begin() + 1),
                            std::make_move_iterator(pieces.end()));
    }
    normalize();
}

}  // namespace mvdb
