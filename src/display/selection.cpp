#include "display/selection.h"

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <optional>

#include "base/clock.h"
#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

namespace caract = data::caracttournee;

constexpr int kRetourArriere = 8, kTabulation = 9, kEntree = 13, kSuppr = 46, kBarre = 47;
constexpr std::int64_t kLongueurCode = 3;

constexpr int kColCleTournee = 1, kColCleProtocole = 2;  // of TabTourneeEnregistree

bool estChiffre(int touche) {
    return touche >= '0' && touche <= '9';
}

// Codes are texts of three characters: a shorter one is left-padded with "0".
std::string completerCode(const std::string& code) {
    const auto longueur = static_cast<std::int64_t>(base::Len(code));
    if (longueur >= kLongueurCode) return code;
    return std::string(static_cast<std::size_t>(kLongueurCode - longueur), '0') + code;
}

// The first day on or after `depuis` that falls on `jour` (1 Monday to 7 Sunday).
base::Date premierJour(base::Date depuis, int jour) {
    const int w = depuis.weekday();
    if (w == jour) return depuis;
    if (jour > w) return depuis.addDays(jour - w);
    return depuis.addDays(7 - w + jour);
}

// Attribute 10 of a tournée, or of a row of RequeteTournees: an empty one means one intervenant.
int nombreIntervenants(const std::string& attribut) {
    if (attribut.empty()) return 1;
    return static_cast<int>(
        std::clamp<std::int64_t>(base::roundHalfEven(base::toNumber(attribut)), 0, INT_MAX));
}

base::Error illisible(const std::string& quoi, const std::string& code, const std::string& texte) {
    return base::Error(base::codes::kBadData,
                       quoi + " illisible dans la tournée " + code + " : « " + texte + " »");
}

// An hour of the tournée: "7" and "30" read together as 7,30, that is H.MM.
double heureTournee(const mvdb::DynamicRecord& tournee, int heure, int minute, const std::string& code) {
    const std::string texte = tournee(heure) + "," + tournee(minute);
    const std::optional<double> valeur = base::parseNumber(texte);
    if (!valeur) throw illisible("Heure", code, texte);
    return *valeur;
}

// The tournée's weekday, 1 Monday to 7 Sunday; the record holds 0 to 6.
int jourTournee(const mvdb::DynamicRecord& tournee, const std::string& code) {
    const std::optional<double> jour = base::parseNumber(tournee(caract::kJourSemaine));
    if (!jour || *jour < 0 || *jour > 6 || *jour != base::Int(*jour))
        throw illisible("Jour de la semaine", code, tournee(caract::kJourSemaine));
    return static_cast<int>(*jour) + 1;
}

void lireHeuresEchelle(Ctr_Zandorel& c, const mvdb::DynamicRecord& tournee, const std::string& code) {
    c.HeureDebutEchelle = heureTournee(tournee, caract::kHeureDebut, caract::kMinuteDebut, code);
    c.HeureFinEchelle = heureTournee(tournee, caract::kHeureFin, caract::kMinuteFin, code);
}

// Reads the tournée into the shared buffer; false when the code is not in the file.
bool lireTournee(Ctr_Zandorel& c, const std::string& code) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (!f.SSIADCARACTTOURNEE)
        throw base::Error(base::codes::kNotBound, "Le fichier SSIADCARACTTOURNEE n'est pas ouvert");
    return data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE, code);
}

void avertir(Ctr_Zandorel& c, const std::string& message) {
    c.host().MsgBox(message, kStyleAvertissement, kTitreMessage);
}

void activerMatinSoir(Ctr_Zandorel& c, bool actif) {
    c.Frm_MatinSoir.setEnabled(actif);
    c.Opt_Matin.setEnabled(actif);
    c.Opt_Soir.setEnabled(actif);
}

// A label stands in pane "DETAIL" exactly when its Left is 760; without one no tournée is on show.
bool presenceEtqDetail(const Ctr_Zandorel& c) {
    for (const toolkit::Control* etiquette : c.Etq_Aide.elements()) {
        if (etiquette->left() == model::kLeftDetail) return true;
    }
    return false;
}

