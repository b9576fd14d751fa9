#include "companions/ecran_service.h"

#include <algorithm>

#include "base/error.h"
#include "base/text.h"
#include "companions/saisie.h"
#include "mvdb/database.h"
#include "toolkit/host.h"
#include "toolkit/input.h"

namespace control {

EcranService::EcranService(const std::string& nom, Ctr_Zandorel& ctl, const std::string& titre,
                           double largeur, double hauteur, double largeurListe)
    : FormeCompagnon(nom, ctl, titre, largeur, hauteur),
      Txt_Recherche("Txt_Recherche", this),
      Lst_Elements("Lst_Elements", this),
      Cmd_Nouveau("Cmd_Nouveau", this),
      Cmd_Enregistrer("Cmd_Enregistrer", this),
      Cmd_Supprimer("Cmd_Supprimer", this),
      Cmd_Fermer("Cmd_Fermer", this),
      m_gaucheChamps(120 + largeurListe + 120) {
    legende("Rechercher", 120, 120, largeurListe);
    Txt_Recherche.setGeometry(120, 400, largeurListe, 315);
    Lst_Elements.setGeometry(120, 840, largeurListe, hauteur - 840 - 720);
    const double bas = hauteur - 555;
    bouton(Cmd_Nouveau, "Nouveau", largeur - 4 * 1455, bas);
    bouton(Cmd_Enregistrer, "Enregistrer", largeur - 3 * 1455, bas);
    bouton(Cmd_Supprimer, "Supprimer", largeur - 2 * 1455, bas);
    bouton(Cmd_Fermer, "Fermer", largeur - 1455, bas);
    Txt_Recherche.Change = [this] { filtrer(); };
    Lst_Elements.Click = [this] {
        const int ligne = Lst_Elements.listIndex();
        if (m_remplissage || ligne < 0) return;
        montrer(m_elements[m_visibles[static_cast<std::size_t>(ligne)]].cle);
    };
    Cmd_Nouveau.Click = [this] { Cmd_Nouveau_Click(); };
    Cmd_Enregistrer.Click = [this] { Cmd_Enregistrer_Click(); };
    Cmd_Supprimer.Click = [this] { Cmd_Supprimer_Click(); };
    Cmd_Fermer.Click = [this] { unload(); };
}

EcranService::~EcranService() = default;

std::vector<std::string> EcranService::utilisateurs(const std::string&) {
    return {};
}

void EcranService::ordonnerTabulation() {
    // The search and the list, then the screen's own fields in the order it made them, the buttons last.
    std::vector<toolkit::Control*> ordre = {&Txt_Recherche, &Lst_Elements};
    const std::vector<toolkit::Control*> boutons = {&Cmd_Nouveau, &Cmd_Enregistrer, &Cmd_Supprimer,
                                                    &Cmd_Fermer};
    for (toolkit::Control* c : controls()) {
        const bool duCadre = c == &Txt_Recherche || c == &Lst_Elements ||
                             std::find(boutons.begin(), boutons.end(), c) != boutons.end();
        if (!duCadre && c->tabStop() && c->kind() != toolkit::Kind::Label &&
            c->kind() != toolkit::Kind::Frame)
            ordre.push_back(c);
    }
    ordre.insert(ordre.end(), boutons.begin(), boutons.end());
    for (std::size_t i = 0; i < ordre.size(); ++i)
        ordre[i]->setTabIndex(static_cast<int>(i));
}

void EcranService::fermerParEchappement() {
    if (m_echappement) return;
    m_echappement = true;
    // Each control is asked, since the key goes to the one with the focus; a handler of the screen's own
    // still gets every other key.
    for (toolkit::Control* c : controls()) {
        c->KeyDown = [this, avant = c->KeyDown](int& keyCode, int shift) {
            if (keyCode == static_cast<int>(toolkit::Key::Escape)) {
                keyCode = 0;
                unload();
                return;
            }
            if (avant) avant(keyCode, shift);
        };
    }
}

void EcranService::ouvrir(const std::string& cle) {
    recu("Demarrer");
    ordonnerTabulation();
    fermerParEchappement();
    lister();
    bool existe = false;
    for (const Element& e : m_elements)
        existe = existe || e.cle == cle;
    montrer(existe ? cle : "");
}

void EcranService::lister() {
    m_elements = elements();
    filtrer();
}

void EcranService::filtrer() {
    const std::string cherche = base::searchKey(Txt_Recherche.text());
    m_visibles.clear();
    int ligneCourante = -1;
    m_remplissage = true;
    Lst_Elements.clear();
    for (std::size_t i = 0; i < m_elements.size(); ++i) {
        if (base::searchKey(m_elements[i].texte).find(cherche) == std::string::npos) continue;
        if (!m_cle.empty() && m_elements[i].cle == m_cle) ligneCourante = static_cast<int>(m_visibles.size());
        m_visibles.push_back(i);
        Lst_Elements.addItem(m_elements[i].texte);
    }
    // The record shown stays shown, with what was typed in it, whether its row is found or not.
    Lst_Elements.setListIndex(ligneCourante);
    m_remplissage = false;
}

void EcranService::montrer(const std::string& cle) {
    m_cle = cle;
    afficher(cle);
    m_remplissage = true;
    int ligne = -1;
    for (std::size_t i = 0; i < m_visibles.size() && !cle.empty(); ++i)
        if (m_elements[m_visibles[i]].cle == cle) ligne = static_cast<int>(i);
    Lst_Elements.setListIndex(ligne);
    m_remplissage = false;
}

void EcranService::Cmd_Nouveau_Click() {
    montrer("");
}

bool EcranService::Cmd_Enregistrer_Click() {
    if (const std::string refus = verifier(); !refus.empty()) return refuser(refus);
    std::string cle;
    try {
        mvdb::Transaction transaction(database());
        cle = ecrire(m_cle);
        transaction.commit();
    } catch (const base::Error& e) {
        return refuser(e.what());
    }
    lister();
    montrer(cle);
    return true;
}

bool EcranService::Cmd_Supprimer_Click() {
    if (m_cle.empty()) return refuser("Choisissez d'abord dans la liste ce qu'il faut supprimer.");
    const std::string nom = designation(m_cle);
    if (const std::vector<std::string> qui = utilisateurs(m_cle); !qui.empty())
        return refuser(refusUtilise(nom, qui));
    const int reponse = host().MsgBox(questionSuppression(nom),
                                      toolkit::msgbox::kYesNo | toolkit::msgbox::kQuestion, caption());
    if (reponse != toolkit::msgbox::kYes) return false;
    try {
        mvdb::Transaction transaction(database());
        effacer(m_cle);
        transaction.commit();
    } catch (const base::Error& e) {
        return refuser(e.what());
    }
    m_cle.clear();
    lister();
    montrer("");
    return true;
}

}  // namespace control
