#include "week/impression_semaine.h"

#include <algorithm>
#include <map>

#include "base/text.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

constexpr std::int64_t kLargeurTournee = 24;  // characters of the first column
constexpr std::int64_t kLargeurJour = 15;     // characters of a day's column
constexpr int kLignesParTournee = 2;

std::string aGauche(const std::string& texte, std::int64_t largeur) {
    const std::string coupe = base::Left(texte, largeur - 1);
    return " " + coupe +
           std::string(static_cast<std::size_t>(largeur - 1 - static_cast<std::int64_t>(base::Len(coupe))),
                       ' ');
}

std::string auCentre(const std::string& texte, std::int64_t largeur) {
    const std::string coupe = base::Left(texte, largeur - 1);
    const std::int64_t reste = largeur - static_cast<std::int64_t>(base::Len(coupe));
    const std::int64_t avant = reste / 2;
    return std::string(static_cast<std::size_t>(avant), ' ') + coupe +
           std::string(static_cast<std::size_t>(reste - avant), ' ');
}

std::string jourCourt(const base::Date& date) {
    return base::Left(std::string(base::weekdayName(date.weekday())), 3) + ". " + base::Left(date.text(), 5);
}

// The page's frame: rules under and over the table's head and down every column to `bas`.
struct Cadre {
    double haut = 0;
    std::vector<double> colonnes;

    // A rule leaves the pen where the text goes on, at the start of its line.
    void regle(toolkit::Printer& p, double y) const {
        const double suite = p.currentY();
        p.line(colonnes.front(), y, colonnes.back(), y, 0);
        p.setCurrentX(0);
        p.setCurrentY(suite);
    }
    void fermer(toolkit::Printer& p, double bas) const {
        for (double x : colonnes)
            p.line(x, haut, x, bas, 0);
        p.setCurrentX(0);
        p.setCurrentY(bas);
    }
};

Cadre enteteSemaine(Impression& impression, const Semaine& semaine) {
    toolkit::Printer& p = *impression.currentPrinter();
    impression.EnteteDate();
    p.setFontBold(true);
    p.setFontSize(14);
    impression.ImprimerCentre("SEMAINE DU " + base::UCase(semaine.lundi().longText()) +
                              (semaine.demiJournee == DemiJournee::Soir ? " - SOIR" : " - MATIN"));
    p.setFontBold(false);
    p.setFontSize(10);
    p.print("");

    Cadre cadre;
    const double demi = p.textWidth(" ") / 2;
    cadre.colonnes.push_back(demi);
    for (int j = 0; j <= 7; ++j)
        cadre.colonnes.push_back(
            p.textWidth(std::string(static_cast<std::size_t>(kLargeurTournee + j * kLargeurJour), ' ')) +
            demi);
    cadre.haut = p.currentY();
    cadre.regle(p, cadre.haut);
    std::string tete = aGauche("Tournée", kLargeurTournee);
    for (const JourDeSemaine& jour : semaine.jours)
        tete += auCentre(jourCourt(jour.date), kLargeurJour);
    p.print(tete);
    cadre.regle(p, p.currentY());
    return cadre;
}

}  // namespace

std::vector<LigneSemaine> lignesSemaine(const Semaine& semaine) {
    std::map<std::string, LigneSemaine> parCode;
    for (std::size_t d = 0; d < semaine.jours.size(); ++d) {
        for (const TourneeDuJour& t : semaine.jours[d].tournees) {
            LigneSemaine& ligne = parCode[t.code];
            ligne.code = t.code;
            ligne.libelle = t.libelle;
            ligne.jours.resize(semaine.jours.size(), nullptr);
            ligne.jours[d] = &t;
        }
    }
    std::vector<LigneSemaine> lignes;
    for (auto& [code, ligne] : parCode)
        lignes.push_back(std::move(ligne));
    std::stable_sort(lignes.begin(), lignes.end(), [](const LigneSemaine& a, const LigneSemaine& b) {
        return base::compareValues(a.code, b.code) < 0;
    });
    return lignes;
}

std::string etatDuJour(const TourneeDuJour& jour) {
    if (jour.nonDefinie) return "non définie";
    if (jour.anomalies > 0)
        return std::to_string(jour.anomalies) + (jour.anomalies > 1 ? " anomalies" : " anomalie");
    if (jour.prevues == 0) return "vide";
    if (jour.capacite > 0 && jour.minutes >= jour.capacite) return "complète";
    return "";
}

void imprimerSemaine(Ctr_Zandorel& c, const Semaine& semaine) {
    const std::string choix = c.ObjetConversion.ChoisirImprimante("A4");
    c.host().DoEvents();
    if (base::toNumber(choix) == -1) return;
    Impression& impression = c.impression();
    toolkit::Printer& p = impression.setCurrentPrinter(static_cast<int>(base::toNumber(choix)));
    impression.ReglerCopiesImprimante();
    impression.ImpressionPaysage();
    impression.MaxLignesPage = 40;
    impression.LignesUtilisees = 0;

    try {
        Cadre cadre = enteteSemaine(impression, semaine);
        for (const LigneSemaine& ligne : lignesSemaine(semaine)) {
            if (impression.LignesUtilisees + kLignesParTournee > impression.MaxLignesPage) {
                cadre.fermer(p, p.currentY());
                p.newPage();
                impression.LignesUtilisees = 0;
                cadre = enteteSemaine(impression, semaine);
            }
            std::string haut = aGauche(ligne.code + " " + ligne.libelle, kLargeurTournee);
            std::string bas = aGauche(
                "    " + base::Mid(ligne.libelle, kLargeurTournee - 4, kLargeurTournee - 5), kLargeurTournee);
            for (const TourneeDuJour* jour : ligne.jours) {
                haut += auCentre(
                    jour ? std::to_string(jour->prevues) + " / " + std::to_string(jour->minutes) + " min"
                         : "",
                    kLargeurJour);
                bas += auCentre(jour ? etatDuJour(*jour) : "", kLargeurJour);
            }
            p.print(haut);
            p.print(bas);
            cadre.regle(p, p.currentY());
            impression.LignesUtilisees += kLignesParTournee;
        }
        std::string attente = aGauche("En attente", kLargeurTournee);
        for (const JourDeSemaine& jour : semaine.jours)
            attente += auCentre(std::to_string(jour.enAttente), kLargeurJour);
        p.print(attente);
        cadre.regle(p, p.currentY());
        impression.BasCadre = p.currentY();
        cadre.fermer(p, impression.BasCadre);
    } catch (...) {
        p.endDoc();
        throw;
    }
    p.endDoc();
}

}  // namespace control
