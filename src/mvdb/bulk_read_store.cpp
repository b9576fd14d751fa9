#include "mvdb/bulk_read_store.h"

#include <algorithm>

#include "mvdb/dictionary.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/sort_key.h"

namespace mvdb {
namespace {

enum class Holding { Nothing, Whole, ByValue };

struct Rule {
    Holding how = Holding::Nothing;
    int field = -1;  // ByValue: the index number whose values are fetched one at a time
};

Rule ruleFor(const std::string& file) {
    const FileDictionary& dictionary = dictionaryFor(file);
    // Work files are the workstation's own; files the service does not describe are left alone.
    if (dictionary.scratch || dictionary.file.empty()) return {};
    // The planned interventions pile up day after day for years, and a display needs one or two days.
    if (const FieldSource* date = file == "SSIADTOURNEE" ? dictionary.find("DateTournee") : nullptr)
        return {Holding::ByValue, dictionary.indexOf(*date)};
    return {Holding::Whole};
}

bool aboveLow(const std::string& sortKey, const KeyRange& range) {
    return range.lowInclusive ? sortKey >= range.low : sortKey > range.low;
}

bool belowHigh(const std::string& sortKey, const KeyRange& range) {
    if (range.high.empty()) return true;
    return range.highInclusive ? sortKey <= range.high : sortKey < range.high;
}

// Every sort key that `inner` admits, `outer` admits too.
bool within(const KeyRange& inner, const KeyRange& outer) {
    if (inner.field != outer.field) return false;
    if (inner.low != outer.low) {
        if (inner.low < outer.low) return false;
    } else if (!outer.lowInclusive && inner.lowInclusive) {
        return false;
    }
    if (outer.high.empty()) return true;
    if (inner.high.empty()) return false;
    if (inner.high != outer.high) return inner.high < outer.high;
    return outer.highInclusive || !inner.highInclusive;
}

bool oneValue(const KeyRange& range) {
    return !range.high.empty() && range.low == range.high && range.lowInclusive && range.highInclusive;
}

using Records = std::vector<std::pair<std::string, std::string>>;

void sortByKey(Records& records) {
    const auto byKey = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (!std::is_sorted(records.begin(), records.end(), byKey))
        std::stable_sort(records.begin(), records.end(), byKey);
    // A record found through several values of a field comes more than once.
    records.erase(std::unique(records.begin(), records.end(),
                              [](const auto& a, const auto& b) { return a.first == b.first; }),
                  records.end());
}

}  // namespace

BulkReadStore::BulkReadStore(std::unique_ptr<Store> inner) : ForwardingStore(std::move(inner)) {}

std::shared_ptr<BulkReadStore::Held> BulkReadStore::whole(const std::string& file) {
    if (!m_active || ruleFor(file).how != Holding::Whole) return nullptr;
    auto it = m_held.find(file);
    if (it != m_held.end() && it->second && it->second->whole) return it->second;
    // Every file held whole comes in the same exchange: on a server, one wait instead of one per file.
    std::vector<std::string> files{file};
    for (const std::string& other : serviceFiles()) {
        if (other == file || ruleFor(other).how != Holding::Whole || !hasFile(other)) continue;
        auto held = m_held.find(other);
        if (held == m_held.end() || !held->second || !held->second->whole) files.push_back(other);
    }
    std::map<std::string, std::shared_ptr<Held>> fetched;
    for (const std::string& f : files) {
        fetched[f] = std::make_shared<Held>();
        fetched[f]->whole = true;
    }
    inner().scanFiles(files, [&](const std::string& f, const std::string& key, const std::string& text) {
        fetched.at(f)->records.emplace_back(key, text);
        return true;
    });
    for (auto& [f, held] : fetched) {
        sortByKey(held->records);
        m_held[f] = held;
    }
    return fetched.at(file);
}

std::shared_ptr<BulkReadStore::Held> BulkReadStore::holding(const std::string& file, const KeyRange& range) {
    if (!m_active) return nullptr;
    const Rule rule = ruleFor(file);
    // A range of no index of the file is the inner store's to refuse, with its own message.
    if (range.field < 0 || range.field >= static_cast<int>(dictionaryFor(file).indexed.size()))
        return nullptr;
    if (rule.how == Holding::Whole) return whole(file);
    if (rule.how != Holding::ByValue || range.field != rule.field) return nullptr;
    std::shared_ptr<Held>& held = m_held[file];
    if (held && std::any_of(held->covers.begin(), held->covers.end(),
                            [&](const KeyRange& cover) { return within(range, cover); }))
        return held;
    if (!oneValue(range)) return nullptr;
    // A new set of records rather than a change of the old one: a walk over the old may be under way.
    auto more = held ? std::make_shared<Held>(*held) : std::make_shared<Held>();
    more->indexes.clear();
    inner().scanRange(file, range, [&](const std::string& key, const std::string& text) {
        more->records.emplace_back(key, text);
        return true;
    });
    sortByKey(more->records);
    more->covers.push_back(range);
    held = more;
    return held;
}

std::shared_ptr<BulkReadStore::Held> BulkReadStore::holdingKey(const std::string& file,
                                                               const std::string& key) {
    if (!m_active) return nullptr;
    const Rule rule = ruleFor(file);
    if (rule.how == Holding::Whole) return whole(file);
    if (rule.how != Holding::ByValue) return nullptr;
    auto it = m_held.find(file);
    if (it == m_held.end() || !it->second) return nullptr;
    // Only a field drawn from the key tells, from the key alone, whether its record would be held.
    const FieldSource& source = dictionaryFor(file).indexed[static_cast<std::size_t>(rule.field)];
    if (source.kind == FieldSource::Kind::Attribute) return nullptr;
    static const DynamicRecord noRecord;
    const std::string value = sortKey(source.firstValue(key, noRecord));
    for (const KeyRange& cover : it->second->covers) {
        if (aboveLow(value, cover) && belowHigh(value, cover)) return it->second;
    }
    return nullptr;
}

const std::string* BulkReadStore::find(const Held& held, const std::string& key) const {
    auto it = std::lower_bound(held.records.begin(), held.records.end(), key,
                               [](const auto& record, const std::string& k) { return record.first < k; });
    if (it == held.records.end() || it->first != key) return nullptr;
    return &it->second;
}

const std::vector<std::pair<std::string, std::size_t>>& BulkReadStore::index(Held& held,
                                                                             const std::string& file,
                                                                             int field) {
    auto [it, fresh] = held.indexes.try_emplace(field);
    if (!fresh) return it->second;
    // The entries the inner store keeps for these records, made by the same routine.
    const FieldSource& source = dictionaryFor(file).indexed[static_cast<std::size_t>(field)];
    std::vector<std::pair<std::string, std::size_t>>& entries = it->second;
    static const DynamicRecord noRecord;
    for (std::size_t i = 0; i < held.records.size(); ++i) {
        const auto& [key, text] = held.records[i];
        if (source.kind != FieldSource::Kind::Attribute) {
            entries.emplace_back(sortKey(source.firstValue(key, noRecord)), i);
            continue;
        }
        const DynamicRecord record(text);
        for (std::string_view value : source.values(key, record))
            entries.emplace_back(sortKey(value), i);
    }
    std::sort(entries.begin(), entries.end());
    entries.erase(std::unique(entries.begin(), entries.end()), entries.end());
    return entries;
}

void BulkReadStore::visitRange(const std::shared_ptr<Held>& held, const std::string& file,
                               const KeyRange& range, const RecordVisitor& visit) {
    const auto& entries = index(*held, file, range.field);
    auto it = std::lower_bound(entries.begin(), entries.end(), range.low,
                               [](const auto& entry, const std::string& low) { return entry.first < low; });
    for (; it != entries.end() && belowHigh(it->first, range); ++it) {
        if (!aboveLow(it->first, range)) continue;
        const auto& [key, text] = held->records[it->second];
        if (!visit(key, text)) return;
    }
}

void BulkReadStore::release() {
    m_held.clear();
    m_active = false;
}

void BulkReadStore::releaseFor(const std::string& file) {
    if (!dictionaryFor(file).scratch) release();
}

void BulkReadStore::createFile(const std::string& file) {
    if (!hasFile(file)) release();
    ForwardingStore::createFile(file);
}

std::optional<std::string> BulkReadStore::read(const std::string& file, const std::string& key) {
    if (std::shared_ptr<Held> held = holdingKey(file, key)) {
        const std::string* text = find(*held, key);
        if (!text) return std::nullopt;
        return *text;
    }
    return ForwardingStore::read(file, key);
}

bool BulkReadStore::readInto(const std::string& file, const std::string& key, std::string& text) {
    if (std::shared_ptr<Held> held = holdingKey(file, key)) {
        const std::string* found = find(*held, key);
        if (!found) return false;
        text = *found;
        return true;
    }
    return ForwardingStore::readInto(file, key, text);
}

void BulkReadStore::write(const std::string& file, const std::string& key, const std::string& text) {
    releaseFor(file);
    ForwardingStore::write(file, key, text);
}

void BulkReadStore::remove(const std::string& file, const std::string& key) {
    releaseFor(file);
    ForwardingStore::remove(file, key);
}

void BulkReadStore::writeBatch(const std::string& file,
                               const std::vector<std::pair<std::string, std::string>>& records) {
    releaseFor(file);
    ForwardingStore::writeBatch(file, records);
}

void BulkReadStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    releaseFor(file);
    ForwardingStore::removeBatch(file, keys);
}

