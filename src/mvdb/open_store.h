#pragma once

#include <memory>
#include <string>

#include "mvdb/sqlite_store.h"
#include "mvdb/store.h"

namespace mvdb {

// Opens the store that a --db text names: a URI "postgresql://..." or "postgres://..." in any case of
// the scheme, or a keyword string "host=... dbname=...", is a PostgreSQL server, and so is an empty
// text when the environment names one (PGHOST, PGHOSTADDR, PGSERVICE or PGDATABASE); any other text is
// the path of an SQLite database, ":memory:" a private one in memory. No message shows a password.
std::unique_ptr<Store> openStore(const std::string& text, OpenMode mode);

}  // namespace mvdb
