#include "app/commands.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <istream>
#include <ostream>
#include <vector>

#include "app/records_json.h"
#include "base/error.h"
#include "data/record_checks.h"
#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/open_store.h"
#include "mvdb/store.h"

namespace app {

std::shared_ptr<mvdb::Database> openDatabase(const std::string& path, mvdb::OpenMode mode,
                                             const base::Clock& clock) {
    return std::make_shared<mvdb::Database>(mvdb::openStore(path, mode), clock);
}

std::string todayProblem(const std::string& text) {
    std::optional<base::Date> date = base::Date::parse(text);
    if (!date) return "date incorrecte « " + text + " » (jj/mm/aaaa attendu)";
    if (date->year() < kFirstTodayYear || date->year() > kLastTodayYear) {
        return "date « " + text + " » hors des années " + std::to_string(kFirstTodayYear) + " à " +
               std::to_string(kLastTodayYear);
    }
    return {};
}

base::Date parseTodayOption(const std::string& text) {
    const std::string problem = todayProblem(text);
    if (!problem.empty()) throw base::Error(base::codes::kBadData, "--today : " + problem);
    return *base::Date::parse(text);
}

void checkWritten(std::ostream& out, const std::string& where) {
    errno = 0;
    out.flush();
    if (out) return;
    const int cause = errno;
    throw base::Error(
        base::codes::kStorage,
        "Écriture impossible sur " + where + (cause != 0 ? std::string(" : ") + std::strerror(cause) : ""));
}

std::size_t loadRecords(mvdb::Database& database, std::istream& in, const std::string& sourceName) {
    std::vector<RecordLine> records;
    std::string line;
    errno = 0;
    for (std::size_t number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        try {
            records.push_back(recordFromJson(line));
            const RecordLine& r = records.back();
            // A record the screen could not show nor print must not get in at all.
            if (auto defaut = data::checkRecord(r.file, r.key, mvdb::DynamicRecord(r.text)))
                throw base::Error(base::codes::kBadData, defaut->text());
        } catch (const base::Error& e) {
            throw base::Error(e.code(), sourceName + ", ligne " + std::to_string(number) + " : " + e.what() +
                                            " ; rien n'a été chargé");
        }
    }
    // A folder opens as a file and fails at its first read: that is no empty input.
    if (in.bad()) {
        const int cause = errno;
        throw base::Error(base::codes::kBadData,
                          "Lecture impossible de " + sourceName +
                              (cause != 0 ? std::string(" : ") + std::strerror(cause) : "") +
                              " ; rien n'a été chargé");
    }
    mvdb::Store& store = database.store();
    mvdb::Transaction transaction(database);
    for (const RecordLine& r : records) {
        if (!store.hasFile(r.file)) store.createFile(r.file);
        store.write(r.file, r.key, r.text);
    }
    transaction.commit();
    return records.size();
}

void dumpRecords(mvdb::Database& database, const std::optional<std::string>& file, std::ostream& out) {
    mvdb::Store& store = database.store();
    std::vector<std::string> files = file ? std::vector<std::string>{*file} : store.fileNames();
    for (const std::string& name : files) {
        if (!store.hasFile(name)) throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + name);
    }
    for (const std::string& name : files) {
        if (!out) return;
        store.scanAll(name, [&](const std::string& key, const std::string& text) {
            out << recordToJson({name, key, text}) << '\n';
            // A full disk fails every later write too: stop at once rather than format the rest.
            return static_cast<bool>(out);
        });
    }
}

void queryRecords(mvdb::Database& database, const std::string& file, const std::string& list,
                  const std::string& sentence, std::ostream& out) {
    mvdb::DynamicRecord request;
    request.set(1, sentence);
    request.set(2, file);
    request.set(3, list);
    mvdb::DynamicRecord reply = database.Query(request.text());
    // A row is its values with their marks: it is written whole, each mark a tab, however many
    // attributes the list names.
    std::string line;
    for (std::int64_t row = 1; row <= reply.DCount(); ++row) {
        line.assign(reply.view(row));
        std::replace(line.begin(), line.end(), mvdb::kValueMark, '\t');
        line += '\n';
        out << line;
    }
}

}  // namespace app
