#pragma once

#include <memory>

#include "mvdb/forwarding_store.h"

namespace mvdb {

// Keeps the work files (TPSTEMPO) of this workstation in a private in-memory store of its own, so that
// they never travel to a shared server: a display writes and deletes one work record per aidé, and each
// would otherwise wait on the network. Every other file goes to the inner store. A transaction spans
// both: begin, commit and rollback reach the private store too.
class WorkFileStore : public ForwardingStore {
public:
    explicit WorkFileStore(std::unique_ptr<Store> inner);
    ~WorkFileStore() override;

    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    bool readInto(const std::string& file, const std::string& key, std::string& text) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;
    void writeBatch(const std::string& file,
                    const std::vector<std::pair<std::string, std::string>>& records) override;
    void removeBatch(const std::string& file, const std::vector<std::string>& keys) override;
    void scanAll(const std::string& file, const RecordVisitor& visit) override;
    void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    std::vector<std::string> explainScan(const std::string& file,
                                         const std::optional<KeyRange>& range) override;
    void begin() override;
    void commit() override;
    void rollback() override;

private:
    // The store that keeps `file`: the private one for a work file the inner store has, made on first use.
    Store& route(const std::string& file);

    std::unique_ptr<Store> m_private;
};

}  // namespace mvdb
