#pragma once

#include <string>
#include <utility>
#include <vector>

#include "companions/ecran_service.h"

namespace control {

// The aidés: civil state, the address and phone lines that the reports print, and absences. A new aidé
// gets the next free five-digit code.
class Frm_DossierAide : public EcranService {
public:
    explicit Frm_DossierAide(Ctr_Zandorel& ctl);
    // Lists the aidés and shows the one of `codeAide`, or a new aidé.
    void Demarrer(const std::string& codeAide);

    toolkit::Label Etq_Code;
    toolkit::TextBox Txt_Nom, Txt_Prenom, Txt_Adresse, Txt_Complement, Txt_CodePostal, Txt_Ville,
        Txt_Telephone;
    toolkit::ListBox Lst_Absences;
    toolkit::TextBox Txt_AbsenceDebut, Txt_AbsenceFin;
    toolkit::CommandButton Cmd_AjouterAbsence, Cmd_RetirerAbsence;

    // Adds the period typed; false, with a box, when it is no period.
    bool Cmd_AjouterAbsence_Click();
    void Cmd_RetirerAbsence_Click();

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    std::vector<std::string> utilisateurs(const std::string& cle) override;
    void effacer(const std::string& cle) override;

private:
    // The period typed in the two boxes, as internal days; the refusal when it is none.
    std::string absenceSaisie(std::pair<std::string, std::string>& periode);
    void listerAbsences();
    std::vector<std::pair<std::string, std::string>> m_absences;  // first and last internal days
};

}  // namespace control
