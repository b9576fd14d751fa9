#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "mvdb/dynamic_record.h"

namespace base {
class Clock;
}

namespace mvdb {

class Store;
class Database;

// One open file of the database. Records read from it or made for it are bound to it, so that
// DBWrite and DBDelete reach it.
class File : public RecordSink, public std::enable_shared_from_this<File> {
public:
    File(Database& database, std::string name) : m_database(database), m_name(std::move(name)) {}
    const std::string& name() const { return m_name; }

    // The record under `key`; fails with code 0x8004000B (base::codes::kMissingKey) when there is none.
    DynamicRecord Read(const std::string& key);
    // The same read into `record`, whose storage is reused: for a buffer that takes one record after
    // another. Fails as Read does, leaving `record` as it was.
    void ReadInto(const std::string& key, DynamicRecord& record);
    // Removes the record; an absent key changes nothing.
    void Delete(const std::string& key);
    // An empty record bound to this file and key; nothing is written before its DBWrite.
    DynamicRecord New(const std::string& key);

    void writeRecord(const std::string& key, const std::string& wholeText) override;
    void deleteRecord(const std::string& key) override;

private:
    Database& m_database;
    std::string m_name;
};

// A routine of the database server, run in this process on the same store.
using ServerRoutine = std::function<DynamicRecord(Database&, const DynamicRecord& arguments)>;

// The database object handed to the screen (TheDatabase). Every failure is a base::Error with a code
// and a message that names the file, key or sentence; a failed change leaves the store as it was.
class Database {
public:
    Database(std::unique_ptr<Store> store, const base::Clock& clock);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Opens a file of the database; fails with kUnknownFile for a file it does not have.
    std::shared_ptr<File> OpenFile(const std::string& name);
    // Runs a named subroutine; attribute n of the argument record is its argument n.
    DynamicRecord CallSubroutine(const std::string& name, const std::string& argumentsText);
    // Runs a server program and waits for its end; attribute 1 of the request is its command line,
    // whose first word names the program.
    DynamicRecord RunProgram(const std::string& requestText);
    // Runs a selection. Request: attribute 1 the sentence, 2 the file to list, 3 the attributes to
    // return. Reply: one attribute per record, one value per listed attribute.
    DynamicRecord Query(const std::string& requestText);

    // The engine's plan for the reads of a sentence, one line per step.
    std::vector<std::string> explainQuery(const std::string& sentence);

    // Groups changes so that they land together or not at all.
    void beginTransaction();
    void commitTransaction();
    void rollbackTransaction();

    Store& store() { return *m_store; }
    const base::Clock& clock() const { return m_clock; }

private:
    std::unique_ptr<Store> m_store;
    const base::Clock& m_clock;
    std::map<std::string, ServerRoutine> m_subroutines;
    std::map<std::string, ServerRoutine> m_programs;
};

// Holds one view of the database for the reads of a scope (see Store::beginRead).
class ConsistentRead {
public:
    explicit ConsistentRead(Database& database);
    ~ConsistentRead();
    ConsistentRead(const ConsistentRead&) = delete;
    ConsistentRead& operator=(const ConsistentRead&) = delete;

private:
    Store& m_store;
};

// Holds a transaction for a scope: rolled back unless committed.
class Transaction {
public:
    explicit Transaction(Database& database) : m_database(database) { m_database.beginTransaction(); }
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Database& m_database;
    bool m_done = false;
};

}  // namespace mvdb
