#include "mvdb/pg_connection.h"

#include <libpq-fe.h>

#include <cstring>
#include <exception>
#include <optional>
#include <utility>

#include "base/error.h"
#include "mvdb/pg_address.h"

namespace mvdb::pg {
namespace {

// The first line of libpq's text, without its severity: the rest is advice for a database administrator.
std::string trimmed(const char* text) {
    std::string s = text ? text : "";
    s = s.substr(0, s.find('\n'));
    for (const char* severity : {"FATAL:  ", "ERROR:  "}) {
        if (s.rfind(severity, 0) == 0) s.erase(0, std::strlen(severity));
    }
    return s;
}

// The library leaves these unset when it could not read the connection text at all.
std::string describe(const PGconn* conn) {
    auto text = [](const char* value) { return std::string(value ? value : "?"); };
    return text(PQdb(conn)) + " sur " + text(PQhost(conn)) + ":" + text(PQport(conn));
}

void ignoreNotice(void*, const char*) {}

// Owns one result of the server.
class Result {
public:
    explicit Result(PGresult* result) : m_result(result) {}
    Result(Result&& other) noexcept : m_result(std::exchange(other.m_result, nullptr)) {}
    ~Result() { PQclear(m_result); }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;
    Result& operator=(Result&&) = delete;