// The planned start that the label of row j of TabTempoDetail holds; empty when it has none loaded.
std::string debutPrevu(const Ctr_Zandorel& c, std::int64_t j) {
    const std::int64_t index = base::roundHalfEven(base::toNumber(c.TabTempoDetail(j, model::col::NumEtq)));
    if (index < 0 || index > c.Etq_Aide.UBound() || !c.Etq_Aide.exists(static_cast<int>(index))) return {};
    return c.Etq_Aide(static_cast<int>(index)).linkItem();
}

// What the three handlers at which the selection changes do when the screen must be cleared.
void viderEcran(Ctr_Zandorel& c) {
    if (c.Etq_Aide.Count() <= 1) return;
    c.DechargerEtiquettes();
    c.Tables.release(model::Pane::Aide);
    c.Tables.release(model::Pane::Detail);
}

// Emptying the code runs case A from inside this call.
void refuserCode(Ctr_Zandorel& c, const std::string& message) {
    avertir(c, message);
    c.Txt_CodeTournee.setText("");
    c.Cbo_Tournee.setText("");
    c.Txt_CodeTournee.setFocus();
}

// Every date of the tournée's weekday from two months back to two months ahead, past ones included:
// they open read-only. The one chosen is today, or the next such day.
void remplirDates(Ctr_Zandorel& c, int jour) {
    const base::Date aujourdhui = c.clock().today();
    const base::Date fin = aujourdhui.addMonths(2);
    for (base::Date d = premierJour(aujourdhui.addMonths(-2), jour); d < fin; d = d.addDays(7))
        c.Cbo_Date.addItem(d.text());
    c.Cbo_Date.setText(premierJour(aujourdhui, jour).text());
}

// Case B: a full code opens the tournée's state, its hours on both scales and its list of dates.
void choisirTournee(Ctr_Zandorel& c) {
    const std::string code = c.Txt_CodeTournee.text();
    // 1.
    if (!lireTournee(c, code)) return refuserCode(c, "Cette tournée n'existe pas.");
    const mvdb::DynamicRecord tournee = c.Mod.fichiers.EnregSSIADCARACTTOURNEE;
    // 2. The list leaves out only the mark "1", while any mark refuses the code here: a tournée marked
    // otherwise stands in the list and cannot be opened. The two tests differ on purpose; both stay.
    if (!tournee(caract::kSupprimee).empty()) return refuserCode(c, "Cette tournée a été supprimée.");
    // Hours that make no sense would draw no scale: the tournée cannot be opened, and the user is told why.
    if (auto defaut = data::checkTourneeHours(code, tournee))
        return refuserCode(c, "Cette tournée ne peut pas être ouverte : " + defaut->text());
    // 3, 4.
    c.Cbo_Tournee.setText(tournee(caract::kLibelle));
    c.NbIntervenantsTournee = nombreIntervenants(tournee(caract::kNbIntervenants));
    // 5. Selecting the morning may run Opt_Matin_Click; the tournée's hours replace its scales below.
    activerMatinSoir(c, false);
    c.Opt_Matin.setValue(true);
    c.Cbo_Date.setVisible(true);
    c.Cbo_Date.clear();
    c.Cbo_Date.setText("");
    c.Txt_Date.setVisible(false);
    c.Tables.release(model::Pane::Detail);
    c.TabAnomalies.release();
    // 6.
    if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
    // 7.
    lireHeuresEchelle(c, tournee, code);
    c.ChargerEtiquetteHeuresAide(c.HeureDebutEchelle, c.HeureFinEchelle);
    c.ChargerEtiquetteHeuresDetail(c.HeureDebutEchelle, c.HeureFinEchelle);
    // 8.
    remplirDates(c, jourTournee(tournee, code));
}

