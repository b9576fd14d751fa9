#pragma once

#include <string>
#include <vector>

#include "week/semaine.h"

namespace control {

class Ctr_Zandorel;

// One row of the week's table: a tournée, and its figures on the day it runs (none on the others).
struct LigneSemaine {
    std::string code;
    std::string libelle;
    std::vector<const TourneeDuJour*> jours;  // Monday to Sunday; nullptr when it does not run
};

// The tournées of the week, one row each, by code.
std::vector<LigneSemaine> lignesSemaine(const Semaine& semaine);

// What a cell says of a tournée's day beyond its counts: "" when nothing stands out.
std::string etatDuJour(const TourneeDuJour& jour);

// Prints the week on the printer the user chooses through the screen `c`, landscape unless the printer
// is one set up for A4, each page opened by the date and page line of the screen's reports and closed by
// the frame of its table. A choice given up prints nothing and changes nothing.
void imprimerSemaine(Ctr_Zandorel& c, const Semaine& semaine);

}  // namespace control
