#include "week/semaine.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "base/clock.h"
#include "base/text.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "data/record_checks.h"
#include "model/clock.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/headless_host.h"
#include "week/read_once_store.h"

namespace control {
namespace {

struct Tournee {
    std::string code;
    std::string libelle;
    int jour = 0;  // 1 Monday to 7 Sunday; 0 when the record's day is no weekday
};

// Every tournée not deleted, by code, with its weekday.
std::vector<Tournee> tourneesEnService(mvdb::Database& database) {
    const mvdb::DynamicRecord reponse = data::Interroger(
        database, "SELECT SSIADCARACTTOURNEE AVEC 9 <> \"1\"", data::kSSIADCARACTTOURNEE, "0 1 2");
    std::vector<Tournee> tournees;
    for (std::int64_t i = 1; i <= reponse.DCount() && !reponse(i).empty(); ++i) {
        const std::optional<double> jour = base::parseNumber(reponse(i, 3));
        const bool semaine = jour && *jour >= 0 && *jour <= 6 && *jour == base::Int(*jour);
        tournees.push_back({reponse(i, 1), reponse(i, 2), semaine ? static_cast<int>(*jour) + 1 : 0});
    }
    std::sort(tournees.begin(), tournees.end(),
              [](const Tournee& a, const Tournee& b) { return base::compareValues(a.code, b.code) < 0; });
    return tournees;
}

int labelsCharges(const Ctr_Zandorel& c, bool detail) {
    int n = 0;
    for (const toolkit::Control* etiquette : c.Etq_Aide.elements()) {
        if (etiquette->index() != 0 && (etiquette->left() == model::kLeftDetail) == detail) ++n;
    }
    return n;
}

int minutes(double heure) {
    return static_cast<int>(base::roundHalfEven(model::HeureVersCentiemes(heure) * 60));
}

// Reads the boxes a display showed. The box that names records left out keeps its lines in the week's,
// each once; any other box refused the display. True when one did.
bool lireBoites(toolkit::HeadlessHost& hote, Semaine& semaine) {
    bool refus = false;
    for (const toolkit::HeadlessHost::Shown& boite : hote.takeShown()) {
        const std::string_view texte(boite.text);
        if (!texte.starts_with(data::kFaultsHead)) {
            refus = true;
            continue;
        }
        std::vector<std::string>* lignes = &semaine.defauts;
        for (std::size_t debut = texte.find("\r\n"); debut != std::string_view::npos;) {
            debut += 2;
            const std::size_t fin = texte.find("\r\n", debut);
            const std::string ligne(texte.substr(debut, fin == std::string_view::npos ? fin : fin - debut));
            debut = fin;
            if (ligne == data::kKeptHead) {
                lignes = &semaine.laissees;
            } else if (std::find(lignes->begin(), lignes->end(), ligne) == lignes->end()) {
                lignes->push_back(ligne);
            }
        }
    }
    return refus;
}

// The waiting list of each day: a display without a tournée in the half-day chosen.
void compterAttente(Ctr_Zandorel& c, toolkit::HeadlessHost& hote, Semaine& semaine) {
    // The start takes the only tournée of a service as chosen: the code is emptied as a planner would.
    c.Txt_CodeTournee.setText("");
    if (semaine.demiJournee == DemiJournee::Soir) {
        c.Opt_Soir_Click();
    } else {
        c.Opt_Matin_Click();
    }
    for (JourDeSemaine& jour : semaine.jours) {
        c.Txt_Date.setText(jour.date.text());
        c.Cmd_Affichage_Click();
        jour.enAttente = labelsCharges(c, false);
    }
    lireBoites(hote, semaine);
}

// The tournée chosen as the planner chooses it, then shown on its day of the week.
TourneeDuJour chiffrerTournee(Ctr_Zandorel& c, toolkit::HeadlessHost& hote, const Tournee& t,
                              const base::Date& date, Semaine& semaine) {
    TourneeDuJour chiffres{t.code, t.libelle};
    c.Txt_CodeTournee.setText(t.code);
    // A tournée that cannot be opened (marked otherwise than deleted) has nothing to show.
    if (c.Txt_CodeTournee.text() != t.code || !hote.takeShown().empty()) {
        c.Txt_CodeTournee.setText("");
        return chiffres;
    }
    chiffres.capacite = minutes(c.HeureFinEchelle) - minutes(c.HeureDebutEchelle);
    c.Cbo_Date.setText(date.text());
    c.Cmd_Affichage_Click();
    chiffres.nonDefinie = lireBoites(hote, semaine);
    chiffres.prevues = labelsCharges(c, true);
    double total = 0;
    for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i)
        total += base::toNumber(c.TabTempoDetail(i, model::col::DureeMn));
    chiffres.minutes = static_cast<int>(base::roundHalfEven(total));
    if (!c.TabAnomalies->text().empty()) chiffres.anomalies = static_cast<int>(c.TabAnomalies->DCount());
    return chiffres;
}

}  // namespace

base::Date lundiDe(base::Date jour) {
    return jour.addDays(1 - jour.weekday());
}

Semaine calculerSemaine(mvdb::Database& database, const base::Clock& clock, base::Date jour,
                        DemiJournee demiJournee) {
    // One moment of the database for the whole week; the private store keeps what it reads within it.
    mvdb::ConsistentRead lecture(database);
    auto privee = std::make_shared<mvdb::Database>(std::make_unique<ReadOnceStore>(database.store()), clock);
    toolkit::HeadlessHost hote;
    Ctr_Zandorel c(hote, clock);
    c.usage = Ctr_Zandorel::Usage::Chiffres;
    c.setTheClient(nullptr);
    c.setTheDatabase(privee);
    // Validation is never asked of this instance: the lowest rights do.
    c.setDroitsUtilisateur(std::make_shared<DroitsFixes>(0));
    c.Init();

    Semaine semaine;
    semaine.demiJournee = demiJournee;
    const base::Date lundi = lundiDe(jour);
    for (int d = 0; d < 7; ++d)
        semaine.jours.push_back({lundi.addDays(d), 0, {}});

    compterAttente(c, hote, semaine);
    for (const Tournee& t : tourneesEnService(*privee)) {
        if (t.jour == 0) continue;
        JourDeSemaine& jourDeLaTournee = semaine.jours[static_cast<std::size_t>(t.jour - 1)];
        jourDeLaTournee.tournees.push_back(chiffrerTournee(c, hote, t, jourDeLaTournee.date, semaine));
    }
    c.UserControl_Terminate();
    return semaine;
}

std::string defautsNommes(const Semaine& semaine) {
    if (semaine.defauts.empty() && semaine.laissees.empty()) return "";
    return data::faultsText(semaine.defauts, semaine.laissees, "\n") + "\n";
}

}  // namespace control