// The assignment dialog has put its target in the box: the day is shown at once, and fixed.
void ouvrirTourneeAffectation(Ctr_Zandorel& c) {
    const std::string code = c.Txt_CodeTournee.text();
    // 1.
    if (!lireTournee(c, code)) return;
    const mvdb::DynamicRecord tournee = c.Mod.fichiers.EnregSSIADCARACTTOURNEE;
    // 2.
    c.Cbo_Tournee.setText(tournee(caract::kLibelle));
    // 3.
    activerMatinSoir(c, false);
    c.Cbo_Date.setVisible(false);
    for (toolkit::Control* fige : std::initializer_list<toolkit::Control*>{
             &c.Txt_Date, &c.Cmd_Affichage, &c.Cbo_Tournee, &c.Txt_CodeTournee})
        fige->setEnabled(false);
    c.Tables.release(model::Pane::Detail);
    c.TabAnomalies.release();
    // 4. Only the label being assigned stays usable.
    if (c.Etq_Aide.Count() > 1) {
        for (toolkit::Control* etiquette : c.Etq_Aide.elements()) {
            if (etiquette->index() != 0 && etiquette->index() != c.IndiceEtqCourante)
                etiquette->setEnabled(false);
        }
    }
    // 5. The horizontal scale stays, and with it the places of the labels of pane "AIDE". A tournée
    // whose hours make no sense takes the assignment back.
    if (auto defaut = data::checkTourneeHours(code, tournee)) {
        avertir(c, "Cette tournée ne peut pas être ouverte : " + defaut->text());
        return c.EnleveAffectationTournee(false);
    }
    lireHeuresEchelle(c, tournee, code);
    c.ChargerEtiquetteHeuresDetail(c.HeureDebutEchelle, c.HeureFinEchelle);
    // 6.
    c.Cmd_Affichage_Click();
}

}  // namespace

Selection::Selection(Ctr_Zandorel& ctl) : m_ctl(ctl) {}

Selection::Issue Selection::questionEnregistrement(bool compterLignes) {
    if (!presenceEtqDetail(m_ctl)) return Issue::SansDetail;
    Issue issue = Issue::Videe;
    if (TourneeModifiee(compterLignes)) {
        const int reponse = DemandeEnregistrement();
        if (reponse == toolkit::msgbox::kYes) m_ctl.Cmd_Ok_Click();
        if (reponse == toolkit::msgbox::kYes && m_ctl.commitReussi()) {
            issue = Issue::Enregistree;
        } else if (reponse != toolkit::msgbox::kNo) {
            return Issue::Retour;  // Cancel, or a commit refused at the anomaly list
        }
    }
    viderEcran(m_ctl);
    return issue;
}

void Selection::retourSansTournee() {
    Ctr_Zandorel& c = m_ctl;
    // Case A of the code's change. It runs on each of the first two keystrokes and on clearing the box.
    if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
    c.Cbo_Tournee.setText("");
    activerMatinSoir(c, true);
    c.Cbo_Date.setVisible(false);
    c.Txt_Date.setVisible(true);
    c.Txt_Date.setText(DateSaisie.empty() ? c.clock().today().text() : DateSaisie);
    c.Tables.release(model::Pane::Detail);
    c.Tables.release(model::Pane::Aide);
    c.TabAnomalies.release();
    c.Opt_Matin_Click();
}

void Selection::RequeteTournee() {
    // 1.
    m_ctl.debutCommandeLongue();

    // 2. Labels that begin with what was typed, not deleted, by label; an empty text lists them all.
    RequeteTournees =
        data::Interroger(m_ctl.database(),
                         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"" + base::UCase(m_ctl.Cbo_Tournee.text()) +
                             "]\" AND AVEC 9 <> \"1\" PAR 1",
                         data::kSSIADCARACTTOURNEE, "0 1 10");

    // 3.
    m_ctl.Cbo_Tournee.clear();
    if (!RequeteTournees(1).empty()) {
        for (std::int64_t i = 1; i <= RequeteTournees.DCount(); ++i)
            m_ctl.Cbo_Tournee.addItem(RequeteTournees(i, 2));
    }

    // 4.
    m_ctl.Cbo_Tournee.setText("");

    // 5. A single match is taken as chosen: writing its code runs the code's change handler.
    if (RequeteTournees.DCount() == 1) {
        m_ctl.Cbo_Tournee.setText(RequeteTournees(1, 2));
        m_ctl.Txt_CodeTournee.setText(RequeteTournees(1, 1));
    } else {
        m_ctl.Cbo_Tournee.setText("");
        m_ctl.Txt_CodeTournee.setText("");
    }

    // 6.
    m_ctl.finCommandeLongue();
}

