#include "companions/frm_elem_gest_ssiad.h"

// The management elements screen.

#include <algorithm>

#include "base/text.h"
#include "companions/regles_service.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

constexpr int kLongueurElement = 6;
constexpr std::size_t kLongueurCle = 5 + kLongueurElement;
// A row names the aidé, the element and the sector.
constexpr double kPlusLarge = 1200;

// "00012  DUPONT Marie" of an item of the aidés' list "00012 DUPONT Marie".
std::string nomAffiche(const std::string& aide) {
    return base::Left(aide, 5) + "  " + base::Mid(aide, 7);
}

}  // namespace

Frm_ElemGestSSIAD::Frm_ElemGestSSIAD(Ctr_Zandorel& ctl)
    : EcranService("Frm_ElemGestSSIAD", ctl, "Eléments de Gestion SSIAD", 8400 + kPlusLarge, 4800,
                   kLargeurListe + kPlusLarge),
      Etq_Aide("Etq_Aide", this),
      Cbo_Aide("Cbo_Aide", this),
      Etq_Element("Etq_Element", this),
      Cbo_Secteur("Cbo_Secteur", this),
      Cmd_Annuler("Cmd_Annuler", this) {
    const double gauche = gaucheChamps(), champs = gaucheChamps() + 1800;
    Etq_Aide.setGeometry(gauche, 120, 4560, 255);
    legende("Aidé", gauche, 570, 1680);
    Cbo_Aide.setGeometry(champs, 540, 2760, 315);
    legende("Élément", gauche, 990, 1680);
    Etq_Element.setGeometry(champs, 990, 2760, 255);
    legende("Secteur", gauche, 1410, 1680);
    Cbo_Secteur.setGeometry(champs, 1380, 1800, 315);
    bouton(Cmd_Annuler, "Annuler", champs + 1425, 1860);
    Cbo_Aide.Click = [this] { Etq_Aide.setCaption(nomAffiche(Cbo_Aide.text())); };
    // Cancelling shows the record again as it was saved.
    Cmd_Annuler.Click = [this] { ouvrir(cleCourante()); };
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
    std::string premier;
    for (const Element& e : elements())
        if (premier.empty() && !m_code.empty() && base::Left(e.cle, 5) == m_code) premier = e.cle;
    Txt_Recherche.setText(m_code);
    ouvrir(premier);
}

std::vector<EcranService::Element> Frm_ElemGestSSIAD::elements() {
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADELEMGEST PAR 0", data::kSSIADELEMGEST,
                         "0 " + std::to_string(data::elemgest::kSecteur));
    std::vector<std::string> aides = listeAides(database());
    std::vector<Element> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        const std::string cle = reponse(i, 1);
        // Longer keys of the file are no elements of an aidé: the assignment dialog looks up a label's
        // sector under them, and they follow the protocoles, not the planner.
        if (cle.size() != kLongueurCle) continue;
        const auto aide = std::find_if(aides.begin(), aides.end(), [&](const std::string& a) {
            return base::Left(a, 5) == base::Left(cle, 5);
        });
        out.push_back({cle, (aide == aides.end() ? base::Left(cle, 5) : *aide) + "   " + base::Mid(cle, 6) +
                                "   " + reponse(i, 2)});
    }
    return out;
}

void Frm_ElemGestSSIAD::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (!cle.empty()) data::LireEnregistrement(*fichier(data::kSSIADELEMGEST), enreg, cle);
    const std::string code = cle.empty() ? m_code : base::Left(cle, 5);
    Cbo_Aide.clear();
    for (const std::string& a : listeAides(database()))
        Cbo_Aide.addItem(a);
    std::string aide = code;
    for (const std::string& a : Cbo_Aide.items())
        if (!code.empty() && base::Left(a, 5) == code) aide = a;
    Cbo_Aide.setText(aide);
    // An element's aidé is part of its key: another aidé is another element.
    Cbo_Aide.setEnabled(cle.empty());
    Etq_Aide.setCaption(aide != code ? nomAffiche(aide) : code + (code == m_code ? "  " + m_nom : ""));
    Etq_Element.setCaption(cle.empty() ? "(nouveau)" : base::Mid(cle, 6));
    Cbo_Secteur.clear();
    for (const std::string& s : secteursDesTournees(database()))
        Cbo_Secteur.addItem(s);
    Cbo_Secteur.setText(enreg(data::elemgest::kSecteur));
    m_aideAffiche = Cbo_Aide.text();
    m_secteurAffiche = Cbo_Secteur.text();
}

bool Frm_ElemGestSSIAD::PeutFermer() const {
    return Cbo_Aide.text() == m_aideAffiche && Cbo_Secteur.text() == m_secteurAffiche;
}

std::string Frm_ElemGestSSIAD::verifier() {
    if (cleCourante().empty()) {
        if (Cbo_Aide.text().empty()) return messageChamp("Aidé", "à choisir dans la liste.");
        if (Cbo_Aide.find(Cbo_Aide.text()) < 0)
            return messageChamp("Aidé", Cbo_Aide.text() + " n'est pas dans la liste.");
    }
    const std::string secteur = Cbo_Secteur.text();
    if (secteur.empty()) return messageChamp("Secteur", "à choisir dans la liste.");
    // A sector no tournée covers any more may stay where it is, but none can be typed anew.
    if (secteur != m_secteurAffiche && Cbo_Secteur.find(secteur) < 0)
        return messageChamp("Secteur", secteur + " n'est le secteur d'aucune tournée.");
    return "";
}

std::string Frm_ElemGestSSIAD::ecrire(const std::string& cle) {
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADELEMGEST);
    std::string nouvelle = cle;
    if (nouvelle.empty()) {
        const std::string aide = base::Left(Cbo_Aide.text(), 5);
        std::vector<std::string> codes;
        // The longer keys of the aidé are the assignment dialog's look-ups, whose tails are no element codes.
        for (const std::string& k :
             clesSelectionnees(database(), data::kSSIADELEMGEST, "CodeAide = \"" + aide + "\""))
            if (k.size() == kLongueurCle) codes.push_back(base::Mid(k, 6));
        nouvelle = aide + prochainCode(codes, kLongueurElement);
    }
    // A record read keeps the attributes that belong to other programs.
    mvdb::DynamicRecord enreg = cle.empty() ? f->New(nouvelle) : f->Read(cle);
    enreg.set(data::elemgest::kSecteur, Cbo_Secteur.text());
    enreg.DBWrite();
    accorderSecteursAffectation(database(), base::Left(nouvelle, 5));
    return nouvelle;
}

std::string Frm_ElemGestSSIAD::designation(const std::string& cle) {
    return "l'élément de gestion " + base::Mid(cle, 6) + " de l'aidé " + base::Left(cle, 5);
}

std::vector<std::string> Frm_ElemGestSSIAD::utilisateurs(const std::string& cle) {
    return usagesElement(database(), cle);
}

void Frm_ElemGestSSIAD::effacer(const std::string& cle) {
    fichier(data::kSSIADELEMGEST)->Delete(cle);
    accorderSecteursAffectation(database(), base::Left(cle, 5));
}

void Frm_ElemGestSSIAD::Form_Unload(int& Cancel) {
    if (PeutFermer()) return;
    refuser("Le secteur a été modifié : enregistrez-le ou annulez la modification avant de fermer.");
    Cancel = 1;
}

}  // namespace control
