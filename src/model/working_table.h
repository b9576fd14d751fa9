#pragma once

#include <string>

#include "base/error.h"
#include "mvdb/dynamic_record.h"

namespace model {

// A working table of the screen: a dynamic record read and written as table(row, column), which the
// screen makes anew, releases, and tests for existence. Using a released table is a failure that names
// it, as the toolkit's "object not set" was, never a crash.
class WorkTable {
public:
    explicit WorkTable(std::string name) : m_name(std::move(name)) {}

    bool exists() const { return m_exists; }
    // Set to a new, empty table.
    void renew() {
        m_record = mvdb::DynamicRecord();
        m_exists = true;
    }
    // Set to nothing.
    void release() {
        m_record = mvdb::DynamicRecord();
        m_exists = false;
    }
    const std::string& name() const { return m_name; }

    mvdb::DynamicRecord& operator*() { return require(); }
    const mvdb::DynamicRecord& operator*() const { return const_cast<WorkTable*>(this)->require(); }
    mvdb::DynamicRecord* operator->() { return &require(); }
    const mvdb::DynamicRecord* operator->() const { return &const_cast<WorkTable*>(this)->require(); }
    // Cell reads, as table(row, column).
    std::string operator()(std::int64_t row, std::int64_t column) const { return (**this)(row, column); }
    std::string operator()(std::int64_t row) const { return (**this)(row); }

private:
    mvdb::DynamicRecord& require() {
        if (!m_exists) throw base::Error(base::codes::kBadData, "La table " + m_name + " n'existe pas");
        return m_record;
    }
    std::string m_name;
    mvdb::DynamicRecord m_record;
    bool m_exists = false;
};

}  // namespace model
