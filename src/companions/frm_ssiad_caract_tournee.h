#pragma once

#include <string>
#include <vector>

#include "companions/ecran_service.h"

namespace control {

// Every tournée of the service, deleted ones included (this is where a deletion mark is taken back): its
// weekday, hours, type, sectors and intervenants. A tournée's code is fixed once saved, since the planned
// records carry it; a new one is proposed the next free code.
class Frm_SsiadCaractTournee : public EcranService {
public:
    explicit Frm_SsiadCaractTournee(Ctr_Zandorel& ctl);
    void setCodeTournee(const std::string& code);
    // Lists the tournées and shows the one of the code handed over, or a new tournée.
    void Demarrer();

    toolkit::TextBox Txt_Code, Txt_Libelle;
    toolkit::ComboBox Cbo_Jour;
    toolkit::TextBox Txt_Debut, Txt_Fin;
    toolkit::ComboBox Cbo_Type, Cbo_NbIntervenants;
    // The sectors: one chosen among those the tournées cover, or typed for a new sector, then added.
    toolkit::ComboBox Cbo_Secteur;
    toolkit::CommandButton Cmd_AjouterSecteur;
    toolkit::ListBox Lst_Secteurs;
    toolkit::CommandButton Cmd_RetirerSecteur;
    toolkit::CheckBox Chk_Supprimee;

    // Adds the sector of Cbo_Secteur; false, with a box, for an empty one or one with a blank.
    bool Cmd_AjouterSecteur_Click();
    void Cmd_RetirerSecteur_Click();

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    std::vector<std::string> utilisateurs(const std::string& cle) override;
    void effacer(const std::string& cle) override;

private:
    std::string m_codeRecu;
};

}  // namespace control
