#include "week/read_once_store.h"

#include "base/error.h"
#include "mvdb/dictionary.h"

namespace control {
namespace {

bool isWorkFile(const std::string& file) {
    return mvdb::dictionaryFor(file).scratch;
}

// One text per range asked: the pieces cannot run into one another, since none holds a 0x01 byte.
std::string rangeId(const std::string& file, const mvdb::KeyRange& range) {
    return file + '\x01' + std::to_string(range.field) + '\x01' + range.low + '\x01' +
           (range.lowInclusive ? "[" : "(") + '\x01' + range.high + '\x01' +
           (range.highInclusive ? "]" : ")");
}

void replay(const std::vector<std::pair<std::string, std::string>>& records,
            const mvdb::RecordVisitor& visit) {
    for (const auto& [key, text] : records) {
        if (!visit(key, text)) return;
    }
}

}  // namespace

bool ReadOnceStore::hasFile(const std::string& file) {
    return m_work.count(file) != 0 || m_inner.hasFile(file);
}

void ReadOnceStore::createFile(const std::string& file) {
    if (isWorkFile(file)) {
        m_work[file];
        return;
    }
    if (!m_inner.hasFile(file)) refuse(file, "");
}

const std::optional<std::string>& ReadOnceStore::cachedRead(const std::string& file, const std::string& key) {
    auto& records = m_records[file];
    auto found = records.find(key);
    if (found != records.end()) return found->second;
    ++m_innerReads;
    return records.emplace(key, m_inner.read(file, key)).first->second;
}

const ReadOnceStore::Records& ReadOnceStore::cachedScan(const std::string& id,
                                                        const std::function<void(Records&)>& fill) {
    auto found = m_scans.find(id);
    if (found != m_scans.end()) return found->second;
    ++m_innerReads;
    Records records;
    fill(records);
    return m_scans.emplace(id, std::move(records)).first->second;
}

std::optional<std::string> ReadOnceStore::read(const std::string& file, const std::string& key) {
    if (isWorkFile(file)) {
        const auto& records = m_work[file];
        auto found = records.find(key);
        if (found == records.end()) return std::nullopt;
        return found->second;
    }
    return cachedRead(file, key);
}

bool ReadOnceStore::readInto(const std::string& file, const std::string& key, std::string& text) {
    if (isWorkFile(file)) {
        std::optional<std::string> found = read(file, key);
        if (found) text = std::move(*found);
        return found.has_value();
    }
    const std::optional<std::string>& found = cachedRead(file, key);
    if (found) text.assign(*found);
    return found.has_value();
}

void ReadOnceStore::write(const std::string& file, const std::string& key, const std::string& text) {
    if (!isWorkFile(file)) refuse(file, key);
    m_work[file][key] = text;
}

void ReadOnceStore::remove(const std::string& file, const std::string& key) {
    if (!isWorkFile(file)) refuse(file, key);
    m_work[file].erase(key);
}

void ReadOnceStore::scanAll(const std::string& file, const mvdb::RecordVisitor& visit) {
    if (isWorkFile(file)) {
        // Copied first: a visitor may change the file it walks.
        const std::map<std::string, std::string> records = m_work[file];
        for (const auto& [key, text] : records) {
            if (!visit(key, text)) return;
        }
        return;
    }
    replay(cachedScan(file,
                      [&](Records& records) {
                          m_inner.scanAll(file, [&](const std::string& key, const std::string& text) {
                              records.emplace_back(key, text);
                              return true;
                          });
                      }),
           visit);
}

void ReadOnceStore::scanRange(const std::string& file, const mvdb::KeyRange& range,
                              const mvdb::RecordVisitor& visit) {
    // Work files have no index: no range of theirs holds a record.
    if (isWorkFile(file)) return;
    replay(cachedScan(rangeId(file, range),
                      [&](Records& records) {
                          m_inner.scanRange(file, range,
                                            [&](const std::string& key, const std::string& text) {
                                                records.emplace_back(key, text);
                                                return true;
                                            });
                      }),
           visit);
}

std::size_t ReadOnceStore::count(const std::string& file) {
    if (isWorkFile(file)) return m_work[file].size();
    return m_inner.count(file);
}

void ReadOnceStore::begin() {
    if (m_saved) throw base::Error(base::codes::kStorage, "Une transaction est déjà ouverte");
    m_saved = m_work;
}

void ReadOnceStore::commit() {
    m_saved.reset();
}

void ReadOnceStore::rollback() {
    if (m_saved) m_work = std::move(*m_saved);
    m_saved.reset();
}

void ReadOnceStore::refuse(const std::string& file, const std::string& key) const {
    throw base::Error(base::codes::kStorage,
                      "Le calcul de la semaine ne modifie pas la base : écriture refusée dans " + file +
                          (key.empty() ? "" : ", clé " + key));
}

}  // namespace control
