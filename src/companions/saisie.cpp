#include "companions/saisie.h"

#include <algorithm>
#include <set>

#include "base/text.h"
#include "data/conversion.h"
#include "model/clock.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

std::string_view sansBlancs(std::string_view texte) {
    const std::size_t debut = texte.find_first_not_of(' ');
    if (debut == std::string_view::npos) return {};
    return texte.substr(debut, texte.find_last_not_of(' ') - debut + 1);
}

// The most a search for a free code looks through: six digits, a million codes.
constexpr int kLargeurCherchee = 6;

}  // namespace

std::string messageChamp(std::string_view legende, std::string_view probleme) {
    return "« " + std::string(legende) + " » : " + std::string(probleme);
}

std::string centiemes(std::string_view texte) {
    const std::size_t h = texte.find_first_of("hH");
    if (h == std::string_view::npos || h == 0 || h > 2) return "";
    const std::string_view heures = texte.substr(0, h), minutes = texte.substr(h + 1);
    if (!base::allDigits(heures) || (!minutes.empty() && (minutes.size() != 2 || !base::allDigits(minutes))))
        return "";
    const int hh = std::stoi(std::string(heures)), mm = minutes.empty() ? 0 : std::stoi(std::string(minutes));
    if (mm > 59 || hh > 24 || (hh == 24 && mm > 0)) return "";
    return base::zeroPad(base::roundHalfEven(model::HeureVersCentiemes(hh + mm / 100.0) * 100), 4);
}

std::string heureSaisie(std::string_view centiemes) {
    return Ctr_Zandorel::heureDepot(base::toNumber(centiemes));
}

std::string verifierRempli(std::string_view legende, std::string_view texte) {
    return sansBlancs(texte).empty() ? messageChamp(legende, "à remplir.") : "";
}

std::string verifierHeure(std::string_view legende, std::string_view texte, std::string& centiemesLus) {
    if (std::string refus = verifierRempli(legende, texte); !refus.empty()) return refus;
    centiemesLus = centiemes(sansBlancs(texte));
    if (centiemesLus.empty())
        return messageChamp(legende, std::string(texte) + " n'est pas une heure entre 00h00 et 24h00.");
    return "";
}

std::string verifierDate(std::string_view legende, std::string_view texte, data::ObjetConversion& conversion,
                         std::string& jourInterne) {
    if (std::string refus = verifierRempli(legende, texte); !refus.empty()) return refus;
    const std::string normalisee = conversion.NormaliserDate(sansBlancs(texte));
    jourInterne = conversion.LireOptionDate() ? "" : conversion.DateInterne(normalisee);
    if (jourInterne.empty()) return messageChamp(legende, std::string(texte) + " n'est pas une date.");
    return "";
}

std::string verifierDuree(std::string_view legende, std::string_view texte, int& minutes) {
    if (std::string refus = verifierRempli(legende, texte); !refus.empty()) return refus;
    const std::string_view nombre = sansBlancs(texte);
    // Five digits at most: more are no duration, and would not fit an int.
    minutes = base::allDigits(nombre) && nombre.size() <= 5 ? std::stoi(std::string(nombre)) : 0;
    if (minutes < 1 || minutes > 1440)
        return messageChamp(legende, std::string(texte) + " n'est pas une durée de 1 à 1440 minutes.");
    return "";
}

std::string verifierFenetre(std::string_view legendeFin, std::string_view debut, std::string_view fin,
                            int dureeMn) {
    if (base::compareValues(fin, debut) <= 0)
        return messageChamp(legendeFin, "la fin doit être après le début.");
    // Each bound back to its minute of the day, as the planner typed it: 8h05 is stored 808, which is 4.8
    // minutes after 8h00 and must still hold 5 minutes of care.
    const auto minuteDuJour = [](std::string_view c) {
        return base::roundHalfEven(base::toNumber(c) * 60 / 100);
    };
    if (minuteDuJour(fin) - minuteDuJour(debut) < dureeMn)
        return messageChamp(
            legendeFin, "la fenêtre est plus courte que la durée (" + std::to_string(dureeMn) + " minutes).");
    return "";
}

std::string questionSuppression(std::string_view designation) {
    return "Supprimer " + std::string(designation) + " ?";
}

std::string refusUtilise(std::string_view designation, const std::vector<std::string>& utilisateurs) {
    constexpr std::size_t kNommes = 5;
    std::string liste;
    for (std::size_t i = 0; i < utilisateurs.size() && i < kNommes; ++i)
        liste += (i > 0 ? ", " : "") + utilisateurs[i];
    if (utilisateurs.size() > kNommes) liste += ", …";
    // The participle agrees with the designation: "la tournée 001 … est encore utilisée".
    const bool feminin = designation.starts_with("la ");
    return base::UCase(base::Left(designation, 1)) + base::Mid(designation, 2) + " est encore utilisé" +
           (feminin ? "e" : "") + " par : " + liste + ".";
}

std::string prochainCode(const std::vector<std::string>& existants, int largeur) {
    const std::set<std::string> pris(existants.begin(), existants.end());
    std::string prefixe;
    long long suivant = 1;
    if (!existants.empty()) {
        const std::string& plusGrand = *std::max_element(
            existants.begin(), existants.end(),
            [](const std::string& a, const std::string& b) { return base::compareValues(a, b) < 0; });
        const std::size_t finPrefixe = plusGrand.find_last_not_of("0123456789") + 1;
        // A code without digits of its own gives no width: the new codes are numbers.
        if (finPrefixe < plusGrand.size()) {
            prefixe = plusGrand.substr(0, finPrefixe);
            largeur = static_cast<int>(plusGrand.size() - finPrefixe);
            suivant = std::stoll(plusGrand.substr(finPrefixe, kLargeurCherchee + 1)) + 1;
        }
    }
    largeur = std::clamp(largeur, 1, kLargeurCherchee);
    long long plafond = 1;
    for (int i = 0; i < largeur; ++i)
        plafond *= 10;
    if (suivant < plafond && !pris.count(prefixe + base::zeroPad(suivant, largeur)))
        return prefixe + base::zeroPad(suivant, largeur);
    for (long long n = 1; n < plafond; ++n)
        if (!pris.count(prefixe + base::zeroPad(n, largeur))) return prefixe + base::zeroPad(n, largeur);
    return "";
}

}  // namespace control
