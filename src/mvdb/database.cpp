#include "mvdb/database.h"

#include "base/error.h"
#include "mvdb/bulk_read_store.h"
#include "mvdb/query.h"
#include "mvdb/sentence.h"
#include "mvdb/server_routines.h"
#include "mvdb/store.h"
#include "mvdb/work_file_store.h"

namespace mvdb {

DynamicRecord File::Read(const std::string& key) {
    DynamicRecord record;
    ReadInto(key, record);
    return record;
}

void File::ReadInto(const std::string& key, DynamicRecord& record) {
    if (!record.readText([&](std::string& text) { return m_database.store().readInto(m_name, key, text); })) {
        throw base::Error(base::codes::kMissingKey,
                          "Enregistrement absent : " + m_name + ", clé « " + key + " »");
    }
    record.bind(shared_from_this(), key);
}

void File::Delete(const std::string& key) {
    m_database.store().remove(m_name, key);
}

DynamicRecord File::New(const std::string& key) {
    DynamicRecord record;
    record.bind(shared_from_this(), key);
    return record;
}

void File::writeRecord(const std::string& key, const std::string& wholeText) {
    m_database.store().write(m_name, key, wholeText);
}

void File::deleteRecord(const std::string& key) {
    m_database.store().remove(m_name, key);
}

// The work files stay on this workstation, and the reads of one moment go in bulk: on a shared server
// a display then waits on the network a few times instead of once per record.
Database::Database(std::unique_ptr<Store> store, const base::Clock& clock)
    : m_store(std::make_unique<BulkReadStore>(std::make_unique<WorkFileStore>(std::move(store)))),
      m_clock(clock) {
    registerServerRoutines(m_subroutines, m_programs);
}

Database::~Database() = default;

std::shared_ptr<File> Database::OpenFile(const std::string& name) {
    if (!m_store->hasFile(name)) throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + name);
    return std::make_shared<File>(*this, name);
}

DynamicRecord Database::CallSubroutine(const std::string& name, const std::string& argumentsText) {
    auto it = m_subroutines.find(name);
    if (it == m_subroutines.end()) {
        throw base::Error(base::codes::kUnknownRoutine, "Sous-programme inconnu du serveur : " + name);
    }
    return it->second(*this, DynamicRecord(argumentsText));
}

DynamicRecord Database::RunProgram(const std::string& requestText) {
    DynamicRecord request(requestText);
    std::string line = request(1);
    std::string name = line.substr(0, line.find_first_of(" |"));
    auto it = m_programs.find(name);
    if (it == m_programs.end()) {
        throw base::Error(base::codes::kUnknownRoutine, "Programme inconnu du serveur : « " + name + " »");
    }
    return it->second(*this, request);
}

DynamicRecord Database::Query(const std::string& requestText) {
    DynamicRecord request(requestText);
    std::string text = request(1);
    std::string file = request(2);
    Sentence sentence = parseSentence(text);
    std::vector<std::int32_t> attributes = parseAttributeList(request(3));
    if (sentence.file != file) {
        throw base::Error(base::codes::kSentence,
                          "La phrase « " + text + " » ne porte pas sur le fichier à lister " + file);
    }
    return query(*m_store, sentence, text, attributes);
}

std::vector<std::string> Database::explainQuery(const std::string& text) {
    return explainSelection(*m_store, parseSentence(text), text);
}

void Database::beginTransaction() {
    m_store->begin();
}
void Database::commitTransaction() {
    m_store->commit();
}
void Database::rollbackTransaction() {
    m_store->rollback();
}

ConsistentRead::ConsistentRead(Database& database) : m_store(database.store()) {
    m_store.beginRead();
}

ConsistentRead::~ConsistentRead() {
    try {
        m_store.endRead();
    } catch (const base::Error&) {
        // The reads are done; a read transaction that cannot end cleanly was undone by the store.
    }
}

Transaction::~Transaction() {
    if (m_done) return;
    try {
        m_database.rollbackTransaction();
    } catch (const base::Error&) {
        // The store undoes an unfinished transaction when it closes; nothing more can be done here.
    }
}

void Transaction::commit() {
    m_database.commitTransaction();
    m_done = true;
}

}  // namespace mvdb
