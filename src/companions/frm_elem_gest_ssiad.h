#pragma once

#include <string>
#include <vector>

#include "companions/ecran_service.h"

namespace control {

// The management elements of the aidés, each with the sector that the tournées' sectors are matched with.
// An element's key is its aidé's code and an element code of six characters, the next free one of that
// aidé. A sector changed and not saved keeps the screen open.
class Frm_ElemGestSSIAD : public EcranService {
public:
    explicit Frm_ElemGestSSIAD(Ctr_Zandorel& ctl);
    void setCodeAide(const std::string& code);
    void setNomAide(const std::string& nom);
    // Lists the elements, the aidé handed over first, and shows that aidé's first element.
    void Demarrer();
    // Whether the form may close: false while what is shown differs from what was saved.
    bool PeutFermer() const;
    const std::string& nomAide() const { return m_nom; }

    toolkit::Label Etq_Aide;
    toolkit::ComboBox Cbo_Aide;
    toolkit::Label Etq_Element;
    toolkit::ComboBox Cbo_Secteur;
    toolkit::CommandButton Cmd_Annuler;

    void Form_Unload(int& Cancel);

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    std::vector<std::string> utilisateurs(const std::string& cle) override;
    void effacer(const std::string& cle) override;

private:
    std::string m_code, m_nom;
    std::string m_aideAffiche, m_secteurAffiche;  // as shown, to tell a change not saved
};

}  // namespace control
