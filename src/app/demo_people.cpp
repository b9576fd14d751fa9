#include "app/demo_people.h"

#include <algorithm>

#include "base/text.h"

namespace app {
namespace {

const std::vector<std::string> kNoms = {
    "MARTIN",   "BERNARD",  "DUBOIS",  "THOMAS",   "ROBERT",    "RICHARD", "PETIT",    "DURAND",    "LEROY",
    "MOREAU",   "SIMON",    "LAURENT", "LEFÈVRE",  "MICHEL",    "GARCIA",  "DAVID",    "BERTRAND",  "ROUX",
    "VINCENT",  "FOURNIER", "MOREL",   "GIRARD",   "ANDRÉ",     "MERCIER", "DUPONT",   "LAMBERT",   "BONNET",
    "FRANÇOIS", "LEGRAND",  "GARNIER", "FAURE",    "ROUSSEAU",  "BLANC",   "GUÉRIN",   "HENRY",     "ROUSSEL",
    "PERRIN",   "MORIN",    "MATHIEU", "CLÉMENT",  "GAUTHIER",  "DUMONT",  "FONTAINE", "CHEVALIER", "ROBIN",
    "MASSON",   "GÉRARD",   "BOYER",   "DENIS",    "LEMAIRE",   "DUVAL",   "JOLY",     "ROCHE",     "NOËL",
    "MEUNIER",  "MARCHAND", "DUFOUR",  "BARBIER",  "BRUN",      "DUMAS",   "BRUNET",   "COLIN",     "RENARD",
    "ARNAUD",   "CARON",    "AUBERT",  "GIRAUD",   "VIDAL",     "RENAUD",  "PICARD",   "GAILLARD",  "LACROIX",
    "FABRE",    "DUPUIS",   "RIVIÈRE", "BÉRARD",   "CHAPUIS",   "BESSON",  "PÉRONNET", "THÉVENET",  "GRANGER",
    "BÉAL",     "FAVIER",   "MÉNARD",  "COURTIAL", "DESCHAMPS", "LE GALL", "DA SILVA",
};

const std::vector<std::string> kPrenomsFemmes = {
    "Marie",    "Jeanne",    "Germaine",  "Marcelle",  "Simone",     "Suzanne",   "Odette",     "Yvonne",
    "Paulette", "Madeleine", "Hélène",    "Geneviève", "Renée",      "Andrée",    "Lucienne",   "Colette",
    "Denise",   "Thérèse",   "Josette",   "Monique",   "Jacqueline", "Françoise", "Gisèle",     "Raymonde",
    "Huguette", "Ginette",   "Micheline", "Éliane",    "Noëlle",     "Solange",   "Bernadette", "Mireille",
};

const std::vector<std::string> kPrenomsHommes = {
    "Jean",   "Pierre",  "André",   "René",    "Marcel", "Louis",  "Roger",   "Georges", "Henri",   "Robert",
    "Joseph", "Paul",    "Maurice", "Raymond", "Lucien", "Gérard", "Jacques", "Michel",  "Bernard", "Claude",
    "Émile",  "Étienne", "Gaston",  "Fernand", "Léon",   "Albert", "Francis", "Noël",
};

const std::vector<std::string> kTypesVoie = {"rue",   "rue",    "rue",     "avenue", "boulevard",
                                             "place", "chemin", "impasse", "allée",  "route"};

const std::vector<std::string> kVoies = {
    "Victor Hugo",   "Jean Jaurès",         "de la République", "des Tilleuls",
    "du Moulin",     "des Écoles",          "Saint-Jean",       "de l'Église",
    "Pasteur",       "du Onze Novembre",    "Gambetta",         "des Lilas",
    "de la Gare",    "du Marché",           "des Jardins",      "Émile Zola",
    "du Château",    "des Pénitents",       "de la Libération", "Marcel Pagnol",
    "des Peupliers", "du Lavoir",           "de Lyon",          "de Saint-Étienne",
    "des Granges",   "de la Croix-Blanche", "des Vignes",       "du Stade",
    "Notre-Dame",    "des Cordeliers",
};

const std::vector<std::string> kComplements = {
    "Bâtiment B",
    "Résidence Les Érables, appartement 12",
    "Escalier C, 2e étage",
    "Résidence du Parc",
    "Appartement 4",
    "Au fond de la cour",
    "Rez-de-chaussée",
    "Bâtiment A, 3e étage",
    "Lieu-dit Les Bruyères",
};

struct Commune {
    const char* name;
    const char* postalCode;
};

// The service's town first; each sector also takes in one of the villages around it.
const std::vector<Commune> kCommunes = {
    {"Montbrison", "42600"},          {"Savigneux", "42600"},
    {"Champdieu", "42600"},           {"Précieux", "42600"},
    {"Écotay-l'Olme", "42600"},       {"Lézigneux", "42600"},
    {"Saint-Romain-le-Puy", "42610"}, {"Bard", "42600"},
    {"Verrières-en-Forez", "42600"},
};

std::string twoDigits(DemoRandom& random) {
    return base::zeroPad(random.below(100), 2);
}

std::string telephone(DemoRandom& random) {
    std::string text = random.chance(25) ? std::string("06") : std::string("04 77");
    while (text.size() < 14)
        text.append(" ").append(twoDigits(random));
    return text;
}

void drawName(DemoAide& aide, DemoRandom& random) {
    aide.nom = random.pick(kNoms);
    aide.prenom = random.chance(65) ? random.pick(kPrenomsFemmes) : random.pick(kPrenomsHommes);
}

void drawAddress(DemoAide& aide, int sectorIndex, DemoRandom& random) {
    aide.numero = std::to_string(random.between(1, 120));
    if (random.chance(8)) aide.numero += " bis";
    aide.typeVoie = random.pick(kTypesVoie);
    aide.voie = random.pick(kVoies);
    if (random.chance(30)) aide.complement = random.pick(kComplements);
    std::size_t village = 1 + static_cast<std::size_t>(sectorIndex) % (kCommunes.size() - 1);
    const Commune& commune = random.chance(65) ? kCommunes[0] : kCommunes[village];
    aide.ville = commune.name;
    aide.codePostal = commune.postalCode;
}

// A stay in hospital or with family: under way today or starting within three days for some, over
// a few weeks ago for others.
void drawAbsences(DemoAide& aide, int index, int today, DemoRandom& random) {
    if (index % 15 == 9 || index % 30 == 4) {
        int first = today - random.between(20, 40);
        aide.absences.push_back({first, first + random.between(3, 8)});
    }
    if (index % 15 == 4) {
        int first = random.chance(50) ? today - random.between(0, 3) : today + random.between(1, 3);
        aide.absences.push_back({first, std::max(first, today) + random.between(2, 10)});
    }
}

}  // namespace

void addDemoAides(DemoService& service, int count, DemoRandom& random) {
    int today = service.today.internalDay();
    service.aides.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        DemoAide aide;
        aide.code = base::zeroPad(i + 1, 5);
        int sectorIndex = random.below(static_cast<int>(service.sectors.size()));
        aide.sector = service.sectors[static_cast<std::size_t>(sectorIndex)];
        drawName(aide, random);
        drawAddress(aide, sectorIndex, random);
        aide.telephone = telephone(random);
        drawAbsences(aide, i, today, random);
        service.aides.push_back(std::move(aide));
    }
}

}  // namespace app
