#include "mvdb/indexed_store.h"

#include "base/error.h"
#include "mvdb/dictionary.h"

namespace mvdb {

IndexedStore::WriteScope::WriteScope(IndexedStore& store, const FileInfo& fi, Statements statements)
    : m_store(store) {
    if (!fi.scratch) m_store.endSnapshot();
    const bool inside = m_store.m_inTransaction || m_store.m_snapshot;
    if (fi.scratch && statements == Statements::One &&
        !(inside && m_store.failedStatementSpoilsTransaction()))
        return;
    if (inside) {
        m_store.execute("SAVEPOINT zd_write");
        m_kind = Kind::Savepoint;
    } else {
        m_store.beginTransaction(!fi.scratch);
        m_kind = Kind::Own;
    }
}

IndexedStore::WriteScope::~WriteScope() {
    if (m_done || m_kind == Kind::None) return;
    // Undo what the failed change did; the error that brought us here is already travelling.
    m_store.quietly(m_kind == Kind::Savepoint ? "ROLLBACK TO SAVEPOINT zd_write; RELEASE SAVEPOINT zd_write"
                                              : "ROLLBACK");
}

void IndexedStore::WriteScope::commit() {
    if (m_kind == Kind::Savepoint) m_store.execute("RELEASE SAVEPOINT zd_write");
    if (m_kind == Kind::Own) m_store.commitTransaction();
    m_done = true;
}

IndexedStore::FileInfo IndexedStore::infoFor(const std::string& file, bool scratch) const {
    return {file, qualifiedTable("f_" + file, scratch), scratch ? "" : qualifiedTable("x_" + file, false),
            &dictionaryFor(file), scratch};
}

void IndexedStore::createServiceFiles() {
    for (const std::string& file : serviceFiles()) {
        if (dictionaryFor(file).scratch) continue;
        createTables(infoFor(file, false));
        addToCatalog(file, dictionaryFor(file).describeIndexes());
    }
}

void IndexedStore::loadCatalog() {
    m_files.clear();
    for (const auto& [name, indexes] : readCatalog()) {
        m_files[name] = infoFor(name, false);
        // A newer program may index other fields: rebuild so that every sentence stays exact.
        if (indexes != dictionaryFor(name).describeIndexes()) rebuildIndex(name);
    }
    for (const std::string& file : serviceFiles()) {
        if (!dictionaryFor(file).scratch) continue;
        FileInfo fi = infoFor(file, true);
        createTables(fi);
        m_files[file] = std::move(fi);
    }
}

void IndexedStore::rebuildIndex(const std::string& file) {
    const FileInfo& fi = m_files.at(file);
    WriteScope scope(*this, fi);
    clearIndex(fi);
    std::vector<std::pair<std::string, std::string>> all;
    scanAll(file, [&](const std::string& key, const std::string& text) {
        all.emplace_back(key, text);
        return true;
    });
    for (const auto& [key, text] : all)
        updateIndexEntries(fi, key, nullptr, &text);
    setCatalogIndexes(file, fi.dictionary->describeIndexes());
    scope.commit();
}

const IndexedStore::FileInfo& IndexedStore::info(const std::string& file) {
    auto it = m_files.find(file);
    if (it == m_files.end()) throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + file);
    return it->second;
}

const IndexedStore::FileInfo& IndexedStore::indexedInfo(const std::string& file) {
    const FileInfo& fi = info(file);
    if (fi.indexTable.empty())
        throw base::Error(base::codes::kStorage, "Le fichier " + file + " n'a pas d'index");
    return fi;
}

bool IndexedStore::isIndexed(const FileInfo& fi) {
    return !fi.indexTable.empty() && !fi.dictionary->indexed.empty();
}

void IndexedStore::updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                                      const std::string* newText) {
    // Only the entries that change are touched.
    const auto [gone, added] = indexChanges(*fi.dictionary, key, oldText, newText);
    if (!gone.empty()) deleteIndexEntries(fi, key, gone);
    if (!added.empty()) insertIndexEntries(fi, key, added);
}

