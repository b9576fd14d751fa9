#include "shell/ctr_zandorel.h"

// The management elements screen: one sector per element, the one the tournées' sectors are matched with.

#include "base/text.h"
#include "companions/companions.h"
#include "data/gateway.h"
#include "data/layouts.h"

namespace control {

Frm_ElemGestSSIAD::Frm_ElemGestSSIAD(Ctr_Zandorel& ctl)
    : FormeCompagnon("Frm_ElemGestSSIAD", ctl, "Eléments de Gestion SSIAD", 6600, 4200),
      Etq_Aide("Etq_Aide", this),
      Lst_Elements("Lst_Elements", this),
      Txt_Secteur("Txt_Secteur", this),
      Cmd_Enregistrer("Cmd_Enregistrer", this),
      Cmd_Annuler("Cmd_Annuler", this),
      Cmd_Fermer("Cmd_Fermer", this) {
    Etq_Aide.setGeometry(120, 120, 6360, 255);
    Lst_Elements.setGeometry(120, 480, 3600, 3000);
    legende("Secteur", 3840, 480, 1200);
    Txt_Secteur.setGeometry(3840, 780, 2640, 315);
    bouton(Cmd_Enregistrer, "Enregistrer", 3840, 1200);
    bouton(Cmd_Annuler, "Annuler", 5160, 1200);
    bouton(Cmd_Fermer, "Fermer", 5160, 3660);
    Lst_Elements.Click = [this] {
        const int i = Lst_Elements.listIndex();
        if (i >= 0) Txt_Secteur.setText(m_elements[static_cast<std::size_t>(i)].second);
    };
    Cmd_Enregistrer.Click = [this] { Cmd_Enregistrer_Click(); };
    Cmd_Annuler.Click = [this] { Lst_Elements.fireClick(); };
    Cmd_Fermer.Click = [this] { unload(); };
    Unload = [this](int& cancel) { Form_Unload(cancel); };
}

void Frm_ElemGestSSIAD::setCodeAide(const std::string& code) {
    m_code = code;
    recu("CodeAide");
}

void Frm_ElemGestSSIAD::setNomAide(const std::string& nom) {
    m_nom = nom;
    recu("NomAide");
}

void Frm_ElemGestSSIAD::Demarrer() {
    recu("Demarrer");
    Etq_Aide.setCaption(m_code + "  " + m_nom);
    lister();
    if (!m_elements.empty()) Lst_Elements.setListIndex(0);
}

void Frm_ElemGestSSIAD::lister() {
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADELEMGEST AVEC CodeAide = \"" + m_code + "\" PAR 0",
                         data::kSSIADELEMGEST, "0 " + std::to_string(data::elemgest::kSecteur));
    m_elements.clear();
    Lst_Elements.clear();
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        if (reponse(i, 1).empty()) continue;
        m_elements.emplace_back(reponse(i, 1), reponse(i, 2));
        Lst_Elements.addItem(base::Mid(reponse(i, 1), 6) + "   " + reponse(i, 2));
    }
}

bool Frm_ElemGestSSIAD::PeutFermer() const {
    const int i = Lst_Elements.listIndex();
    return i < 0 || Txt_Secteur.text() == m_elements[static_cast<std::size_t>(i)].second;
}

bool Frm_ElemGestSSIAD::Cmd_Enregistrer_Click() {
    const int i = Lst_Elements.listIndex();
    if (i < 0) return refuser("Choisissez d'abord un élément de gestion dans la liste.");
    if (Txt_Secteur.text().empty() || Txt_Secteur.text().find(' ') != std::string::npos)
        return refuser("Le secteur est un code sans blanc, obligatoire.");
    auto& [cle, secteur] = m_elements[static_cast<std::size_t>(i)];
    mvdb::DynamicRecord enreg = fichier(data::kSSIADELEMGEST)->Read(cle);
    enreg.set(data::elemgest::kSecteur, Txt_Secteur.text());
    enreg.DBWrite();
    secteur = Txt_Secteur.text();
    Lst_Elements.clear();
    for (const auto& [k, s] : m_elements)
        Lst_Elements.addItem(base::Mid(k, 6) + "   " + s);
    Lst_Elements.setListIndex(i);
    return true;
}

void Frm_ElemGestSSIAD::Form_Unload(int& Cancel) {
    if (PeutFermer()) return;
    refuser("Le secteur a été modifié : enregistrez-le ou annulez la modification avant de fermer.");
    Cancel = 1;
}

}  // namespace control
