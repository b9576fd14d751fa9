#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "base/date.h"
#include "mvdb/sqlite_store.h"

namespace base {
class Clock;
}
namespace mvdb {
class Database;
}

// The command-line tools of `zandorel`. Each fails with base::Error; the caller prints its message.
namespace app {

std::shared_ptr<mvdb::Database> openDatabase(const std::string& path, mvdb::OpenMode mode,
                                             const base::Clock& clock);

// The years a service's today may lie in. Days in keys have five digits, and a today typed with the
// wrong century would make the purge take every tournée for old.
inline constexpr int kFirstTodayYear = 1980;
inline constexpr int kLastTodayYear = 2199;

// What is wrong with `text` as today's date ("dd/mm/yyyy" within the years above), or the empty string.
std::string todayProblem(const std::string& text);
// Reads "dd/mm/yyyy" for --today; fails with a message naming the option.
base::Date parseTodayOption(const std::string& text);

// Flushes `out` and fails with base::Error, naming `where`, when a write to it failed (a full disk, a
// closed pipe): a command's output cut short is never a success.
void checkWritten(std::ostream& out, const std::string& where);

// Loads JSON Lines records, all or none: a bad line names its number and nothing is written.
// Returns the number of records loaded.
std::size_t loadRecords(mvdb::Database& database, std::istream& in, const std::string& sourceName);

// Writes the records of one file, or of every file by name, as JSON Lines in key order. Stops at the
// first write that fails.
void dumpRecords(mvdb::Database& database, const std::optional<std::string>& file, std::ostream& out);

// Runs a sentence and writes one line per row, the listed attributes separated by tabs.
void queryRecords(mvdb::Database& database, const std::string& file, const std::string& list,
                  const std::string& sentence, std::ostream& out);

}  // namespace app