    const PGresult* get() const { return m_result; }
    ExecStatusType status() const { return PQresultStatus(m_result); }
    bool ok() const { return status() == PGRES_COMMAND_OK || status() == PGRES_TUPLES_OK; }
    Row row(int index) const {
        Row row;
        for (int c = 0; c < PQnfields(m_result); ++c) {
            row.emplace_back(PQgetvalue(m_result, index, c),
                             static_cast<std::size_t>(PQgetlength(m_result, index, c)));
        }
        return row;
    }

private:
    PGresult* m_result;
};

// Values as libpq takes them.
struct Bound {
    explicit Bound(const std::vector<Param>& params) {
        for (const Param& p : params) {
            values.push_back(p.value.data());
            lengths.push_back(static_cast<int>(p.value.size()));
            formats.push_back(p.binary ? 1 : 0);
        }
    }
    int count() const { return static_cast<int>(values.size()); }
    std::vector<const char*> values;
    std::vector<int> lengths;
    std::vector<int> formats;
};

constexpr int kBinaryResults = 1;

}  // namespace

std::string byteaArray(const std::vector<std::string_view>& values) {
    static const char* const digits = "0123456789abcdef";
    std::string out = "{";
    for (std::string_view v : values) {
        out += out.size() > 1 ? ",\"\\\\x" : "\"\\\\x";
        for (unsigned char c : v) {
            out += digits[c >> 4];
            out += digits[c & 0xF];
        }
        out += '"';
    }
    return out + "}";
}

std::int64_t integer(const std::string& column) {
    std::uint64_t value = 0;
    for (unsigned char c : column)
        value = value << 8 | c;
    return static_cast<std::int64_t>(value);
}

Connection::Connection(const std::string& text)
    : m_secrets(checkAddress(text)), m_conn(PQconnectdb(canonicalAddress(text).c_str())) {
    // The password may also come from the environment or a password file.
    if (m_conn && PQpass(m_conn) && *PQpass(m_conn)) m_secrets.emplace_back(PQpass(m_conn));
    if (PQstatus(m_conn) != CONNECTION_OK) {
        std::string message = "Connexion impossible au serveur PostgreSQL " +
                              (m_conn ? describe(m_conn) + " : " + trimmed(PQerrorMessage(m_conn))
                                      : std::string(": mémoire insuffisante"));
        PQfinish(m_conn);
        throw base::Error(base::codes::kStorage, masked(message, m_secrets));
    }
    m_name = masked(describe(m_conn), m_secrets);
    // The server's notices ("already exists, skipping") are not the user's business.
    PQsetNoticeProcessor(m_conn, ignoreNotice, nullptr);
}

Connection::~Connection() {
    // An unfinished transaction ends with the connection: the server undoes it.
    PQfinish(m_conn);
}

bool Connection::lost() const {
    return PQstatus(m_conn) == CONNECTION_BAD;
}

bool Connection::inTransaction() const {
    const PGTransactionStatusType status = PQtransactionStatus(m_conn);
    return status == PQTRANS_INTRANS || status == PQTRANS_INERROR || status == PQTRANS_ACTIVE;
}

const std::string& Connection::prepare(const std::string& sql) {
    auto it = m_statements.find(sql);
    if (it != m_statements.end()) return it->second;
    std::string name = "zd_" + std::to_string(m_statements.size() + 1);
    Result prepared(PQprepare(m_conn, name.c_str(), sql.c_str(), 0, nullptr));
    if (!prepared.ok()) fail("préparation de « " + sql + " »", prepared.get());
    return m_statements.emplace(sql, name).first->second;
}

std::vector<Row> Connection::run(const std::string& sql, const std::vector<Param>& params,
                                 const std::string& what) {
    const std::string& name = prepare(sql);
    Bound bound(params);
    Result result(PQexecPrepared(m_conn, name.c_str(), bound.count(), bound.values.data(),
                                 bound.lengths.data(), bound.formats.data(), kBinaryResults));
    if (!result.ok()) fail(what, result.get());
    std::vector<Row> rows;
    for (int i = 0; i < PQntuples(result.get()); ++i)
        rows.push_back(result.row(i));
    return rows;
}

void Connection::stream(const std::string& sql, const std::vector<Param>& params,
                        const std::function<bool(const Row&)>& visit, const std::string& what) {
    const std::string& name = prepare(sql);
    Bound bound(params);
    if (!PQsendQueryPrepared(m_conn, name.c_str(), bound.count(), bound.values.data(), bound.lengths.data(),
                             bound.formats.data(), kBinaryResults)) {
        fail(what, nullptr);
    }
    PQsetSingleRowMode(m_conn);
    // Every result is read, even when the walk stops early or the visitor fails, so that the
    // connection is ready for the next statement.
    bool walking = true;
    std::exception_ptr thrown;
    std::optional<Result> failed;
    while (PGresult* raw = PQgetResult(m_conn)) {
        Result result(raw);
        if (result.status() == PGRES_SINGLE_TUPLE) {
            if (!walking || thrown) continue;
            try {
                walking = visit(result.row(0));
            } catch (...) {
                thrown = std::current_exception();
            }
        } else if (result.status() != PGRES_TUPLES_OK && !failed) {
            failed.emplace(std::move(result));
        }
    }
    if (thrown) std::rethrow_exception(thrown);
    if (failed) fail(what, failed->get());
}

std::string Connection::exec(const std::string& sql) {
    Result result(PQexec(m_conn, sql.c_str()));
    if (!result.ok()) fail("« " + sql + " »", result.get());
    return PQcmdStatus(const_cast<PGresult*>(result.get()));
}

void Connection::quietly(const char* sql) {
    PQclear(PQexec(m_conn, sql));
}

void Connection::fail(const std::string& what, const PGresult* result) const {
    const char* primary = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
    std::string message = masked(primary ? primary : trimmed(PQerrorMessage(m_conn)), m_secrets);
    if (lost()) {
        throw base::Error(base::codes::kStorage, "La connexion au serveur PostgreSQL de la base " + m_name +
                                                     " est perdue : " + message);
    }
    const char* state = result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    // A lock that did not come in time, a deadlock, or a conflict the server settled by failing us.
    for (const char* busy : {"55P03", "40P01", "40001"}) {
        if (state && std::strcmp(state, busy) == 0) {
            throw base::Error(
                base::codes::kBusy,
                "La base " + m_name + " est occupée par un autre poste ; réessayez dans un instant");
        }
    }
    std::string text = "Erreur de la base " + m_name;
    if (!what.empty()) text += " (" + what + ")";
    throw base::Error(base::codes::kStorage, masked(text, m_secrets) + " : " + message);
}

}  // namespace mvdb::pg
