#include "shell/ctr_zandorel.h"

// The assignment dialog, and the menu entry that sends a waiting label straight to a tournée.
#include <cstdint>
#include <optional>

#include "base/date.h"
#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "editing/frm_affectation_tournee.h"
#include "model/labels.h"
#include "toolkit/host.h"

namespace control {
namespace {

namespace caract = data::caracttournee;

constexpr int kCaseFermeture = 0;
constexpr std::int64_t kLongueurCode = 3;

// Columns of the reply listed by "0 1 2 10".
constexpr int kCode = 1, kLibelle = 2, kNbIntervenants = 4;

std::string entreGuillemets(const std::string& valeur) {
    return "\"" + valeur + "\"";
}

// The row of TabTempoAide that the label `index` stands for; DCount + 1, an empty row, when none does.
std::int64_t ligneDeLEtiquette(const model::LabelTables& tables, int index) {
    const std::int64_t ligne = tables.findByLabel(model::Pane::Aide, index);
    return ligne != 0 ? ligne : tables.aide()->DCount() + 1;
}

// The tournée type a waiting label asks for, read back from its colour: the colour is part of the data.
std::string typeParCouleur(const Ctr_Zandorel& c, toolkit::Colour couleur) {
    const std::string valeur = base::numberText(couleur);
    if (base::compareValues(valeur, c.CouleurInfirmier) == 0) return "I";
    if (base::compareValues(valeur, c.CouleurSoignant) == 0) return "S";
    if (base::compareValues(valeur, c.CouleurMixte) == 0) return "M";
    return "";
}

}  // namespace

Frm_AffectationTournee::Frm_AffectationTournee(Ctr_Zandorel& ctl)
    : toolkit::Form("Frm_AffectationTournee", ctl.host()),
      Lst_Tournee("Lst_Tournee", this),
      Cmd_Ok("Cmd_Ok", this),
      Cmd_Annuler("Cmd_Annuler", this),
      m_ctl(ctl) {
    placerControles();
    brancherEvenements();
}

void Frm_AffectationTournee::placerControles() {
    setCaption("Affectation à une tournée");
    setGeometry(0, 0, 4815, 3270);
    Lst_Tournee.setGeometry(120, 120, 4575, 2535);
    Cmd_Ok.setGeometry(2520, 2775, 975, 375);
    Cmd_Ok.setCaption("OK");
    Cmd_Annuler.setGeometry(3720, 2775, 975, 375);
    Cmd_Annuler.setCaption("Annuler");
    Lst_Tournee.setTabIndex(0);
    Cmd_Ok.setTabIndex(1);
    Cmd_Annuler.setTabIndex(2);
}

void Frm_AffectationTournee::brancherEvenements() {
    Cmd_Ok.Click = [this] { Cmd_Ok_Click(); };
    Cmd_Annuler.Click = [this] { Cmd_Annuler_Click(); };
    Lst_Tournee.DblClick = [this] { Lst_Tournee_DblClick(); };
    QueryUnload = [this](int& cancel, int mode) { Form_QueryUnload(cancel, mode); };
}

void Frm_AffectationTournee::avertir(const std::string& message) {
    host().MsgBox(message, kStyleAvertissement, kTitreMessage);
}

bool Frm_AffectationTournee::aUnEnregistrementCeJour(const std::string& codeTournee,
                                                     const std::string& jourInterne) {
    // The blank missing before AND is the system's own, as in Init.
    const mvdb::DynamicRecord reponse =
        data::Interroger(*m_ctl.Mod.fichiers.TheDatabase,
                         "SELECT SSIADTOURNEE AVEC DateTournee = " + entreGuillemets(jourInterne) +
                             "AND AVEC CodeTournee =" + entreGuillemets(codeTournee),
                         data::kSSIADTOURNEE, "0 1 2");
    return !reponse.text().empty();
}

void Frm_AffectationTournee::Init() {
    data::FichiersSSIAD& f = m_ctl.Mod.fichiers;
    if (!f.TheDatabase || !f.SSIADELEMGEST)
        throw base::Error(base::codes::kNotBound, "Les fichiers n'ont pas été ouverts pour l'affectation");

    // 1. Deliberate: the key is the two fields joined as they stand, sixteen characters, the aidé's code
    // twice and the element code cut. Where the records carry the eleven-character key the sector stays
    // empty, and only tournées without a sector are offered.
    std::string secteur;
    if (data::LireEnregistrement(*f.SSIADELEMGEST, f.EnregSSIADELEMGEST, W_CodeAide + W_Act))
        secteur = f.EnregSSIADELEMGEST(data::elemgest::kSecteur);

    // 2. A mixed act is offered to infirmier tournées.
    if (W_TypeActe == "M") W_TypeActe = "I";

    // 3. Monday 0.
    const std::optional<base::Date> date = base::Date::parse(W_DateTournee);
    if (!date)
        throw base::Error(base::codes::kBadData, "Date de tournée illisible : « " + W_DateTournee + " »");
    const int jour = date->weekday() - 1;

    // 4. Whole hours of attributes 5 and 3 against the window's hundredths turned to hours, written with
    // the decimal comma. The missing blanks before AND are the system's own sentence, kept as it is.
    const std::string testType = W_TypeActe == "I" ? " AND AVEC 7 =" + entreGuillemets("I") : "";
    const mvdb::DynamicRecord tournees =
        data::Interroger(*f.TheDatabase,
                         "SELECT SSIADCARACTTOURNEE AVEC 8 = " + entreGuillemets(secteur) + testType +
                             "AND AVEC 5 > " + entreGuillemets(base::numberText(W_HeureDeb / 100.0)) +
                             " AND AVEC 3 < " + entreGuillemets(base::numberText(W_HeureFin / 100.0)) +
                             "AND AVEC 2 =" + entreGuillemets(base::numberText(jour)),
                         data::kSSIADCARACTTOURNEE, "0 1 2 10");

    // 5.
    Lst_Tournee.clear();
    if (tournees.text().empty()) {
        m_ctl.NbTourneesAffectation = 0;
        return avertir("Pas de tournée définie sur ce jour");
    }

    // 6 to 8. Only a tournée that already has a record on that date is offered; one of two intervenants
    // only to an intervention of two.
    const std::string jourInterne = m_ctl.ObjetConversion.DateInterne(W_DateTournee);
    for (std::int64_t i = 1; i <= tournees.DCount(); ++i) {
        if (!aUnEnregistrementCeJour(tournees(i, kCode), jourInterne)) continue;
        if (base::compareValues(tournees(i, kNbIntervenants), "2") == 0 && W_NombreInterv != 2) continue;
        Lst_Tournee.addItem(tournees(i, kCode) + "   " + tournees(i, kLibelle));
    }

    // 9.
    const int lignes = Lst_Tournee.listCount();
    m_ctl.NbTourneesAffectation = lignes;
    if (lignes == 1) {
        m_ctl.Mod.FlagAffectationEnCours = true;
        m_ctl.Mod.CodeTourneeAffectation = base::Left(Lst_Tournee.list(0), kLongueurCode);
    }
    if (lignes == 0) avertir("Pas de tournée définie sur ce jour");
}

void Frm_AffectationTournee::Cmd_Ok_Click() {
    if (Lst_Tournee.listIndex() < 0) return avertir("Sélection d'une tournée obligatoire");
    m_ctl.Mod.FlagAffectationEnCours = true;
    m_ctl.Mod.CodeTourneeAffectation = base::Left(Lst_Tournee.list(Lst_Tournee.listIndex()), kLongueurCode);
    unload();
}

void Frm_AffectationTournee::Cmd_Annuler_Click() {
    unload();
}

void Frm_AffectationTournee::Lst_Tournee_DblClick() {
    Cmd_Ok_Click();
}

void Frm_AffectationTournee::Form_QueryUnload(int& Cancel, int UnloadMode) {
    if (UnloadMode == kCaseFermeture) Cancel = 1;
}

// ---- The control's side.

void Ctr_Zandorel::Mnu_AffectationTournee_Click() {
    // 1. The menu opens only on a label; one that is gone meanwhile has nothing to assign.
    if (IndiceEtqCourante < 1 || !Etq_Aide.exists(IndiceEtqCourante) || !TabTempoAide.exists()) return;
    const toolkit::Label& etiquette = Etq_Aide(IndiceEtqCourante);
    Frm_AffectationTournee form(*this);
    const std::int64_t ligne = ligneDeLEtiquette(Tables, IndiceEtqCourante);

    // 2.
    form.W_HeureDeb = base::toInteger(TabTempoAide(ligne, model::col::HeureDebut));
    form.W_HeureFin = base::toInteger(TabTempoAide(ligne, model::col::HeureFin));

    // 3. A label that still needs both its intervenants.
    if (Tables.typeEtq(model::Pane::Aide, ligne).figure() == '2') form.W_NombreInterv = 2;

    // 4.
    const std::string tag = etiquette.tag();
    form.W_CodeAide = base::Left(tag, 5);
    form.W_Act = base::Mid(tag, 1, 5) + base::Mid(tag, 9, 6);
    form.W_DateTournee = Txt_Date.text();

    // 5.
    form.W_TypeActe = typeParCouleur(*this, etiquette.backColor());

    // 6, 7. With one tournée Init has chosen it already.
    form.Init();
    if (NbTourneesAffectation > 1) host().ShowModal(form);

    // 8. The caption of Etq_Horaire is what a drop reads back as the time it was made at: emptied, so
    // that nothing of an earlier drag stands for the first placing of this one. The target opens through
    // the code's change handler, in its assignment branch, which displays the day; the count of
    // intervenants is read only after, so that display still reads the former one: the system's order,
    // kept.
    if (!Mod.FlagAffectationEnCours) return;
    const Historique::Oubli oubli(historique);
    IndiceEtqAffectee = IndiceEtqCourante;
    Cmd_Sortir.setCaption("Annuler");
    Etq_Horaire.setCaption("");
    Txt_CodeTournee.setText(Mod.CodeTourneeAffectation);
    data::FichiersSSIAD& f = Mod.fichiers;
    data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE, Mod.CodeTourneeAffectation);
    const std::string nombre = f.EnregSSIADCARACTTOURNEE(caract::kNbIntervenants);
    NbIntervenantsTournee = nombre.empty() ? 1 : base::toInteger(nombre);
}

}  // namespace control
