#pragma once

#include <string>

#include "model/working_table.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace control {

class Ctr_Zandorel;

// The anomaly list: the placed interventions that lie outside the window of their protocole. It asks
// during a commit (Cmd_Ok goes on, Cmd_Annuler goes back) and only informs after a display
// (W_Affichage). Its answer goes to the control's ValidationAnomalies; the list can be printed.
//
// The caller loads it, sets the four W_ fields, calls Init once and shows it modally.
class Frm_Anomalies : public toolkit::Form {
public:
    explicit Frm_Anomalies(Ctr_Zandorel& ctl);

    // Rows of TabAnomalies: CodeAide, name, placed start and end, protocole's start and end, the times
    // in hundredths written as HHMM numbers. Init rewrites the four times padded to 4 digits.
    model::WorkTable W_TableauAnomalie{"W_TableauAnomalie"};
    // True: information only, nothing to answer.
    bool W_Affichage = false;
    // The tournée's code, a blank and its label; the text of Cbo_Date.
    std::string W_AnomalieCodeTournee;
    std::string W_AnomalieDateTournee;

    // Client area 9375 x 5280 twips.
    toolkit::TextBox Text1;
    toolkit::TextBox Label1;
    toolkit::CommandButton Cmd_Imprimer;
    toolkit::CommandButton Cmd_Ok;
    toolkit::CommandButton Cmd_Annuler;
    toolkit::Menu Mnu_Aide;
    toolkit::Menu Mnu_Sommaire;

    // Writes one line per row into Text1, shows the scroll bar from 21 rows on, and sets the buttons of
    // the information use. Fails when W_TableauAnomalie was never given.
    void Init();

    // Answers the commit (true, false) through ValidationAnomalies, drops the table, and unloads.
    void Cmd_Ok_Click();
    void Cmd_Annuler_Click();
    // Prints the list on the printer the user chooses, as many copies as asked; nothing when given up.
    void Cmd_Imprimer_Click();
    // Refuses the close box, so the commit always gets its answer from a button.
    void Form_QueryUnload(int& Cancel, int UnloadMode);
    void Text1_GotFocus();
    void Form_MouseDown(int Button, int Shift, double X, double Y);

private:
    void placerControles();
    void brancherEvenements();

    Ctr_Zandorel& m_ctl;
    bool AnomalieAnnulee = false;
};

}  // namespace control
