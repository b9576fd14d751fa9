#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mvdb {
class Database;
class DynamicRecord;
}  // namespace mvdb

// The rules of the service screens that need no screen: the keys they make, what their pickers list, and
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

// Every key of `fichier` that `condition` ("CodeAide = \"00012\"", empty for all) selects, in key order.
std::vector<std::string> clesSelectionnees(mvdb::Database& database, std::string_view fichier,
                                           const std::string& condition);
// The aidés as their lists show them, in code order: "00012 DUPONT Marie". The code is the first five
// characters.
std::vector<std::string> listeAides(mvdb::Database& database);
// The sectors that the tournées cover, each once, in order: the sectors a management element can take.
std::vector<std::string> secteursDesTournees(mvdb::Database& database);

// Keeps those look-ups of aidé `codeAide` in step with its protocoles and elements, inside the caller's
// transaction: one record under the look-up key of each protocole, holding the sector of the protocole's
// element; a look-up that no protocole of the aidé leads to any more is deleted.
void accorderSecteursAffectation(mvdb::Database& database, const std::string& codeAide);

// The values of a multi-valued attribute, and the attribute made of `valeurs` again (emptied when none).
std::vector<std::string> valeurs(const mvdb::DynamicRecord& enreg, int attribut);
void ecrireValeurs(mvdb::DynamicRecord& enreg, int attribut, const std::vector<std::string>& valeurs);

// What still uses a record, each named as the refusal lists it ("protocole 000122151100000110900"), in
// key order; empty when nothing does, so the record may go.
std::vector<std::string> usagesAide(mvdb::Database& database, const std::string& codeAide);
std::vector<std::string> usagesTournee(mvdb::Database& database, const std::string& codeTournee);
// A management element (CodeAide + element code) is used by the accords and protocoles of its aidé
// that carry its element code.
std::vector<std::string> usagesElement(mvdb::Database& database, const std::string& cleElement);
// A protocole is used by the planned interventions that name it, one mention per tournée and day.
std::vector<std::string> usagesProtocole(mvdb::Database& database, const std::string& cleProtocole);

}  // namespace control
