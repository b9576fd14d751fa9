#include "companions/regles_service.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/date.h"
#include "base/text.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace control {
namespace {

constexpr int kLongueurElement = 6;
constexpr std::size_t kLongueurRecherche = 16;

std::string egal(std::string_view champ, std::string_view valeur) {
    return std::string(champ) + " = \"" + std::string(valeur) + "\"";
}

// A day of a planned record's key as the planner reads it; the key's own text when it is no day.
std::string jourLisible(const std::string& jourInterne) {
    if (!base::allDigits(jourInterne)) return jourInterne;
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

std::vector<std::string> clesSelectionnees(mvdb::Database& database, std::string_view fichier,
                                           const std::string& condition) {
    const std::string phrase =
        "SELECT " + std::string(fichier) + (condition.empty() ? "" : " AVEC " + condition) + " PAR 0";
    const mvdb::DynamicRecord reponse = data::Interroger(database, phrase, fichier, "0");
    std::vector<std::string> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) out.push_back(reponse(i, 1));
    return out;
}

std::vector<std::string> listeAides(mvdb::Database& database) {
    namespace ca = data::civilaide;
    const mvdb::DynamicRecord reponse =
        data::Interroger(database, "SELECT CIVILAIDE PAR 0", data::kCIVILAIDE,
                         "0 " + std::to_string(ca::kNom) + " " + std::to_string(ca::kPrenom));
    std::vector<std::string> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) out.push_back(reponse(i, 1) + " " + reponse(i, 2) + " " + reponse(i, 3));
    return out;
}

std::vector<std::string> secteursDesTournees(mvdb::Database& database) {
    const std::shared_ptr<mvdb::File> f = database.OpenFile(std::string(data::kSSIADCARACTTOURNEE));
    std::set<std::string> secteurs;
    for (const std::string& cle : clesSelectionnees(database, data::kSSIADCARACTTOURNEE, "")) {
        mvdb::DynamicRecord tournee;
        if (!data::LireEnregistrement(*f, tournee, cle)) continue;
        for (const std::string& s : valeurs(tournee, data::caracttournee::kSecteurs))
            if (!s.empty()) secteurs.insert(s);
    }
    return {secteurs.begin(), secteurs.end()};
}

void accorderSecteursAffectation(mvdb::Database& database, const std::string& codeAide) {
    const std::shared_ptr<mvdb::File> gestion = database.OpenFile(std::string(data::kSSIADELEMGEST));
    const std::string deLAide = egal("CodeAide", codeAide);
    // The look-up key cuts the protocole's first day and element: two protocoles may share one. The first
    // in key order gives it its sector.
    std::map<std::string, std::string> voulues;
    for (const std::string& cle : clesSelectionnees(database, data::kSSIADPROTOCOLE, deLAide)) {
        mvdb::DynamicRecord element;
        if (!data::LireEnregistrement(*gestion, element, codeAide + base::Mid(cle, 11, kLongueurElement)))
            continue;
        voulues.emplace(data::elemgest::cleSecteurAffectation(cle), element(data::elemgest::kSecteur));
    }
    for (const std::string& cle : clesSelectionnees(database, data::kSSIADELEMGEST, deLAide))
        if (cle.size() == kLongueurRecherche && base::Mid(cle, 6, 5) == codeAide && !voulues.count(cle))
            gestion->Delete(cle);
    for (const auto& [cle, secteur] : voulues) {
        mvdb::DynamicRecord enreg;
        const bool existe = data::LireEnregistrement(*gestion, enreg, cle);
        if (existe && enreg(data::elemgest::kSecteur) == secteur) continue;
        // A record read keeps the attributes that belong to other programs.
        enreg = existe ? gestion->Read(cle) : gestion->New(cle);
        enreg.set(data::elemgest::kSecteur, secteur);
        enreg.DBWrite();
    }
}

std::vector<std::string> valeurs(const mvdb::DynamicRecord& enreg, int attribut) {
    std::vector<std::string> out;
    for (std::int64_t v = 1; v <= enreg.DCount(attribut); ++v)
        out.push_back(enreg(attribut, v));
    return out;
}

void ecrireValeurs(mvdb::DynamicRecord& enreg, int attribut, const std::vector<std::string>& valeurs) {
    enreg.set(attribut, "");
    for (std::size_t v = 0; v < valeurs.size(); ++v)
        enreg.set(attribut, static_cast<std::int64_t>(v + 1), valeurs[v]);
}

namespace {

// "tournée 001 du 30/11/2026" for each tournée and day of the planned records `cles`, each once.
void ajouterJoursPlanifies(std::vector<std::string>& usages, const std::vector<std::string>& cles) {
    std::set<std::string> vus;
    for (const std::string& cle : cles) {
        const std::string nom = "tournée " + data::tournee::codeTournee(cle) + " du " +
                                jourLisible(data::tournee::jourInterne(cle));
        if (vus.insert(nom).second) usages.push_back(nom);
    }
}

}  // namespace

std::vector<std::string> usagesAide(mvdb::Database& database, const std::string& codeAide) {
    std::vector<std::string> usages;
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADACCORDS, egal("CodeAide", codeAide)))
        usages.push_back("accord " + cle);
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADPROTOCOLE, egal("CodeAide", codeAide)))
        usages.push_back("protocole " + cle);
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADELEMGEST, egal("CodeAide", codeAide)))
        usages.push_back("élément de gestion " + cle);
    // One mention per tournée and day: the planner looks for the day, not for each visit.
    ajouterJoursPlanifies(usages,
                          clesSelectionnees(database, data::kSSIADTOURNEE, egal("CodeAide", codeAide)));
    return usages;
}

std::vector<std::string> usagesTournee(mvdb::Database& database, const std::string& codeTournee) {
    std::vector<std::string> usages;
    std::set<std::string> vus;
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADTOURNEE, egal("CodeTournee", codeTournee))) {
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
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADACCORDS, egal("CodeAide", codeAide)))
        if (base::Mid(cle, 9, kLongueurElement) == element) usages.push_back("accord " + cle);
    for (const std::string& cle :
         clesSelectionnees(database, data::kSSIADPROTOCOLE, egal("CodeAide", codeAide)))
        if (base::Mid(cle, 11, kLongueurElement) == element) usages.push_back("protocole " + cle);
    return usages;
}

std::vector<std::string> usagesProtocole(mvdb::Database& database, const std::string& cleProtocole) {
    std::vector<std::string> usages;
    ajouterJoursPlanifies(
        usages, clesSelectionnees(database, data::kSSIADTOURNEE,
                                  egal(std::to_string(data::tournee::kCleProtocole), cleProtocole)));
    return usages;
}

}  // namespace control
