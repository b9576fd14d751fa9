#include "mvdb/open_store.h"

#include <cstdlib>

#include "base/error.h"
#include "mvdb/pg_address.h"
#include "mvdb/pg_store.h"

namespace mvdb {
namespace {

bool environmentNamesServer() {
    for (const char* name : {"PGHOST", "PGHOSTADDR", "PGSERVICE", "PGDATABASE"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

}  // namespace

std::unique_ptr<Store> openStore(const std::string& text, OpenMode mode) {
    if (pg::isServerAddress(text)) return PgStore::open(text, mode);
    if (text.empty()) {
        // libpq reads the PG* variables itself when given an empty connection text.
        if (environmentNamesServer()) return PgStore::open(text, mode);
        throw base::Error(base::codes::kStorage,
                          "Aucune base indiquée : --db attend le chemin d'une base, :memory: ou une adresse "
                          "postgresql://");
    }
    return SqliteStore::open(text, mode);
}

}  // namespace mvdb
