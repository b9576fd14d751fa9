#include "app/week_command.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "app/commands.h"
#include "base/clock.h"
#include "base/error.h"
#include "data/record_checks.h"
#include "mvdb/database.h"

namespace app {
namespace {

std::string texte(const std::string& valeur) {
    return nlohmann::json(valeur).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// Left-aligned in a column of `largeur` characters, counted as characters, not bytes.
std::string colonne(const std::string& valeur, std::size_t largeur) {
    std::size_t caracteres = 0;
    for (unsigned char octet : valeur)
        caracteres += (octet & 0xC0) != 0x80;
    return valeur + std::string(largeur > caracteres ? largeur - caracteres : 1, ' ');
}

}  // namespace

std::string weekJson(const control::Semaine& semaine) {
    // Written by hand to keep the fields in the order and spacing of the documented form.
    std::ostringstream out;
    out << "{\"week\": " << texte(semaine.lundi().text())
        << ", \"soir\": " << (semaine.demiJournee == control::DemiJournee::Soir ? "true" : "false")
        << ", \"days\": [";
    for (std::size_t d = 0; d < semaine.jours.size(); ++d) {
        const control::JourDeSemaine& jour = semaine.jours[d];
        out << (d ? ", " : "") << "{\"date\": " << texte(jour.date.text())
            << ", \"waiting\": " << jour.enAttente << ", \"tournees\": [";
        for (std::size_t t = 0; t < jour.tournees.size(); ++t) {
            const control::TourneeDuJour& tournee = jour.tournees[t];
            out << (t ? ", " : "") << "{\"code\": " << texte(tournee.code)
                << ", \"label\": " << texte(tournee.libelle) << ", \"planned\": " << tournee.prevues
                << ", \"minutes\": " << tournee.minutes << ", \"anomalies\": " << tournee.anomalies << "}";
        }
        out << "]}";
    }
    out << "]}";
    return out.str();
}

std::string weekTable(const control::Semaine& semaine) {
    std::ostringstream out;
    out << "Semaine du " << semaine.lundi().text() << ", "
        << (semaine.demiJournee == control::DemiJournee::Soir ? "soir" : "matin") << "\n";
    for (const control::JourDeSemaine& jour : semaine.jours) {
        out << "\n"
            << colonne(std::string(base::weekdayName(jour.date.weekday())) + " " + jour.date.text(), 40)
            << "en attente : " << jour.enAttente << "\n";
        if (jour.tournees.empty()) out << "  aucune tournée\n";
        for (const control::TourneeDuJour& t : jour.tournees) {
            out << "  " << colonne(t.code, 4) << colonne(t.libelle, 34) << "prévues : " << t.prevues
                << "  minutes : " << t.minutes << "  anomalies : " << t.anomalies
                << (t.nonDefinie ? "  (non définie)" : "") << "\n";
        }
    }
    return out.str();
}

void runWeek(const WeekOptions& o, std::ostream& out, std::ostream& err) {
    base::SystemClock clock =
        o.today.empty() ? base::SystemClock() : base::SystemClock(parseTodayOption(o.today));
    const std::optional<base::Date> jour = base::Date::parse(o.date);
    if (!jour) throw base::Error(base::codes::kBadData, "Date incorrecte pour --date : « " + o.date + " »");
    std::shared_ptr<mvdb::Database> db = openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    const control::Semaine semaine = control::calculerSemaine(
        *db, clock, *jour, o.soir ? control::DemiJournee::Soir : control::DemiJournee::Matin);
    out << (o.json ? weekJson(semaine) + "\n" : weekTable(semaine));
    out.flush();
    // Told even when the output fails: they are faults of the database, to be mended whatever happens.
    err << weekFaults(semaine) << std::flush;
    if (!out) throw base::Error(base::codes::kStorage, "Écriture impossible de la semaine sur la sortie");
}

std::string weekFaults(const control::Semaine& semaine) {
    const std::string nommes = control::defautsNommes(semaine);
    return nommes.empty() ? "" : "zandorel : " + nommes;
}

}  // namespace app
