#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace data {
class ObjetConversion;
}

// What the service screens check of a typed value, and how they word a refusal. Each check gives the
// refusal's whole text, empty when the value is right, and then the value as it is stored; a screen runs
// all its checks before it writes anything.
namespace control {

// A refusal that names the field by its caption: `« Fin » : la fin doit être après le début.`
std::string messageChamp(std::string_view legende, std::string_view probleme);

// A time typed HHhMM ("11h30", "9h05", "9h") in hundredths of an hour on four digits ("1150"); empty when
// the text is no time of the day from 00h00 to 24h00.
std::string centiemes(std::string_view texte);
// Hundredths of an hour as the planner types them back: "1150" is "11h30".
std::string heureSaisie(std::string_view centiemes);

// A field that must not be empty (blanks alone count as empty).
std::string verifierRempli(std::string_view legende, std::string_view texte);
// A time HHhMM; `centiemesLus` receives it in hundredths on four digits.
std::string verifierHeure(std::string_view legende, std::string_view texte, std::string& centiemesLus);
// A date as the planner types it (completed as the rest of the screen completes dates); `jourInterne`
// receives its internal day number.
std::string verifierDate(std::string_view legende, std::string_view texte, data::ObjetConversion& conversion,
                         std::string& jourInterne);
// A duration of 1 to 1,440 minutes, in digits.
std::string verifierDuree(std::string_view legende, std::string_view texte, int& minutes);
// A window from `debut` to `fin` (hundredths) that ends after it starts and holds `dureeMn` minutes; the
// refusal names the end's field.
std::string verifierFenetre(std::string_view legendeFin, std::string_view debut, std::string_view fin,
                            int dureeMn);

// The question before a deletion: "Supprimer le soin 12 « Toilette » ?".
std::string questionSuppression(std::string_view designation);
// The refusal of a deletion that other records still depend on, naming at most five of them:
// "Le soin 12 « Toilette » est encore utilisé par : protocole 00012215110000010900."; "utilisée" after a
// designation that begins with "la ".
std::string refusUtilise(std::string_view designation, const std::vector<std::string>& utilisateurs);

// The code a new record gets: the code after the greatest of `existants`, with its letters and its width
// ("S09" gives "S10"), or the first free one when that would need more digits; `largeur` digits from 1
// when nothing exists yet. Empty when every code of that width is taken.
std::string prochainCode(const std::vector<std::string>& existants, int largeur);

}  // namespace control
