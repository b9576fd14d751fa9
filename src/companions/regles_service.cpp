#include "companions/regles_service.h"

#include <algorithm>
#include <set>

#include "base/date.h"
#include "base/text.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace control {
namespace {

constexpr int kLongueurElement = 6;

bool chiffres(std::string_view texte) {
    return !texte.empty() &&
           std::all_of(texte.begin(), texte.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The keys of `fichier` that the sentence selects, in key order.
std::vector<std::string> cles(mvdb::Database& database, std::string_view fichier,
                              const std::string& condition) {
    const mvdb::DynamicRecord reponse = data::Interroger(
        database, "SELECT " + std::string(fichier) + " AVEC " + condition + " PAR 0", fichier, "0");
    std::vector<std::string> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) out.push_back(reponse(i, 1));
    return out;
}

std::string egal(std::string_view champ, std::string_view valeur) {
    return std::string(champ) + " = \"" + std::string(valeur) + "\"";
}

// A day of a planned record's key as the planner reads it; the key's own text when it is no day.
std::string jourLisible(const std::string& jourInterne) {
    if (!chiffres(jourInterne)) return jourInterne;
    return base::Date::fromInternal(std::stoi(jourInterne)).text();
}

}  // namespace

std::string cleProtocole(std::string_view codeAide, std::string_view premierJour,
                         std::string_view codeElement, char sequence, std::string_view debut) {
    std::string cle;
    cle.reserve(data::protocole::kLongueurCle);
    cle.append(codeAide).append(premierJour).append(codeElement).append(1, sequence).append(debut);
    return cle;
}

std::optional<char> sequenceLibre(const std::vector<std::string>& cles, std::string_view codeAide,
                                  std::string_view premierJour, std::string_view codeElement,
                                  std::string_view debut) {
    for (char s = '1'; s <= '9'; ++s) {
        const std::string cle = cleProtocole(codeAide, premierJour, codeElement, s, debut);
        if (std::find(cles.begin(), cles.end(), cle) == cles.end()) return s;
    }
    return std::nullopt;
}

std::string prochainCodeLibre(const std::vector<std::string>& codes, int largeur) {
    std::set<long long> pris;
    for (const std::string& c : codes)
        if (static_cast<int>(c.size()) == largeur && chiffres(c)) pris.insert(std::stoll(c));
    long long dernier = 1;
    for (int i = 0; i < largeur; ++i)
        dernier *= 10;
    --dernier;
    const long long suivant = pris.empty() ? 1 : *pris.rbegin() + 1;
    if (suivant <= dernier) return base::zeroPad(suivant, largeur);
    for (long long n = 1; n <= dernier; ++n)
        if (!pris.count(n)) return base::zeroPad(n, largeur);
    return "";
}

std::string prochainCodeElement(const std::vector<std::string>& codes) {
    std::vector<std::string> valides;
    for (const std::string& c : codes)
        if (c.size() == kLongueurElement) valides.push_back(c);
    if (valides.empty()) return base::zeroPad(1, kLongueurElement);
    const std::string plusHaut = *std::max_element(valides.begin(), valides.end());
    std::size_t debutChiffres = plusHaut.size();
    while (debutChiffres > 0 && plusHaut[debutChiffres - 1] >= '0' && plusHaut[debutChiffres - 1] <= '9')
        --debutChiffres;
    const std::string lettres = plusHaut.substr(0, debutChiffres);
    const std::string nombre = plusHaut.substr(debutChiffres);
    if (!nombre.empty()) {
        const std::string suivant =
            lettres + base::zeroPad(std::stoll(nombre) + 1, static_cast<int>(nombre.size()));
        if (suivant.size() == kLongueurElement &&
            std::find(valides.begin(), valides.end(), suivant) == valides.end())
            return suivant;
    }
    return prochainCodeLibre(valides, kLongueurElement);
}

std::vector<std::string> usagesAide(mvdb::Database& database, const std::string& codeAide) {
    std::vector<std::string> usages;
    for (const std::string& cle : cles(database, data::kSSIADACCORDS, egal("CodeAide", codeAide)))
        usages.push_back("accord " + cle);
    for (const std::string& cle : cles(database, data::kSSIADPROTOCOLE, egal("CodeAide", codeAide)))
        usages.push_back("protocole " + cle);
    for (const std::string& cle : cles(database, data::kSSIADELEMGEST, egal("CodeAide", codeAide)))
        usages.push_back("élément de gestion " + cle);
    // One mention per tournée and day: the planner looks for the day, not for each visit.
    std::set<std::string> vus;
    for (const std::string& cle : cles(database, data::kSSIADTOURNEE, egal("CodeAide", codeAide))) {
        const std::string nom = "tournée " + data::tournee::codeTournee(cle) + " du " +
                                jourLisible(data::tournee::jourInterne(cle));
        if (vus.insert(nom).second) usages.push_back(nom);
    }
    return usages;
}

std::vector<std::string> usagesTournee(mvdb::Database& database, const std::string& codeTournee) {
    std::vector<std::string> usages;
    std::set<std::string> vus;
    for (const std::string& cle : cles(database, data::kSSIADTOURNEE, egal("CodeTournee", codeTournee))) {
        const std::string nom = "planning du " + jourLisible(data::tournee::jourInterne(cle));
        if (vus.insert(nom).second) usages.push_back(nom);
    }
    return usages;
}

std::vector<std::string> usagesElement(mvdb::Database& database, const std::string& cleElement) {
    const std::string codeAide = base::Left(cleElement, 5);
    const std::string element = base::Mid(cleElement, 6);
    std::vector<std::string> usages;
    // Accord: CodeAide (5) + number (3) + element (6); protocole: CodeAide (5) + day (5) + element (6) + ...
    for (const std::string& cle : cles(database, data::kSSIADACCORDS, egal("CodeAide", codeAide)))
        if (base::Mid(cle, 9, kLongueurElement) == element) usages.push_back("accord " + cle);
    for (const std::string& cle : cles(database, data::kSSIADPROTOCOLE, egal("CodeAide", codeAide)))
        if (base::Mid(cle, 11, kLongueurElement) == element) usages.push_back("protocole " + cle);
    return usages;
}

}  // namespace control