std::vector<std::string> IndexedStore::fileNames() {
    std::vector<std::string> names;
    for (const auto& [name, fi] : m_files)
        names.push_back(name);
    return names;
}

bool IndexedStore::hasFile(const std::string& file) {
    return m_files.count(file) != 0;
}

void IndexedStore::createFile(const std::string& file) {
    if (hasFile(file)) return;
    checkNewFileName(file);
    checkFileName(file);
    FileInfo fi = infoFor(file, false);
    WriteScope scope(*this, fi);
    createTables(fi);
    addToCatalog(file, fi.dictionary->describeIndexes());
    scope.commit();
    m_files[file] = std::move(fi);
    if (m_inTransaction) m_filesOfTransaction.push_back(file);
}

std::optional<std::string> IndexedStore::read(const std::string& file, const std::string& key) {
    std::string text;
    if (!readInto(file, key, text)) return std::nullopt;
    return text;
}

bool IndexedStore::readInto(const std::string& file, const std::string& key, std::string& text) {
    return readRecord(info(file), key, text);
}

void IndexedStore::write(const std::string& file, const std::string& key, const std::string& text) {
    const FileInfo& fi = info(file);
    checkKey(file, key);
    const bool indexed = isIndexed(fi);
    WriteScope scope(*this, fi, indexed ? Statements::Several : Statements::One);
    if (indexed) {
        std::string old;
        const bool found = readRecord(fi, key, old);
        updateIndexEntries(fi, key, found ? &old : nullptr, &text);
    }
    putRecord(fi, key, text);
    scope.commit();
}

void IndexedStore::remove(const std::string& file, const std::string& key) {
    const FileInfo& fi = info(file);
    const bool indexed = isIndexed(fi);
    WriteScope scope(*this, fi, indexed ? Statements::Several : Statements::One);
    if (indexed) {
        std::string old;
        if (!readRecord(fi, key, old)) {
            scope.commit();
            return;
        }
        updateIndexEntries(fi, key, &old, nullptr);
    }
    deleteRecord(fi, key);
    scope.commit();
}

void IndexedStore::begin() {
    if (m_inTransaction) throw base::Error(base::codes::kStorage, "Une transaction est déjà ouverte");
    endSnapshot();
    beginTransaction(true);
    m_inTransaction = true;
    m_filesOfTransaction.clear();
}

void IndexedStore::commit() {
    if (!m_inTransaction) throw base::Error(base::codes::kStorage, "Aucune transaction ouverte");
    try {
        commitTransaction();
    } catch (...) {
        // A commit that failed may leave the transaction open, to be rolled back, or may have ended it.
        m_inTransaction = transactionOpen();
        if (!m_inTransaction) forgetFilesOfTransaction();
        throw;
    }
    m_inTransaction = false;
    m_filesOfTransaction.clear();
}

void IndexedStore::rollback() {
    if (!m_inTransaction) return;
    m_inTransaction = false;
    forgetFilesOfTransaction();
    rollbackTransaction();
}

void IndexedStore::forgetFilesOfTransaction() {
    for (const std::string& file : m_filesOfTransaction)
        m_files.erase(file);
    m_filesOfTransaction.clear();
}

std::string IndexedStore::openTransaction() const {
    if (m_inTransaction) return "une transaction d'écriture";
    if (m_readers > 0) return std::to_string(m_readers) + " lecture(s) cohérente(s) non terminée(s)";
    if (m_snapshot) return "une lecture cohérente";
    return engineOpenWork();
}

void IndexedStore::beginRead() {
    if (m_readers++ > 0 || m_inTransaction) return;
    beginSnapshot();
    m_snapshot = true;
}

void IndexedStore::endRead() {
    if (m_readers > 0 && --m_readers == 0) endSnapshot();
}

void IndexedStore::endSnapshot() {
    if (!m_snapshot) return;
    m_snapshot = false;
    endSnapshotTransaction();
}

}  // namespace mvdb
