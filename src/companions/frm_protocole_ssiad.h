#pragma once

#include <string>
#include <vector>

#include "companions/ecran_service.h"

namespace control {

// The care protocoles: for an aidé and one of its management elements, the weekdays, the window in which
// the care is given, the soins, the duration and the intervenants, and the days of validity. The key is
// made from the aidé, the first day, the element and the start of the window: changing one of those
// moves the protocole to a new key, in the same transaction, with the planned interventions that name it.
class Frm_ProtocoleSsiad : public EcranService {
public:
    explicit Frm_ProtocoleSsiad(Ctr_Zandorel& ctl);
    void setCodeAide(const std::string& code);
    // The shown day as "dd/mm/yyyy".
    void setDateProtocole(const std::string& date);
    const std::string& dateProtocole() const { return m_date; }
    // Lists the protocoles, the aidé handed over first, and shows that aidé's first protocole in force on
    // the date handed over; a new protocole of that aidé from that date when there is none.
    void Demarrer();

    toolkit::ComboBox Cbo_Aide, Cbo_Element;
    toolkit::CheckBox Chk_Lundi, Chk_Mardi, Chk_Mercredi, Chk_Jeudi, Chk_Vendredi, Chk_Samedi, Chk_Dimanche;
    toolkit::TextBox Txt_Debut, Txt_Fin, Txt_DureeMn;
    // The soins: one chosen in the catalogue, then added to the list of the protocole's.
    toolkit::ComboBox Cbo_Soin;
    toolkit::CommandButton Cmd_AjouterSoin;
    toolkit::ListBox Lst_Soins;
    toolkit::CommandButton Cmd_RetirerSoin;
    toolkit::ComboBox Cbo_NbIntervenants;
    toolkit::TextBox Txt_PremierJour, Txt_DernierJour;

    // Adds the soin of Cbo_Soin; false, with a box, for one that is not in the catalogue.
    bool Cmd_AjouterSoin_Click();
    void Cmd_RetirerSoin_Click();

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    std::vector<std::string> utilisateurs(const std::string& cle) override;
    void effacer(const std::string& cle) override;

private:
    std::vector<toolkit::CheckBox*> jours();
    // Fills the elements of the aidé of Cbo_Aide and chooses `element`, or the first.
    void listerElements(const std::string& element);
    // The bounds as stored: one left as it was shown keeps its own hundredths (1110 shows "11h06", which
    // typed would be 1110 again only by chance), one typed is read from HHhMM.
    std::string debutSaisi() const;
    std::string finSaisie() const;
    // The key the protocole typed gets; `cle` when its parts are those of the key shown.
    std::string nouvelleCle(const std::string& cle);
    // Deletes the protocole of key `cle`, saved again under `nouvelle`; its planned interventions follow.
    void deplacer(const std::string& cle, const std::string& nouvelle);
    std::string m_code, m_date;
    std::string m_debutAffiche, m_finAffichee;     // as the boxes showed them
    std::string m_debutCentiemes, m_finCentiemes;  // as stored
};

}  // namespace control
