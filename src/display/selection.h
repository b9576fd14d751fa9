#pragma once

#include <cstdint>
#include <string>

#include "mvdb/dynamic_record.h"

namespace control {

class Ctr_Zandorel;

// The top of the screen, where the planner names a tournée and a date before a day is shown: the code
// box, the list of tournées, the free date box and the list of a tournée's dates. A tournée runs on one
// weekday, so choosing one replaces the free date by a list of that weekday's dates; without one, the
// planner works on a free date with a morning or evening scale. It receives the events of these boxes
// from the control it belongs to, and asks about unsaved changes before the choice moves away from a
// tournée on show.
//
// Writing Text from code runs the box's change handler at once, inside the writer: the steps of these
// routines are ordered for that, and the re-entry through clearing the code box is part of the design.
class Selection {
public:
    explicit Selection(Ctr_Zandorel& ctl);
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

    // Lists in Cbo_Tournee the tournées not deleted whose label begins with its text, by label; an
    // empty text lists them all. A single match is taken as chosen: its code goes into Txt_CodeTournee.
    void RequeteTournee();

    // A code of three characters opens its tournée (refused with a message when it is not in the file
    // or is deleted); any other text takes the screen back to no tournée. During an assignment the
    // target tournée is shown at once and fixed.
    void Txt_CodeTournee_Change();
    // Asks about unsaved changes first (a Cancel drops the key); then digits and backspace only, and
    // Enter completes the code with leading zeros.
    void Txt_CodeTournee_KeyPress(int& KeyAscii);
    void Txt_CodeTournee_LostFocus();
    void Cbo_Tournee_Click();
    void Cbo_Tournee_KeyPress(int& KeyAscii);
    void Cbo_Tournee_KeyDown(int& KeyCode, int Shift);
    // Applies a choice from the list, after the question on unsaved changes.
    void Cbo_Tournee_LostFocus();
    void Cbo_Date_Change();
    void Cbo_Date_Click();
    void Cbo_Date_KeyPress(int& KeyAscii);
    void Cbo_Date_LostFocus();
    void Txt_Date_Change();
    void Txt_Date_KeyPress(int& KeyAscii);
    // Normalises the date typed and warns of one that is no date or lies in the past; the date is kept
    // and the display allowed all the same.
    void Txt_Date_LostFocus();

    // The unsaved-changes test: true when the tournée on show differs from what was loaded.
    // `compterLignes` adds the test on the row counts that only Txt_CodeTournee_KeyPress makes.
    bool TourneeModifiee(bool compterLignes);
    // The question on saving, answered 6 (yes), 7 (no) or 2 (cancel).
    int DemandeEnregistrement();

    mvdb::DynamicRecord RequeteTournees;  // reply of the last RequeteTournee: code, label, attribute 10
    std::string DateSaisie;               // the last date accepted in Txt_Date

private:
    // Where the presence test, the change test and the question on saving leave one of the three
    // handlers at which the selection changes. The screen is cleared when the tournée is unchanged, saved
    // or dropped; going back to what was shown is the handler's own.
    enum class Issue { SansDetail, Videe, Enregistree, Retour };
    Issue questionEnregistrement(bool compterLignes);
    // The screen back to having no tournée: free date, morning scale, tables released.
    void retourSansTournee();

    Ctr_Zandorel& m_ctl;
};

}  // namespace control
