#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/sqlite_store.h"
#include "mvdb/store.h"
#include "support/faulty_store.h"

namespace testing_support {

// A private in-memory database with a fixed day, for tests that build their own small service.
struct MemoryDatabase {
    base::FixedClock clock{*base::Date::fromDmy(22, 11, 2026), 8 * 3600};
    // The store can be told to fail a change, for tests of what a failure halfway leaves behind.
    FaultyStore* faults = nullptr;
    std::shared_ptr<mvdb::Database> db = [this] {
        auto store = std::make_unique<FaultyStore>(
            mvdb::SqliteStore::open(":memory:", mvdb::OpenMode::CreateIfMissing));
        faults = store.get();
        return std::make_shared<mvdb::Database>(std::move(store), clock);
    }();

    // Writes a record given as its attributes; an attribute's values are separated by "|" here.
    void put(const std::string& file, const std::string& key, std::initializer_list<std::string> attributes) {
        mvdb::DynamicRecord r;
        std::int64_t a = 0;
        for (const std::string& attribute : attributes) {
            ++a;
            std::int64_t v = 1;
            std::size_t start = 0;
            while (true) {
                std::size_t bar = attribute.find('|', start);
                r.set(a, v++,
                      attribute.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
                if (bar == std::string::npos) break;
                start = bar + 1;
            }
        }
        if (!db->store().hasFile(file)) db->store().createFile(file);
        db->store().write(file, key, r.text());
    }

    // Runs a query and gives its reply.
    mvdb::DynamicRecord query(const std::string& file, const std::string& list, const std::string& sentence) {
        mvdb::DynamicRecord request;
        request.set(1, sentence);
        request.set(2, file);
        request.set(3, list);
        return db->Query(request.text());
    }

    // The keys of a query's reply, in order.
    std::vector<std::string> keys(const std::string& file, const std::string& sentence) {
        mvdb::DynamicRecord reply = query(file, "0", sentence);
        std::vector<std::string> out;
        for (std::int64_t i = 1; i <= reply.DCount(); ++i)
            out.push_back(reply(i, 1));
        return out;
    }
};

}  // namespace testing_support
