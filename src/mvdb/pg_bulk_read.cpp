#include "mvdb/pg_store.h"

// The reads of several files in one exchange with the server, for a reader that holds them in memory.
namespace mvdb {

void PgStore::scanFiles(const std::vector<std::string>& files, const FileRecordVisitor& visit) {
    if (files.empty()) return;
    std::string sql;
    std::string names;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (i > 0) {
            sql += " UNION ALL ";
            names += ", ";
        }
        sql += "SELECT " + std::to_string(i) + "::bigint, key, rec FROM " + info(files[i]).table;
        names += files[i];
    }
    m_db.stream(
        sql, {},
        [&](const pg::Row& row) {
            return visit(files[static_cast<std::size_t>(pg::integer(row[0]))], row[1], row[2]);
        },
        "lecture de " + names);
}

}  // namespace mvdb