void Selection::Txt_CodeTournee_Change() {
    if (m_ctl.Mod.FlagAffectationEnCours) return ouvrirTourneeAffectation(m_ctl);
    if (static_cast<std::int64_t>(base::Len(m_ctl.Txt_CodeTournee.text())) != kLongueurCode)
        return retourSansTournee();
    choisirTournee(m_ctl);
}

void Selection::Txt_CodeTournee_KeyPress(int& KeyAscii) {
    // 2.
    if (!m_ctl.TourneeAnterieure) {
        const Issue issue = questionEnregistrement(true);
        if (issue == Issue::Retour) {
            KeyAscii = 0;
            return;
        }
        if (issue != Issue::SansDetail) m_ctl.Txt_CodeTournee.setFocus();
    }
    // 3 to 5. Codes are digits only; Enter completes the code, which runs the change handler.
    if (KeyAscii == kRetourArriere) return;
    if (KeyAscii == kEntree)
        return m_ctl.Txt_CodeTournee.setText(completerCode(m_ctl.Txt_CodeTournee.text()));
    if (!estChiffre(KeyAscii)) KeyAscii = 0;
}

void Selection::Txt_CodeTournee_LostFocus() {
    if (!m_ctl.Txt_CodeTournee.text().empty())
        m_ctl.Txt_CodeTournee.setText(completerCode(m_ctl.Txt_CodeTournee.text()));
}

void Selection::Cbo_Tournee_Click() {
    m_ctl.Txt_CodeTournee.setFocus();
}

void Selection::Cbo_Tournee_KeyPress(int& KeyAscii) {
    if (KeyAscii == kEntree) RequeteTournee();
}

void Selection::Cbo_Tournee_KeyDown(int& KeyCode, int /*Shift*/) {
    if ((KeyCode == kSuppr && !m_ctl.Txt_CodeTournee.text().empty()) ||
        (KeyCode == kRetourArriere && !m_ctl.Cbo_Tournee.text().empty())) {
        m_ctl.Txt_CodeTournee.setText("");
    }
}

void Selection::Cbo_Tournee_LostFocus() {
    // 1. The choice is taken from what stood here before the question: a commit empties the code, and
    // through it Cbo_Tournee, yet the chosen tournée still opens after it.
    const int ligne = m_ctl.Cbo_Tournee.listIndex() + 1;
    const std::string libelle = m_ctl.Cbo_Tournee.text();
    const std::string ancienCode = m_ctl.Txt_CodeTournee.text();
    // 2.
    if (!m_ctl.TourneeAnterieure && questionEnregistrement(false) == Issue::Retour) {
        if (lireTournee(m_ctl, ancienCode))
            m_ctl.Cbo_Tournee.setText(m_ctl.Mod.fichiers.EnregSSIADCARACTTOURNEE(caract::kLibelle));
        return;
    }
    // 3 to 6.
    if (libelle.empty() || ligne == 0) return;
    m_ctl.Txt_CodeTournee.setText(RequeteTournees(ligne, 1));
    m_ctl.NbIntervenantsTournee = nombreIntervenants(RequeteTournees(ligne, 3));
    activerMatinSoir(m_ctl, false);
    m_ctl.Cbo_Date.setVisible(true);
    m_ctl.Txt_Date.setVisible(false);
}

void Selection::Cbo_Date_Change() {
    m_ctl.Cmd_Affichage.setEnabled(!m_ctl.Cbo_Date.text().empty());
}

void Selection::Cbo_Date_Click() {
    m_ctl.Cmd_Affichage.setEnabled(true);
    m_ctl.Cmd_Affichage.setFocus();
}

void Selection::Cbo_Date_KeyPress(int& KeyAscii) {
    // The dates come from the list only.
    KeyAscii = 0;
}

void Selection::Cbo_Date_LostFocus() {
    if (m_ctl.Mod.FlagAffectationEnCours || m_ctl.TourneeAnterieure) return;
    // Read before the question: the commit empties the code.
    const std::string code = m_ctl.Txt_CodeTournee.text();
    const std::string date = m_ctl.Cbo_Date.text();
    const Issue issue = questionEnregistrement(false);
    if (issue == Issue::Enregistree) {
        m_ctl.Txt_CodeTournee.setText(code);
        m_ctl.Cbo_Date.setText(date);
    }
    if (issue == Issue::Retour) m_ctl.Cbo_Date.setText(m_ctl.DateAffichee);
}

