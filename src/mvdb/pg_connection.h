#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct pg_conn;
struct pg_result;

// The PostgreSQL store's link to its server; only this layer includes the client library's header.
namespace mvdb::pg {

// A value bound to a statement: bytes sent as they are, or a number sent as its text.
struct Param {
    std::string value;
    bool binary = true;
    static Param number(std::int64_t n) { return {std::to_string(n), false}; }
};

// A row of a result, every column in binary: bytes stay bytes, a bigint is 8 bytes (see integer).
using Row = std::vector<std::string>;

// The value of a bigint column.
std::int64_t integer(const std::string& column);

// An array of byte strings as the server reads it in text (bytea[]): each element in hexadecimal.
std::string byteaArray(const std::vector<std::string_view>& values);

// One connection. Statements that carry values are prepared once per SQL text and run with the values
// bound, never spliced into the text. Every failure is a base::Error naming the database and what
// was being done, with the server's own message; a lost connection and a busy server say so.
class Connection {
public:
    // Connects with a libpq connection text, a URI or keywords; an empty text takes the PG* environment
    // variables. A text the library cannot read is refused with what is wrong, before any connection.
    explicit Connection(const std::string& text);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The database and its server, for messages.
    const std::string& name() const { return m_name; }
    std::vector<Row> run(const std::string& sql, const std::vector<Param>& params, const std::string& what);
    // Runs a statement and hands its rows to `visit` one at a time, so that a table of any size never
    // sits whole in memory; returning false stops the walk.
    void stream(const std::string& sql, const std::vector<Param>& params,
                const std::function<bool(const Row&)>& visit, const std::string& what);
    // Runs fixed SQL that carries no value; gives the server's command tag ("COMMIT", "ROLLBACK"...).
    std::string exec(const std::string& sql);
    // Runs fixed SQL whose failure does not matter any more: an error is already on its way.
    void quietly(const char* sql);
    // True once the server is out of reach; the transaction that was open went with it.
    bool lost() const;
    // True while a transaction is open on the server, a failed one included.
    bool inTransaction() const;

private:
    const std::string& prepare(const std::string& sql);
    [[noreturn]] void fail(const std::string& what, const pg_result* result) const;

    std::vector<std::string> m_secrets;  // the passwords, which no message shows
    pg_conn* m_conn;
    std::string m_name;
    std::unordered_map<std::string, std::string> m_statements;  // SQL text -> prepared statement name
};

}  // namespace mvdb::pg
