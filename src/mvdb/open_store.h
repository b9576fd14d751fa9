#pragma once

#include <memory>
#include <string>

#include "mvdb/sqlite_store.h"
#include "mvdb/store.h"

namespace mvdb {

// Opens the store that a --db text names: "postgresql://..." or "postgres://..." is a PostgreSQL
// server, and so is an empty text when the environment names one (PGHOST, PGHOSTADDR, PGSERVICE or
// PGDATABASE); any other text is the path of an SQLite database, ":memory:" a private one in memory.
std::unique_ptr<Store> openStore(const std::string& text, OpenMode mode);

}  // namespace mvdb