void Selection::Txt_Date_Change() {
    if (m_ctl.Etq_Aide.Count() > 1) {
        m_ctl.DechargerEtiquettes();
        m_ctl.Tables.release(model::Pane::Aide);
    }
    m_ctl.Cmd_Affichage.setEnabled(!m_ctl.Txt_Date.text().empty());
}

void Selection::Txt_Date_KeyPress(int& KeyAscii) {
    // Any other key is a separator: "5.12" and "5-12" read as "5/12".
    const bool garde =
        KeyAscii == kRetourArriere || KeyAscii == kEntree || KeyAscii == kTabulation || estChiffre(KeyAscii);
    if (!garde) KeyAscii = kBarre;
}

void Selection::Txt_Date_LostFocus() {
    // 1.
    if (m_ctl.Txt_Date.text().empty()) return m_ctl.Cmd_Affichage.setEnabled(false);
    // 2.
    m_ctl.Txt_Date.setText(m_ctl.ObjetConversion.NormaliserDate(m_ctl.Txt_Date.text()));
    // 3. The conversion raises its flag for exactly the texts that are no date: those are told so, as
    // is a text without an internal form.
    const std::string interne = m_ctl.ObjetConversion.DateInterne(m_ctl.Txt_Date.text());
    if (m_ctl.ObjetConversion.LireOptionDate() || interne.empty()) {
        avertir(m_ctl, "Erreur de saisie dans la date, veuillez la ressaisir.");
        m_ctl.Txt_Date.setFocus();
    }
    // 4. Only a date has a day to compare.
    if (!interne.empty() &&
        base::toNumber(interne) < base::toNumber(m_ctl.ObjetConversion.DateInterne(m_ctl.clock().today()))) {
        avertir(m_ctl, "Cette date ne peut pas être antérieure à la date du jour.");
        m_ctl.Txt_Date.setFocus();
    }
    // 5. Stored, and the button enabled, even after a message above: deliberate, the message and the
    // focus sent back are all the warning the screen gives.
    DateSaisie = m_ctl.Txt_Date.text();
    m_ctl.Cmd_Affichage.setEnabled(true);
}

bool Selection::TourneeModifiee(bool compterLignes) {
    // 1.
    if (!presenceEtqDetail(m_ctl)) return false;
    // 2. A tournée with nothing stored is new.
    const std::int64_t enregistrees =
        m_ctl.TabTourneeEnregistree.exists() ? m_ctl.TabTourneeEnregistree->DCount() : 0;
    if (enregistrees == 0) return true;
    // Only the key press in the code box counts the rows: elsewhere a label added or removed, with none
    // moved, is no change. The asymmetry is deliberate.
    const std::int64_t lignes = m_ctl.TabTempoDetail.exists() ? m_ctl.TabTempoDetail->DCount() : 0;
    if (compterLignes && lignes != enregistrees) return true;
    // 3. The stored start against the label's, as texts: deliberate, a LinkItem "850" differs from a key
    // ending in "0850".
    for (std::int64_t i = 1; i <= enregistrees; ++i) {
        const std::string cle = m_ctl.TabTourneeEnregistree(i, kColCleProtocole);
        const std::string debut = base::Right(m_ctl.TabTourneeEnregistree(i, kColCleTournee), 4);
        for (std::int64_t j = 1; j <= lignes; ++j) {
            if (base::compareValues(m_ctl.TabTempoDetail(j, model::col::CleProtocole), cle) == 0 &&
                debutPrevu(m_ctl, j) != debut) {
                return true;
            }
        }
    }
    return false;
}

int Selection::DemandeEnregistrement() {
    return m_ctl.host().MsgBox("Voulez-vous enregistrer les modifications apportées à cette tournée ?",
                               toolkit::msgbox::kYesNoCancel | toolkit::msgbox::kExclamation, kTitreMessage);
}

void Ctr_Zandorel::DechargerEtiquettes() {
    historique.vider();
    Etq_Aide.unloadAll();
    IndiceEtqMax = 0;
    VScroll.setMax(0);
    DerniereValeurScroll = VScroll.value();
    VScroll.setVisible(false);
}

}  // namespace control
