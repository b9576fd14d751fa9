#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mvdb {
class Database;
}

// The rules of the service screens that need no screen: the keys they make, the codes they propose, and
// which records still use one that the planner wants to delete.
namespace control {

// CleProtocole: CodeAide (5) + first internal day (5) + element code (6) + sequence (1) + start bound in
// hundredths (4). The parts are taken as they are: the callers hand them at their width.
std::string cleProtocole(std::string_view codeAide, std::string_view premierJour,
                         std::string_view codeElement, char sequence, std::string_view debut);

// The sequence that keeps a new protocole's key apart from `cles` when it shares the aidé, first day,
// element and start bound of one of them: '1' to '9', the lowest free; nullopt when all nine are taken.
std::optional<char> sequenceLibre(const std::vector<std::string>& cles, std::string_view codeAide,
                                  std::string_view premierJour, std::string_view codeElement,
                                  std::string_view debut);

// The code of `largeur` digits that follows the highest of `codes`; when the highest is the last of that
// width, the lowest one unused; empty when every code is taken. Codes that are not `largeur` digits do not
// count, so a service's own lettered codes never stop the numbering.
std::string prochainCodeLibre(const std::vector<std::string>& codes, int largeur);

// The next management element code of one aidé (6 characters): the highest of `codes` with its trailing
// digits counted up and its letters kept ("SSI001" gives "SSI002"); "000001" for a first element, and the
// lowest free numeric code when counting up would leave six characters or meet a taken code.
std::string prochainCodeElement(const std::vector<std::string>& codes);

// What still uses a record, each named as the refusal lists it ("protocole 000122151100000110900"), in
// key order; empty when nothing does, so the record may go.
std::vector<std::string> usagesAide(mvdb::Database& database, const std::string& codeAide);
std::vector<std::string> usagesTournee(mvdb::Database& database, const std::string& codeTournee);
// A management element (CodeAide + element code) is used by the accords and protocoles of its aidé
// that carry its element code.
std::vector<std::string> usagesElement(mvdb::Database& database, const std::string& cleElement);

}  // namespace control
