#pragma once

#include "companions/ecran_service.h"

namespace control {

// The accords of taking in charge (SSIADACCORDS): for one aidé and one of the aidé's management elements,
// the first and last day the service cares for the aidé, and whether the accord is suspended. An accord's
// aidé and element are its key: once saved they are not changed, a new accord is made instead.
class Frm_Accords : public EcranService {
public:
    explicit Frm_Accords(Ctr_Zandorel& ctl);

    toolkit::ComboBox Cbo_Aide, Cbo_Element;
    toolkit::TextBox Txt_PremierJour, Txt_DernierJour;
    toolkit::CheckBox Chk_Suspendu;

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    void effacer(const std::string& cle) override;

private:
    // The aidés of the list, by code, and the elements of the aidé chosen.
    void listerAides();
    void listerElements();
    std::string codeAideChoisi() const;
    std::string elementChoisi() const;
    std::vector<std::pair<std::string, std::string>> m_aides;  // code, "NOM Prénom"
    std::vector<std::string> m_elements;                       // element codes, six characters
    std::string m_premierJour, m_dernierJour;                  // internal days, once checked
};

}  // namespace control
