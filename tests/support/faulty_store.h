#pragma once

#include <memory>

#include "base/error.h"
#include "mvdb/forwarding_store.h"

namespace testing_support {

// A store that passes everything to a real one, counts the reads that reach it, and fails the write or delete
// it is told to fail, as a full disk or a lost connection would, so that tests can see what a failure halfway
// leaves behind.
class FaultyStore : public mvdb::ForwardingStore {
public:
    using ForwardingStore::ForwardingStore;

    // Fails the n-th change from now (1 for the next); 0 for none.
    void failChange(int n) { m_countdown = n; }

    // The reads that reached the store: records read one by one, and scans (whole files and ranges).
    int pointReads = 0;
    int scans = 0;

    std::optional<std::string> read(const std::string& f, const std::string& k) override {
        ++pointReads;
        return ForwardingStore::read(f, k);
    }
    bool readInto(const std::string& f, const std::string& k, std::string& t) override {
        ++pointReads;
        return ForwardingStore::readInto(f, k, t);
    }
    void scanAll(const std::string& f, const mvdb::RecordVisitor& v) override {
        ++scans;
        ForwardingStore::scanAll(f, v);
    }
    void scanRange(const std::string& f, const mvdb::KeyRange& r, const mvdb::RecordVisitor& v) override {
        ++scans;
        ForwardingStore::scanRange(f, r, v);
    }

    void write(const std::string& f, const std::string& k, const std::string& t) override {
        fault(f);
        ForwardingStore::write(f, k, t);
    }
    void remove(const std::string& f, const std::string& k) override {
        fault(f);
        ForwardingStore::remove(f, k);
    }

private:
    void fault(const std::string& file) {
        if (file == "TPSTEMPO" || m_countdown <= 0) return;
        if (--m_countdown == 0) throw base::Error(base::codes::kStorage, "disque plein (panne simulée)");
    }
    int m_countdown = 0;
};

}  // namespace testing_support
