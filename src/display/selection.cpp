#include "display/affichage.h"

// The choice of a tournée and a date: routines of the control, kept with the display they lead to.
// Writing Text from code runs the box's change handler at once, inside the writer: the steps below are
// ordered for that, and the re-entry through clearing the code box is part of the design.
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

// Where the presence test, the change test and the question on saving leave one of the three handlers
// at which the selection changes. The screen is cleared here when the tournée is unchanged, saved or
// dropped; going back to what was shown is the handler's own.
enum class Issue { SansDetail, Videe, Enregistree, Retour };

Issue questionEnregistrement(Ctr_Zandorel& c, bool compterLignes) {
    if (!presenceEtqDetail(c)) return Issue::SansDetail;
    Issue issue = Issue::Videe;
    if (c.TourneeModifiee(compterLignes)) {
        const int reponse = c.DemandeEnregistrement();
        if (reponse == toolkit::msgbox::kYes) c.Cmd_Ok_Click();
        if (reponse == toolkit::msgbox::kYes && c.commitReussi()) {
            issue = Issue::Enregistree;
        } else if (reponse != toolkit::msgbox::kNo) {
            return Issue::Retour;  // Cancel, or a commit refused at the anomaly list
        }
    }
    viderEcran(c);
    return issue;
}

// Case A of the code's change: the screen goes back to having no tournée. It runs on each of the first
// two keystrokes and on clearing the box.
void retourSansTournee(Ctr_Zandorel& c) {
    if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
    c.Cbo_Tournee.setText("");
    activerMatinSoir(c, true);
    c.Cbo_Date.setVisible(false);
    c.Txt_Date.setVisible(true);
    c.Txt_Date.setText(c.DateSaisie.empty() ? c.clock().today().text() : c.DateSaisie);
    c.Tables.release(model::Pane::Detail);
    c.Tables.release(model::Pane::Aide);
    c.TabAnomalies.release();
    c.Opt_Matin_Click();
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

void Affichage::RequeteTournee() {
    Ctr_Zandorel& c = m_c;
    // 1.
    c.debutCommandeLongue();

    // 2. Labels that begin with what was typed, not deleted, by label; an empty text lists them all.
    c.RequeteTournees =
        data::Interroger(c.database(),
                         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"" + base::UCase(c.Cbo_Tournee.text()) +
                             "]\" AND AVEC 9 <> \"1\" PAR 1",
                         data::kSSIADCARACTTOURNEE, "0 1 10");

    // 3.
    c.Cbo_Tournee.clear();
    if (!c.RequeteTournees(1).empty()) {
        for (std::int64_t i = 1; i <= c.RequeteTournees.DCount(); ++i)
            c.Cbo_Tournee.addItem(c.RequeteTournees(i, 2));
    }

    // 4.
    c.Cbo_Tournee.setText("");

    // 5. A single match is taken as chosen: writing its code runs the code's change handler.
    if (c.RequeteTournees.DCount() == 1) {
        c.Cbo_Tournee.setText(c.RequeteTournees(1, 2));
        c.Txt_CodeTournee.setText(c.RequeteTournees(1, 1));
    } else {
        c.Cbo_Tournee.setText("");
        c.Txt_CodeTournee.setText("");
    }

    // 6.
    c.finCommandeLongue();
}

void Affichage::Txt_CodeTournee_Change() {
    Ctr_Zandorel& c = m_c;
    if (c.Mod.FlagAffectationEnCours) return ouvrirTourneeAffectation(c);
    if (static_cast<std::int64_t>(base::Len(c.Txt_CodeTournee.text())) != kLongueurCode)
        return retourSansTournee(c);
    choisirTournee(c);
}

void Affichage::Txt_CodeTournee_KeyPress(int& KeyAscii) {
    Ctr_Zandorel& c = m_c;
    // 2.
    if (!c.TourneeAnterieure) {
        const Issue issue = questionEnregistrement(c, true);
        if (issue == Issue::Retour) {
            KeyAscii = 0;
            return;
        }
        if (issue != Issue::SansDetail) c.Txt_CodeTournee.setFocus();
    }
    // 3 to 5. Codes are digits only; Enter completes the code, which runs the change handler.
    if (KeyAscii == kRetourArriere) return;
    if (KeyAscii == kEntree) return c.Txt_CodeTournee.setText(completerCode(c.Txt_CodeTournee.text()));
    if (!estChiffre(KeyAscii)) KeyAscii = 0;
}

void Affichage::Txt_CodeTournee_LostFocus() {
    Ctr_Zandorel& c = m_c;
    if (!c.Txt_CodeTournee.text().empty()) c.Txt_CodeTournee.setText(completerCode(c.Txt_CodeTournee.text()));
}

void Affichage::Cbo_Tournee_Click() {
    Ctr_Zandorel& c = m_c;
    c.Txt_CodeTournee.setFocus();
}

void Affichage::Cbo_Tournee_KeyPress(int& KeyAscii) {
    if (KeyAscii == kEntree) RequeteTournee();
}

void Affichage::Cbo_Tournee_KeyDown(int& KeyCode, int /*Shift*/) {
    Ctr_Zandorel& c = m_c;
    if ((KeyCode == kSuppr && !c.Txt_CodeTournee.text().empty()) ||
        (KeyCode == kRetourArriere && !c.Cbo_Tournee.text().empty())) {
        c.Txt_CodeTournee.setText("");
    }
}

void Affichage::Cbo_Tournee_LostFocus() {
    Ctr_Zandorel& c = m_c;
    // 1. The choice is taken from what stood here before the question: a commit empties the code, and
    // through it Cbo_Tournee, yet the chosen tournée still opens after it.
    const int ligne = c.Cbo_Tournee.listIndex() + 1;
    const std::string libelle = c.Cbo_Tournee.text();
    const std::string ancienCode = c.Txt_CodeTournee.text();
    // 2.
    if (!c.TourneeAnterieure && questionEnregistrement(c, false) == Issue::Retour) {
        if (lireTournee(c, ancienCode))
            c.Cbo_Tournee.setText(c.Mod.fichiers.EnregSSIADCARACTTOURNEE(caract::kLibelle));
        return;
    }
    // 3 to 6.
    if (libelle.empty() || ligne == 0) return;
    c.Txt_CodeTournee.setText(c.RequeteTournees(ligne, 1));
    c.NbIntervenantsTournee = nombreIntervenants(c.RequeteTournees(ligne, 3));
    activerMatinSoir(c, false);
    c.Cbo_Date.setVisible(true);
    c.Txt_Date.setVisible(false);
}

void Affichage::Cbo_Date_Change() {
    Ctr_Zandorel& c = m_c;
    c.Cmd_Affichage.setEnabled(!c.Cbo_Date.text().empty());
}

void Affichage::Cbo_Date_Click() {
    Ctr_Zandorel& c = m_c;
    c.Cmd_Affichage.setEnabled(true);
    c.Cmd_Affichage.setFocus();
}

void Affichage::Cbo_Date_KeyPress(int& KeyAscii) {
    // The dates come from the list only.
    KeyAscii = 0;
}

void Affichage::Cbo_Date_LostFocus() {
    Ctr_Zandorel& c = m_c;
    if (c.Mod.FlagAffectationEnCours || c.TourneeAnterieure) return;
    // Read before the question: the commit empties the code.
    const std::string code = c.Txt_CodeTournee.text();
    const std::string date = c.Cbo_Date.text();
    const Issue issue = questionEnregistrement(c, false);
    if (issue == Issue::Enregistree) {
        c.Txt_CodeTournee.setText(code);
        c.Cbo_Date.setText(date);
    }
    if (issue == Issue::Retour) c.Cbo_Date.setText(c.DateAffichee);
}

void Affichage::Txt_Date_Change() {
    Ctr_Zandorel& c = m_c;
    if (c.Etq_Aide.Count() > 1) {
        DechargerEtiquettes();
        c.Tables.release(model::Pane::Aide);
    }
    c.Cmd_Affichage.setEnabled(!c.Txt_Date.text().empty());
}

void Affichage::Txt_Date_KeyPress(int& KeyAscii) {
    // Any other key is a separator: "5.12" and "5-12" read as "5/12".
    const bool garde =
        KeyAscii == kRetourArriere || KeyAscii == kEntree || KeyAscii == kTabulation || estChiffre(KeyAscii);
    if (!garde) KeyAscii = kBarre;
}

void Affichage::Txt_Date_LostFocus() {
    Ctr_Zandorel& c = m_c;
    // 1.
    if (c.Txt_Date.text().empty()) return c.Cmd_Affichage.setEnabled(false);
    // 2.
    c.Txt_Date.setText(c.ObjetConversion.NormaliserDate(c.Txt_Date.text()));
    // 3. The conversion raises its flag for exactly the texts that are no date: those are told so, as
    // is a text without an internal form.
    const std::string interne = c.ObjetConversion.DateInterne(c.Txt_Date.text());
    if (c.ObjetConversion.LireOptionDate() || interne.empty()) {
        avertir(c, "Erreur de saisie dans la date, veuillez la ressaisir.");
        c.Txt_Date.setFocus();
    }
    // 4. Only a date has a day to compare.
    if (!interne.empty() &&
        base::toNumber(interne) < base::toNumber(c.ObjetConversion.DateInterne(c.clock().today()))) {
        avertir(c, "Cette date ne peut pas être antérieure à la date du jour.");
        c.Txt_Date.setFocus();
    }
    // 5. Stored, and the button enabled, even after a message above: deliberate, the message and the
    // focus sent back are all the warning the screen gives.
    c.DateSaisie = c.Txt_Date.text();
    c.Cmd_Affichage.setEnabled(true);
}

bool Affichage::TourneeModifiee(bool compterLignes) {
    Ctr_Zandorel& c = m_c;
    // 1.
    if (!presenceEtqDetail(c)) return false;
    // 2. A tournée with nothing stored is new.
    const std::int64_t enregistrees =
        c.TabTourneeEnregistree.exists() ? c.TabTourneeEnregistree->DCount() : 0;
    if (enregistrees == 0) return true;
    // Only the key press in the code box counts the rows: elsewhere a label added or removed, with none
    // moved, is no change. The asymmetry is deliberate.
    const std::int64_t lignes = c.TabTempoDetail.exists() ? c.TabTempoDetail->DCount() : 0;
    if (compterLignes && lignes != enregistrees) return true;
    // 3. The stored start against the label's, as texts: deliberate, a LinkItem "850" differs from a key
    // ending in "0850".
    for (std::int64_t i = 1; i <= enregistrees; ++i) {
        const std::string cle = c.TabTourneeEnregistree(i, kColCleProtocole);
        const std::string debut = base::Right(c.TabTourneeEnregistree(i, kColCleTournee), 4);
        for (std::int64_t j = 1; j <= lignes; ++j) {
            if (base::compareValues(c.TabTempoDetail(j, model::col::CleProtocole), cle) == 0 &&
                debutPrevu(c, j) != debut) {
                return true;
            }
        }
    }
    return false;
}

int Affichage::DemandeEnregistrement() {
    Ctr_Zandorel& c = m_c;
    return c.host().MsgBox("Voulez-vous enregistrer les modifications apportées à cette tournée ?",
                           toolkit::msgbox::kYesNoCancel | toolkit::msgbox::kExclamation, kTitreMessage);
}

void Affichage::DechargerEtiquettes() {
    Ctr_Zandorel& c = m_c;
    c.Etq_Aide.unloadAll();
    c.IndiceEtqMax = 0;
    c.VScroll.setMax(0);
    c.DerniereValeurScroll = c.VScroll.value();
    c.VScroll.setVisible(false);
}

}  // namespace control
