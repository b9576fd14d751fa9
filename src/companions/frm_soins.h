#pragma once

#include "companions/ecran_service.h"

namespace control {

// The catalogue of soins (SSIADSOINS): a label and whether it is an infirmier's act, which decides the
// kind of the interventions that use it. A soin that a protocole still names is not deleted.
class Frm_Soins : public EcranService {
public:
    explicit Frm_Soins(Ctr_Zandorel& ctl);

    toolkit::Label Etq_Code;
    toolkit::TextBox Txt_Libelle;
    toolkit::CheckBox Chk_ActeInfirmier;

protected:
    std::vector<Element> elements() override;
    void afficher(const std::string& cle) override;
    std::string verifier() override;
    std::string ecrire(const std::string& cle) override;
    std::string designation(const std::string& cle) override;
    std::vector<std::string> utilisateurs(const std::string& cle) override;
    void effacer(const std::string& cle) override;
};

}  // namespace control
