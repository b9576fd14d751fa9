#include "saving/frm_anomalies.h"

#include "base/text.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"
#include "toolkit/printer.h"

namespace control {
namespace {

constexpr int kBoutonDroit = 2;
constexpr int kCaseFermeture = 0;
// Text1 shows 20 lines; from the 21st on its scroll bar must be seen, so the mask goes.
constexpr std::int64_t kLignesSansDefilement = 20;

// One line of the list for row r, whose four times are rewritten padded to 4 digits on the way.
std::string ligneAnomalie(mvdb::DynamicRecord& tableau, std::int64_t r) {
    std::string heures[4];
    for (std::int64_t colonne = 3; colonne <= 6; ++colonne) {
        // Read as a number: a time that float arithmetic left a hair off its whole HHMM keeps its digits.
        std::string heure = base::zeroPad(base::roundHalfEven(base::toNumber(tableau(r, colonne))), 4);
        tableau.set(r, colonne, heure);
        heures[colonne - 3] = base::Left(heure, 2) + "h" + base::Right(heure, 2);
    }
    // Deliberate: a name is cut only past 20 characters, and then to 25, so names of 21 to 25
    // characters stay whole with less padding, and the columns still line up.
    std::string nom = tableau(r, 2);
    if (base::Len(nom) > 20) nom = base::Left(nom, 25);
    return " " + tableau(r, 1) + " " + nom + std::string(25 - base::Len(nom), ' ') + "  / Validé " +
           heures[0] + " - " + heures[1] + " / Protocole " + heures[2] + " - " + heures[3] + "\r\n";
}

}  // namespace

Frm_Anomalies::Frm_Anomalies(Ctr_Zandorel& ctl)
    : toolkit::Form("Frm_Anomalies", ctl.host()),
      Text1("Text1", this),
      Label1("Label1", this),
      Cmd_Imprimer("Cmd_Imprimer", this),
      Cmd_Ok("Cmd_Ok", this),
      Cmd_Annuler("Cmd_Annuler", this),
      Mnu_Aide("Mnu_Aide", this),
      Mnu_Sommaire("Mnu_Sommaire", &Mnu_Aide),
      m_ctl(ctl) {
    placerControles();
    brancherEvenements();
}

void Frm_Anomalies::placerControles() {
    setCaption("Liste des anomalies");
    setGeometry(0, 0, 9375, 5280);
    Text1.setGeometry(120, 120, 9105, 4575);
    Text1.setMultiLine(true);
    Text1.setFontName("Courier New");
    // Label1 lies over the scroll bar of Text1 while the list fits without it.
    Label1.setGeometry(8880, 120, 375, 4575);
    Cmd_Imprimer.setGeometry(5760, 4800, 975, 375);
    Cmd_Imprimer.setCaption("Imprimer");
    Cmd_Ok.setGeometry(6960, 4800, 975, 375);
    Cmd_Ok.setCaption("OK");
    Cmd_Annuler.setGeometry(8160, 4800, 975, 375);
    Cmd_Annuler.setCaption("Annuler");
    // A pop-up only: it stands in no menu bar.
    Mnu_Aide.setCaption("Korveline");
    Mnu_Aide.setVisible(false);
    Mnu_Sommaire.setCaption("Aide Korveline");
}

void Frm_Anomalies::brancherEvenements() {
    Cmd_Ok.Click = [this] { Cmd_Ok_Click(); };
    Cmd_Annuler.Click = [this] { Cmd_Annuler_Click(); };
    Cmd_Imprimer.Click = [this] { Cmd_Imprimer_Click(); };
    Text1.GotFocus = [this] { Text1_GotFocus(); };
    QueryUnload = [this](int& cancel, int mode) { Form_QueryUnload(cancel, mode); };
    MouseDown = [this](int button, int shift, double x, double y) { Form_MouseDown(button, shift, x, y); };
    // Deliberate: Mnu_Sommaire gets no Click handler here; choosing it does nothing on this form.
}

void Frm_Anomalies::Init() {
    mvdb::DynamicRecord& tableau = *W_TableauAnomalie;
    const std::int64_t lignes = tableau.DCount();
    for (std::int64_t r = 1; r <= lignes; ++r)
        Text1.setText(Text1.text() + ligneAnomalie(tableau, r));
    Label1.setVisible(lignes <= kLignesSansDefilement);

    if (!W_Affichage) return;
    // Only informing: nothing to go on with, the printing takes the place of OK and Annuler reads OK.
    Cmd_Ok.setVisible(false);
    Cmd_Imprimer.setLeft(6960);
    Cmd_Imprimer.setTop(4800);
    Cmd_Annuler.setCaption("OK");
}

void Frm_Anomalies::Cmd_Ok_Click() {
    m_ctl.ValidationAnomalies = true;
    W_TableauAnomalie.release();
    unload();
}

void Frm_Anomalies::Cmd_Annuler_Click() {
    // In the information use this button reads "OK"; the false it leaves is read by nobody then.
    m_ctl.ValidationAnomalies = false;
    W_TableauAnomalie.release();
    AnomalieAnnulee = true;
    unload();
}

void Frm_Anomalies::Cmd_Imprimer_Click() {
    const std::string choix = m_ctl.ObjetConversion.ChoisirImprimante("");
    if (base::toNumber(choix) == -1) return;
    toolkit::Printer& imprimante =
        m_ctl.impression().setCurrentPrinter(static_cast<int>(base::toNumber(choix)));
    // The copies are pages of one document: the printer's own copy count is left alone here, and no
    // orientation, paper or margin is set.
    const int copies = m_ctl.ObjetConversion.NombreCopies();
    for (int copie = 1; copie <= copies; ++copie) {
        if (copie > 1) imprimante.newPage();
        imprimante.setFontName("Courier New");
        imprimante.setFontSize(10);
        for (const std::string& ligne : {std::string(), " Tournée : " + W_AnomalieCodeTournee, std::string(),
                                         " Date : " + W_AnomalieDateTournee, std::string(), Text1.text()}) {
            imprimante.print(ligne);
        }
    }
    imprimante.endDoc();
}

void Frm_Anomalies::Form_QueryUnload(int& Cancel, int UnloadMode) {
    // Deliberate: the close box is refused, so that ValidationAnomalies always gets an answer.
    if (UnloadMode == kCaseFermeture) Cancel = 1;
}

void Frm_Anomalies::Text1_GotFocus() {
    // The list can be read and scrolled, never edited.
    Cmd_Imprimer.setFocus();
}

void Frm_Anomalies::Form_MouseDown(int Button, int, double, double) {
    if (Button == kBoutonDroit) host().PopupMenu(Mnu_Aide);
}

// ---- The control's side.

void Ctr_Zandorel::AfficherAnomalies(bool affichage) {
    Frm_Anomalies form(*this);
    // The form works on a copy of its own, which it pads and then drops: TabAnomalies stays as it is.
    form.W_TableauAnomalie.renew();
    if (TabAnomalies.exists()) *form.W_TableauAnomalie = *TabAnomalies;
    form.W_Affichage = affichage;
    form.W_AnomalieCodeTournee = Txt_CodeTournee.text() + " " + Cbo_Tournee.text();
    form.W_AnomalieDateTournee = Cbo_Date.text();
    form.Init();
    host().ShowModal(form);
}

}  // namespace control
