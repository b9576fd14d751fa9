#pragma once

#include <memory>

#include "base/error.h"
#include "mvdb/store.h"

namespace testing_support {

// A store that passes everything to a real one, and fails the write or delete it is told to fail, as a
// full disk or a lost connection would, so that tests can see what a failure halfway leaves behind.
class FaultyStore : public mvdb::Store {
public:
    explicit FaultyStore(std::unique_ptr<mvdb::Store> inner) : m_inner(std::move(inner)) {}

    // Fails the n-th change from now (1 for the next); 0 for none.
    void failChange(int n) { m_countdown = n; }

    std::vector<std::string> fileNames() override { return m_inner->fileNames(); }
    bool hasFile(const std::string& f) override { return m_inner->hasFile(f); }
    void createFile(const std::string& f) override { m_inner->createFile(f); }
    std::optional<std::string> read(const std::string& f, const std::string& k) override {
        return m_inner->read(f, k);
    }
    void write(const std::string& f, const std::string& k, const std::string& t) override {
        fault(f);
        m_inner->write(f, k, t);
    }
    void remove(const std::string& f, const std::string& k) override {
        fault(f);
        m_inner->remove(f, k);
    }
    void scanAll(const std::string& f, const mvdb::RecordVisitor& v) override { m_inner->scanAll(f, v); }
    void scanRange(const std::string& f, const mvdb::KeyRange& r, const mvdb::RecordVisitor& v) override {
        m_inner->scanRange(f, r, v);
    }
    std::size_t count(const std::string& f) override { return m_inner->count(f); }
    std::vector<std::string> explainScan(const std::string& f,
                                         const std::optional<mvdb::KeyRange>& r) override {
        return m_inner->explainScan(f, r);
    }
    void begin() override { m_inner->begin(); }
    void commit() override { m_inner->commit(); }
    void rollback() override { m_inner->rollback(); }
    bool inTransaction() const override { return m_inner->inTransaction(); }

private:
    void fault(const std::string& file) {
        if (file == "TPSTEMPO" || m_countdown <= 0) return;
        if (--m_countdown == 0) throw base::Error(base::codes::kStorage, "disque plein (panne simulée)");
    }
    std::unique_ptr<mvdb::Store> m_inner;
    int m_countdown = 0;
};

}  // namespace testing_support
