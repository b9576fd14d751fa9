#pragma once

#include <memory>

#include "mvdb/store.h"

namespace mvdb {

// A store that hands every call to another one. Wrappers that watch or disturb a store (a benchmark's
// call counter, a test's simulated failure) override only the calls they care about.
class ForwardingStore : public Store {
public:
    explicit ForwardingStore(std::unique_ptr<Store> inner) : m_inner(std::move(inner)) {}

    std::vector<std::string> fileNames() override { return m_inner->fileNames(); }
    bool hasFile(const std::string& f) override { return m_inner->hasFile(f); }
    void createFile(const std::string& f) override { m_inner->createFile(f); }
    std::optional<std::string> read(const std::string& f, const std::string& k) override {
        return m_inner->read(f, k);
    }
    bool readInto(const std::string& f, const std::string& k, std::string& t) override {
        return m_inner->readInto(f, k, t);
    }
    void write(const std::string& f, const std::string& k, const std::string& t) override {
        m_inner->write(f, k, t);
    }
    void writeBatch(const std::string& f,
                    const std::vector<std::pair<std::string, std::string>>& r) override {
        m_inner->writeBatch(f, r);
    }
    void remove(const std::string& f, const std::string& k) override { m_inner->remove(f, k); }
    void removeBatch(const std::string& f, const std::vector<std::string>& k) override {
        m_inner->removeBatch(f, k);
    }
    void scanAll(const std::string& f, const RecordVisitor& v) override { m_inner->scanAll(f, v); }
    void scanFiles(const std::vector<std::string>& f, const FileRecordVisitor& v) override {
        m_inner->scanFiles(f, v);
    }
    void scanRange(const std::string& f, const KeyRange& r, const RecordVisitor& v) override {
        m_inner->scanRange(f, r, v);
    }
    std::size_t count(const std::string& f) override { return m_inner->count(f); }
    bool holds(const std::string& f, const KeyRange& r) override { return m_inner->holds(f, r); }
    void scanHeld(const std::string& f, const KeyRange& r, const RecordVisitor& v) override {
        m_inner->scanHeld(f, r, v);
    }
    std::vector<std::string> explainScan(const std::string& f, const std::optional<KeyRange>& r) override {
        return m_inner->explainScan(f, r);
    }
    void begin() override { m_inner->begin(); }
    void commit() override { m_inner->commit(); }
    void rollback() override { m_inner->rollback(); }
    bool inTransaction() const override { return m_inner->inTransaction(); }
    std::string openTransaction() const override { return m_inner->openTransaction(); }
    void beginRead() override { m_inner->beginRead(); }
    void endRead() override { m_inner->endRead(); }

protected:
    Store& inner() { return *m_inner; }
    const Store& inner() const { return *m_inner; }

private:
    std::unique_ptr<Store> m_inner;
};

}  // namespace mvdb