void BulkReadStore::scanAll(const std::string& file, const RecordVisitor& visit) {
    std::shared_ptr<Held> held = whole(file);
    if (!held) return ForwardingStore::scanAll(file, visit);
    for (const auto& [key, text] : held->records) {
        if (!visit(key, text)) return;
    }
}

void BulkReadStore::scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    std::shared_ptr<Held> held = holding(file, range);
    if (!held) return ForwardingStore::scanRange(file, range, visit);
    visitRange(held, file, range, visit);
}

std::size_t BulkReadStore::count(const std::string& file) {
    std::shared_ptr<Held> held = whole(file);
    return held ? held->records.size() : ForwardingStore::count(file);
}

bool BulkReadStore::holds(const std::string& file, const KeyRange& range) {
    return holding(file, range) != nullptr;
}

void BulkReadStore::scanHeld(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    auto it = m_held.find(file);
    if (!m_active || it == m_held.end() || !it->second || range.field < 0 ||
        range.field >= static_cast<int>(dictionaryFor(file).indexed.size()))
        return ForwardingStore::scanRange(file, range, visit);
    visitRange(it->second, file, range, visit);
}

void BulkReadStore::begin() {
    release();
    ForwardingStore::begin();
}

void BulkReadStore::beginRead() {
    ForwardingStore::beginRead();
    // Inside a transaction reads see its own changes, which nothing held would.
    if (m_readers++ == 0) m_active = !inTransaction();
}

void BulkReadStore::endRead() {
    if (m_readers > 0 && --m_readers == 0) release();
    ForwardingStore::endRead();
}

}  // namespace mvdb
