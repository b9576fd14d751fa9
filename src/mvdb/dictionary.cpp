#include "mvdb/dictionary.h"

#include <algorithm>
#include <iterator>

#include "base/error.h"
#include "base/text.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/sort_key.h"

namespace mvdb {
namespace {

// Byte offsets of a piece of the key counted in characters, as the dictionary counts them.
std::string_view pieceOfKey(std::string_view key, std::int32_t start, std::int32_t length) {
    std::size_t begin = 0;
    std::int32_t index = 1;
    auto advance = [&](std::size_t& at) {
        unsigned char lead = static_cast<unsigned char>(key[at]);
        std::size_t width = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        at = std::min(key.size(), at + width);
    };
    while (begin < key.size() && index < start) {
        advance(begin);
        ++index;
    }
    std::size_t end = begin;
    for (std::int32_t i = 0; i < length && end < key.size(); ++i)
        advance(end);
    return key.substr(begin, end - begin);
}

std::vector<FileDictionary> buildDictionaries() {
    using S = FieldSource;
    const S codeAide5 = S::keyPart(1, 5);
    std::vector<FileDictionary> d;
    // Planned interventions: the key is CodeTournee(3) + CodeAide(5) + date(5) + start(4).
    d.push_back(
        {"SSIADTOURNEE",
         {{"CodeTournee", S::keyPart(1, 3)},
          {"CodeAide", S::keyPart(4, 5)},
          {"DateTournee", S::keyPart(9, 5)},
          {"HeureDebut", S::keyPart(14, 4)}},
         {S::keyPart(1, 3), S::keyPart(4, 5), S::keyPart(9, 5), S::keyPart(14, 4), S::attributeNumber(2)},
         false});
    d.push_back({"SSIADACCORDS", {{"CodeAide", codeAide5}}, {codeAide5, S::attributeNumber(1)}, false});
    // Tournées are found by label prefix, by weekday and by sector code (multi-valued).
    d.push_back({"SSIADCARACTTOURNEE",
                 {},
                 {S::attributeNumber(1), S::attributeNumber(2), S::attributeNumber(8)},
                 false});
    d.push_back({"SSIADPROTOCOLE", {{"CodeAide", codeAide5}}, {codeAide5}, false});
    d.push_back({"SSIADELEMGEST", {{"CodeAide", codeAide5}}, {codeAide5}, false});
    d.push_back({"CIVILAIDE", {}, {}, false});
    d.push_back({"SSIADSOINS", {}, {}, false});
    d.push_back({"TPSTEMPO", {}, {}, true});
    return d;
}

const std::vector<FileDictionary>& dictionaries() {
    static const std::vector<FileDictionary> all = buildDictionaries();
    return all;
}

}  // namespace

std::vector<std::string_view> FieldSource::values(std::string_view key, const DynamicRecord& record) const {
    switch (kind) {
        case Kind::Key:
            return {key};
        case Kind::KeyPart:
            return {pieceOfKey(key, start, length)};
        case Kind::Attribute:
            break;
    }
    std::int64_t count = std::max<std::int64_t>(1, record.DCount(attribute));
    std::vector<std::string_view> out;
    out.reserve(static_cast<std::size_t>(count));
    for (std::int64_t v = 1; v <= count; ++v)
        out.push_back(record.view(attribute, v));
    return out;
}

std::string_view FieldSource::firstValue(std::string_view key, const DynamicRecord& record) const {
    switch (kind) {
        case Kind::Key:
            return key;
        case Kind::KeyPart:
            return pieceOfKey(key, start, length);
        case Kind::Attribute:
            break;
    }
    return record.view(attribute, 1);
}

std::string FieldSource::describe() const {
    switch (kind) {
        case Kind::Key:
            return "K";
        case Kind::KeyPart:
            return "K" + std::to_string(start) + "-" + std::to_string(length);
        case Kind::Attribute:
            break;
    }
    return "A" + std::to_string(attribute);
}

const FieldSource* FileDictionary::find(std::string_view name) const {
    for (const DictionaryItem& item : items) {
        if (item.name == name) return &item.source;
    }
    return nullptr;
}

int FileDictionary::indexOf(const FieldSource& source) const {
    auto it = std::find(indexed.begin(), indexed.end(), source);
    return it == indexed.end() ? -1 : static_cast<int>(it - indexed.begin());
}

std::string FileDictionary::describeIndexes() const {
    std::string text;
    for (const FieldSource& s : indexed)
        text += (text.empty() ? "" : " ") + s.describe();
    return text;
}

std::vector<IndexEntry> indexEntries(const FileDictionary& dictionary, std::string_view key,
                                     std::string_view wholeText) {
    std::vector<IndexEntry> entries;
    if (dictionary.indexed.empty()) return entries;
    DynamicRecord record(wholeText);
    for (std::size_t i = 0; i < dictionary.indexed.size(); ++i) {
        for (std::string_view value : dictionary.indexed[i].values(key, record)) {
            entries.push_back({static_cast<int>(i), sortKey(value)});
        }
    }
    std::sort(entries.begin(), entries.end());
    entries.erase(std::unique(entries.begin(), entries.end()), entries.end());
    return entries;
}

IndexChanges indexChanges(const FileDictionary& dictionary, std::string_view key, const std::string* oldText,
                          const std::string* newText) {
    std::vector<IndexEntry> before =
        oldText ? indexEntries(dictionary, key, *oldText) : std::vector<IndexEntry>{};
    std::vector<IndexEntry> after =
        newText ? indexEntries(dictionary, key, *newText) : std::vector<IndexEntry>{};
    IndexChanges changes;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                        std::back_inserter(changes.gone));
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                        std::back_inserter(changes.added));
    return changes;
}

void checkKey(const std::string& file, const std::string& key) {
    if (key.empty()) throw base::Error(base::codes::kBadData, "Écriture dans " + file + " : clé vide");
    if (key.find_first_of("\xFC\xFD\xFE") != std::string::npos) {
        throw base::Error(base::codes::kBadData,
                          "Écriture dans " + file + " : la clé contient un séparateur");
    }
}

void checkNewFileName(const std::string& file) {
    if (!isValidFileName(file)) {
        throw base::Error(base::codes::kUnknownFile,
                          "Nom de fichier incorrect : « " + file + " » (lettres, chiffres et _ seulement)");
    }
}

const FileDictionary& dictionaryFor(std::string_view file) {
    for (const FileDictionary& d : dictionaries()) {
        if (d.file == file) return d;
    }
    static const FileDictionary empty;
    return empty;
}

const std::vector<std::string>& serviceFiles() {
    static const std::vector<std::string> names = {"CIVILAIDE",     "SSIADACCORDS",   "SSIADCARACTTOURNEE",
                                                   "SSIADELEMGEST", "SSIADPROTOCOLE", "SSIADSOINS",
                                                   "SSIADTOURNEE",  "TPSTEMPO"};
    return names;
}

bool isValidFileName(std::string_view name) {
    if (name.empty() || name.size() > 64) return false;
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    });
}

}  // namespace mvdb
