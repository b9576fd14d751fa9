#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "mvdb/store.h"

namespace control {

// A store over another that it only reads, for a private control that computes figures and must leave
// the database as it was. Each record and each range is read from the other store once and then served
// from memory: a week asks the same aidés, protocoles and soins again for every day. Work files live
// in memory only. A change to any other file is refused with an error that names file and key.
//
// What is kept is never brought up to date: the owner holds a consistent read on the other store for as
// long as this one lives, so that both see the database at one moment.
class ReadOnceStore : public mvdb::Store {
public:
    explicit ReadOnceStore(mvdb::Store& inner) : m_inner(inner) {}

    std::vector<std::string> fileNames() override { return m_inner.fileNames(); }
    bool hasFile(const std::string& file) override;
    void createFile(const std::string& file) override;

    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    bool readInto(const std::string& file, const std::string& key, std::string& text) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;

    void scanAll(const std::string& file, const mvdb::RecordVisitor& visit) override;
    void scanRange(const std::string& file, const mvdb::KeyRange& range,
                   const mvdb::RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    std::vector<std::string> explainScan(const std::string& file,
                                         const std::optional<mvdb::KeyRange>& range) override {
        return m_inner.explainScan(file, range);
    }

    // A transaction here holds only work-file changes: a rollback puts them back as they were.
    void begin() override;
    void commit() override;
    void rollback() override;
    bool inTransaction() const override { return m_saved.has_value(); }
    void beginRead() override { m_inner.beginRead(); }
    void endRead() override { m_inner.endRead(); }

    // Reads and range reads that reached the other store, for the benchmark's account.
    std::size_t innerReads() const { return m_innerReads; }

private:
    using Records = std::vector<std::pair<std::string, std::string>>;
    using WorkFiles = std::map<std::string, std::map<std::string, std::string>>;

    // The cached answer for a key of a shared file; read from the other store on first use.
    const std::optional<std::string>& cachedRead(const std::string& file, const std::string& key);
    // The records of a whole file or of a range, read on first use; `id` names what was asked.
    const Records& cachedScan(const std::string& id, const std::function<void(Records&)>& fill);
    [[noreturn]] void refuse(const std::string& file, const std::string& key) const;

    mvdb::Store& m_inner;
    std::unordered_map<std::string, std::unordered_map<std::string, std::optional<std::string>>> m_records;
    std::unordered_map<std::string, Records> m_scans;
    WorkFiles m_work;
    std::optional<WorkFiles> m_saved;  // the work files as they were at begin
    std::size_t m_innerReads = 0;
};

}  // namespace control
