#include "mvdb/work_file_store.h"

#include "mvdb/dictionary.h"
#include "mvdb/sqlite_store.h"

namespace mvdb {

WorkFileStore::WorkFileStore(std::unique_ptr<Store> inner) : ForwardingStore(std::move(inner)) {}

WorkFileStore::~WorkFileStore() = default;

Store& WorkFileStore::route(const std::string& file) {
    // A file the inner store lacks is its to refuse, with its own message.
    if (!dictionaryFor(file).scratch || !hasFile(file)) return inner();
    if (!m_private) {
        m_private = SqliteStore::open(":memory:", OpenMode::CreateIfMissing);
        if (inTransaction()) m_private->begin();
    }
    return *m_private;
}

std::optional<std::string> WorkFileStore::read(const std::string& file, const std::string& key) {
    return route(file).read(file, key);
}

bool WorkFileStore::readInto(const std::string& file, const std::string& key, std::string& text) {
    return route(file).readInto(file, key, text);
}

void WorkFileStore::write(const std::string& file, const std::string& key, const std::string& text) {
    route(file).write(file, key, text);
}

void WorkFileStore::remove(const std::string& file, const std::string& key) {
    route(file).remove(file, key);
}

void WorkFileStore::writeBatch(const std::string& file,
                               const std::vector<std::pair<std::string, std::string>>& records) {
    route(file).writeBatch(file, records);
}

void WorkFileStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    route(file).removeBatch(file, keys);
}

void WorkFileStore::scanAll(const std::string& file, const RecordVisitor& visit) {
    route(file).scanAll(file, visit);
}

void WorkFileStore::scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    route(file).scanRange(file, range, visit);
}

std::size_t WorkFileStore::count(const std::string& file) {
    return route(file).count(file);
}

std::vector<std::string> WorkFileStore::explainScan(const std::string& file,
                                                    const std::optional<KeyRange>& range) {
    return route(file).explainScan(file, range);
}

void WorkFileStore::begin() {
    ForwardingStore::begin();
    if (!m_private) return;
    // A commit of the inner store that failed leaves the private one open: what it held goes now.
    if (m_private->inTransaction()) m_private->rollback();
    m_private->begin();
}

void WorkFileStore::commit() {
    ForwardingStore::commit();
    if (m_private && m_private->inTransaction()) m_private->commit();
}

void WorkFileStore::rollback() {
    ForwardingStore::rollback();
    if (m_private) m_private->rollback();
}

}  // namespace mvdb
