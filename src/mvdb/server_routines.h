#pragma once

#include <map>
#include <string>

#include "mvdb/database.h"

// The routines that the service's database server runs for the screen, in this process.
namespace mvdb {

// SSIADPERIODEACTIVE: arguments 1 to 3 are an accord's key and two days. The reply's whole value is "1"
// when the accord exists, is not suspended (attribute 3 "S") and the first day is not after the second;
// "0" otherwise.
DynamicRecord periodeActive(Database& database, const DynamicRecord& arguments);

// AFFICHEPROTOCSSIAD, with the command line
//   AFFICHEPROTOCSSIAD |<work key>||S|<day>|<day>|||<CodeAide>|AA|
// writes TPSTEMPO <work key>AFFICHEPROTOCSSIAD: attribute 1 has one value per column and one sub-value
// per row. When the day lies in one of the aidé's absences, row 1 is of type "AbsAide". Otherwise one
// row "IntervS" per protocole of the aidé in force on that day and scheduled on its weekday, in key
// order: start bound, end bound, key, duration, kind ("I" when every soin is an infirmier's act, "A"
// when none is or there is no soin, "M" otherwise; a soin missing from SSIADSOINS counts as no
// infirmier's act). A protocole whose first or last day is not a number, or whose last day is before
// its first, is passed on whatever the day, for the reader to check and name; an absence whose days
// are such makes no one absent.
DynamicRecord afficheProtocSsiad(Database& database, const DynamicRecord& request);

void registerServerRoutines(std::map<std::string, ServerRoutine>& subroutines,
                            std::map<std::string, ServerRoutine>& programs);

}  // namespace mvdb
