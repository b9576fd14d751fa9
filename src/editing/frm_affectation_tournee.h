#pragma once

#include <string>

#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace control {

class Ctr_Zandorel;

// The assignment dialog: the tournées that can take one waiting intervention on its day. Its answer goes
// to the module state: FlagAffectationEnCours and CodeTourneeAffectation when a tournée was chosen, and
// NbTourneesAffectation, the number listed.
//
// The caller loads it, sets the W_ fields, calls Init once, and shows it modally only when Init listed
// more than one tournée: with one, Init has already chosen it.
class Frm_AffectationTournee : public toolkit::Form {
public:
    explicit Frm_AffectationTournee(Ctr_Zandorel& ctl);

    // The protocole's window, hundredths of an hour.
    int W_HeureDeb = 0;
    int W_HeureFin = 0;
    std::string W_CodeAide;
    // "I", "S" or "M": the type of tournée wanted.
    std::string W_TypeActe;
    // "dd/mm/yyyy".
    std::string W_DateTournee;
    // 2 when the intervention needs two intervenants, otherwise left at 0.
    int W_NombreInterv = 0;
    // Characters 1 to 5 of the label's Tag, then 9 to 14: the aidé and the element code.
    std::string W_Act;

    toolkit::ListBox Lst_Tournee;
    toolkit::CommandButton Cmd_Ok;
    toolkit::CommandButton Cmd_Annuler;

    // Lists the tournées of the aidé's sector, of the type wanted, whose hours meet the window, that run
    // on that weekday and already have a record on that date, those of two intervenants only for an
    // intervention of two. With none, warns. With exactly one, takes it at once. A date that is no date
    // is a base::Error.
    void Init();
    // Takes the selected tournée and unloads; without a selection, warns and stays open.
    void Cmd_Ok_Click();
    // Unloads and changes nothing.
    void Cmd_Annuler_Click();
    void Lst_Tournee_DblClick();
    // Refuses the close box, so the dialog ends only through its buttons.
    void Form_QueryUnload(int& Cancel, int UnloadMode);

private:
    void placerControles();
    void brancherEvenements();
    // Whether the tournée of a reply row has a record on W_DateTournee.
    bool aUnEnregistrementCeJour(const std::string& codeTournee, const std::string& jourInterne);
    void avertir(const std::string& message);

    Ctr_Zandorel& m_ctl;
};

}  // namespace control
