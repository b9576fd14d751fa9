#include "shell/ctr_zandorel.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "base/clock.h"
#include "base/error.h"
#include "base/text.h"
#include "data/purge.h"
#include "toolkit/host.h"

namespace control {
namespace {

// Grey of the screen's background, RGB(212, 208, 200).
constexpr toolkit::Colour kGrisFond = 0xC8D0D4;

void place(toolkit::Control& c, double left, double top, double width, double height,
           const std::string& caption = {}) {
    c.setGeometry(left, top, width, height);
    if (!caption.empty()) c.setCaption(caption);
}

// The user's name as the operating system knows it: the login of the session, else the owner of the
// process, else the environment.
std::string nomSysteme() {
    std::vector<char> buffer(256, '\0');
    if (getlogin_r(buffer.data(), buffer.size()) == 0 && buffer[0] != '\0') return buffer.data();
    struct passwd entry {};
    struct passwd* found = nullptr;
    std::vector<char> scratch(4096, '\0');
    if (getpwuid_r(geteuid(), &entry, scratch.data(), scratch.size(), &found) == 0 && found &&
        found->pw_name) {
        return found->pw_name;
    }
    const char* user = std::getenv("USER");
    return user ? user : "";
}

}  // namespace

Ctr_Zandorel::Ctr_Zandorel(toolkit::Host& host, const base::Clock& clock)
    : UserControl("Ctr_Zandorel", host),
      Frame2("Frame2", &UserControl),
      Frame4("Frame4", &UserControl),
      Frame3("Frame3", &UserControl),
      Frm_MatinSoir("Frm_MatinSoir", &UserControl),
      Label1("Label1", &UserControl),
      Frame1("Frame1", &UserControl),
      Etq_LibelleTournee("Etq_LibelleTournee", &UserControl),
      Txt_CodeTournee("Txt_CodeTournee", &UserControl),
      Cbo_Tournee("Cbo_Tournee", &UserControl),
      Cmd_Tournee("Cmd_Tournee", &UserControl),
      Etq_Date("Etq_Date", &Frame3),
      Txt_Date("Txt_Date", &UserControl),
      Cbo_Date("Cbo_Date", &UserControl),
      Opt_Matin("Opt_Matin", &Frm_MatinSoir),
      Opt_Soir("Opt_Soir", &Frm_MatinSoir),
      Cmd_Affichage("Cmd_Affichage", &UserControl),
      Label10("Label10", &Label1),
      Line_HeureAide("Line_HeureAide", &Label1),
      Etq_HeureAide("Etq_HeureAide", &Label1),
      Label9("Label9", &UserControl),
      Etq_HeureDetail("Etq_HeureDetail", &UserControl),
      Line_HeureDetail("Line_HeureDetail", &UserControl),
      Etq_Horaire("Etq_Horaire", &UserControl),
      Etq_Aide("Etq_Aide", &UserControl),
      VScroll("VScroll", &UserControl),
      Etq_Infirmier("Etq_Infirmier", &Frame1),
      Lst_Infirmier("Lst_Infirmier", &Frame1),
      Etq_Soignant("Etq_Soignant", &Frame1),
      Lst_Soignant("Lst_Soignant", &Frame1),
      Etq_Mixte("Etq_Mixte", &Frame1),
      Lst_Mixte("Lst_Mixte", &Frame1),
      Cmd_Enchainement("Cmd_Enchainement", &UserControl),
      Cmd_Imprimer("Cmd_Imprimer", &UserControl),
      Cmd_Ok("Cmd_Ok", &UserControl),
      Cmd_Sortir("Cmd_Sortir", &UserControl),
      Mnu_MenuEtq("Mnu_MenuEtq", &UserControl),
      Mnu_ElemGestSSIAD("Mnu_ElemGestSSIAD", &Mnu_MenuEtq),
      Mnu_ProtocoleTraitement("Mnu_ProtocoleTraitement", &Mnu_MenuEtq),
      Mnu_DossierAide("Mnu_DossierAide", &Mnu_MenuEtq),
      Mnu_AffectationTournee("Mnu_AffectationTournee", &Mnu_MenuEtq),
      Mnu_Aide("Mnu_Aide", &UserControl),
      Mnu_Sommaire("Mnu_Sommaire", &Mnu_Aide),
      ObjetConversion(clock),
      m_host(host),
      m_clock(clock) {
    buildInventory();
    wireEvents();
}

Ctr_Zandorel::~Ctr_Zandorel() = default;

// ---- The screen as it stands before any event: design-time properties only, no handler runs.

void Ctr_Zandorel::buildInventory() {
    UserControl.setGeometry(0, 0, 11355, 7110);
    buildTopBar();
    buildScales();
    buildPanesAndLegend();
    buildButtonsAndMenus();
    setTabOrder();
}

void Ctr_Zandorel::buildTopBar() {
    place(Etq_LibelleTournee, 0, 120, 615, 255, "Tournée");
    place(Txt_CodeTournee, 720, 120, 375, 315);
    Txt_CodeTournee.setMaxLength(3);
    place(Cbo_Tournee, 1200, 120, 4815, 315);
    place(Cmd_Tournee, 6120, 120, 255, 255, "...");
    place(Frame3, 5040, 0, 6255, 495);
    place(Etq_Date, 1560, 120, 375, 255, "Date");
    place(Txt_Date, 7080, 120, 1095, 315);
    Txt_Date.setMaxLength(10);
    place(Cbo_Date, 7080, 120, 1335, 315);
    place(Frm_MatinSoir, 8520, 0, 1695, 495);
    place(Opt_Matin, 120, 160, 735, 255, "Matin");
    place(Opt_Soir, 960, 160, 615, 255, "Soir");
    // Handlers are not wired yet, so this selection runs none, as a design-time value.
    Opt_Matin.setValue(true);
    place(Cmd_Affichage, 10320, 120, 855, 375, "Affichage");
}

void Ctr_Zandorel::buildScales() {
    place(Label1, 5280, 480, 5775, 630, "Frame3");
    place(Label10, 2280, 0, 1215, 255, "Aidés à affecter");
    Line_HeureAide.model().setEnds(1560, 600, 1560, 680);
    place(Etq_HeureAide.model(), 1200, 360, 375, 255, "10");
    place(Label9, 2280, 460, 495, 255, "Détail");
    place(Etq_HeureDetail.model(), 120, 2040, 495, 255, "10h00");
    Line_HeureDetail.model().setEnds(720, 2160, 600, 2160);
    place(Etq_Horaire, 120, 1200, 495, 195, "12,50");
    Etq_Horaire.setBackColor(0xC0FFFF);
    Etq_Horaire.setVisible(false);
}

void Ctr_Zandorel::buildPanesAndLegend() {
    toolkit::Label& modele = Etq_Aide.model();
    place(modele, 5520, 2040, 1185, 800);
    modele.setBackColor(0xE0E0E0);
    modele.setBorder(true);
    modele.setFontName("Courier New");
    modele.setFontSize(9.75);
    place(VScroll, 10920, 1080, 255, 5265);
    VScroll.setVisible(false);

    place(Frame1, 5280, 6480, 3975, 495, "Actes");
    Frame1.setBorder(true);  // the legend of colours stands in its titled box
    place(Etq_Infirmier, 600, 160, 615, 255, "Infirmiers");
    place(Lst_Infirmier, 1320, 160, 255, 255);
    Lst_Infirmier.setBackColor(0xC0FFC0);
    place(Etq_Soignant, 1680, 160, 735, 255, "Soignants");
    place(Lst_Soignant, 2520, 160, 255, 255);
    Lst_Soignant.setBackColor(0xC0FFFF);
    place(Etq_Mixte, 2880, 165, 615, 255, "Mixtes");
    place(Lst_Mixte, 3480, 160, 255, 255);
    Lst_Mixte.setBackColor(0xFFC0C0);
    place(Frame2, 5280, 6360, 6015, 975);
    place(Frame4, 345, 6360, 4815, 495);
}

void Ctr_Zandorel::buildButtonsAndMenus() {
    place(Cmd_Enchainement, 1320, 6600, 1215, 375, "Enchaînement");
    place(Cmd_Imprimer, 3240, 6600, 1095, 375, "Imprimer");
    place(Cmd_Ok, 9360, 6600, 855, 375, "OK");
    place(Cmd_Sortir, 10320, 6600, 855, 375, "Sortir");

    // The label menu opens only as a pop-up: it stands in no menu bar.
    Mnu_MenuEtq.setCaption("Menu Etq");
    Mnu_MenuEtq.setVisible(false);
    Mnu_ElemGestSSIAD.setCaption("Eléments de gestion SSIAD");
    Mnu_ProtocoleTraitement.setCaption("Protocole de traitement");
    Mnu_DossierAide.setCaption("Dossier Aide");
    Mnu_AffectationTournee.setCaption("Affectation tournée");
    Mnu_Aide.setCaption("Aide");
    Mnu_Sommaire.setCaption("Aide Korveline");
}

void Ctr_Zandorel::setTabOrder() {
    toolkit::Control* ordre[] = {&Txt_CodeTournee,  &Cbo_Tournee,  &Cmd_Tournee,   &Txt_Date, &Cbo_Date,
                                 &Opt_Matin,        &Opt_Soir,     &Cmd_Affichage, &VScroll,  &Cmd_Ok,
                                 &Cmd_Enchainement, &Cmd_Imprimer, &Cmd_Sortir};
    int index = 0;
    for (toolkit::Control* c : ordre)
        c->setTabIndex(index++);
    // The three list boxes are colour swatches of the legend, not lists to work in.
    for (toolkit::ListBox* swatch : {&Lst_Infirmier, &Lst_Soignant, &Lst_Mixte})
        swatch->setTabStop(false);
}

void Ctr_Zandorel::wireEvents() {
    Opt_Matin.Click = [this] { Opt_Matin_Click(); };
    Opt_Soir.Click = [this] { Opt_Soir_Click(); };
    VScroll.Change = [this] { VScroll_Change(); };
    Cmd_Affichage.Click = [this] { Cmd_Affichage_Click(); };

    Txt_CodeTournee.Change = [this] { Txt_CodeTournee_Change(); };
    Txt_CodeTournee.KeyPress = [this](int& KeyAscii) { Txt_CodeTournee_KeyPress(KeyAscii); };
    Txt_CodeTournee.LostFocus = [this] { Txt_CodeTournee_LostFocus(); };
    Cbo_Tournee.Click = [this] { Cbo_Tournee_Click(); };
    Cbo_Tournee.KeyPress = [this](int& KeyAscii) { Cbo_Tournee_KeyPress(KeyAscii); };
    Cbo_Tournee.KeyDown = [this](int& KeyCode, int Shift) { Cbo_Tournee_KeyDown(KeyCode, Shift); };
    Cbo_Tournee.LostFocus = [this] { Cbo_Tournee_LostFocus(); };
    Cbo_Date.Change = [this] { Cbo_Date_Change(); };
    Cbo_Date.Click = [this] { Cbo_Date_Click(); };
    Cbo_Date.KeyPress = [this](int& KeyAscii) { Cbo_Date_KeyPress(KeyAscii); };
    Cbo_Date.LostFocus = [this] { Cbo_Date_LostFocus(); };
    Txt_Date.Change = [this] { Txt_Date_Change(); };
    Txt_Date.KeyPress = [this](int& KeyAscii) { Txt_Date_KeyPress(KeyAscii); };
    Txt_Date.LostFocus = [this] { Txt_Date_LostFocus(); };

    // Drag of a label. The toolkit's points are doubles; the handlers take the toolkit's singles.
    const auto single = [](double v) { return static_cast<float>(v); };
    Etq_Aide.MouseMove = [this, single](int Index, int Button, int Shift, double X, double Y) {
        Etq_Aide_MouseMove(Index, Button, Shift, single(X), single(Y));
    };
    Etq_Aide.MouseDown = [this, single](int Index, int Button, int Shift, double X, double Y) {
        Etq_Aide_MouseDown(Index, Button, Shift, single(X), single(Y));
    };
    Etq_Aide.DragOver = [this, single](int Index, toolkit::Control& Source, double X, double Y, int State) {
        Etq_Aide_DragOver(Index, Source, single(X), single(Y), State);
    };
    Etq_Aide.DragDrop = [this, single](int Index, toolkit::Control& Source, double X, double Y) {
        Etq_Aide_DragDrop(Index, Source, single(X), single(Y));
    };
    UserControl.DragOver = [this, single](toolkit::Control& Source, double X, double Y, int State) {
        UserControl_DragOver(Source, single(X), single(Y), State);
    };
    UserControl.DragDrop = [this, single](toolkit::Control& Source, double X, double Y) {
        UserControl_DragDrop(Source, single(X), single(Y));
    };
    UserControl.MouseDown = [this, single](int Button, int Shift, double X, double Y) {
        UserControl_MouseDown(Button, Shift, single(X), single(Y));
    };
    Cmd_Enchainement.DragOver = [this, single](toolkit::Control& Source, double X, double Y, int State) {
        Cmd_Enchainement_DragOver(Source, single(X), single(Y), State);
    };
    Cmd_Enchainement.Click = [this] { Cmd_Enchainement_Click(); };
    Mnu_AffectationTournee.Click = [this] { Mnu_AffectationTournee_Click(); };

    Cmd_Ok.Click = [this] { Cmd_Ok_Click(); };
    Cmd_Sortir.Click = [this] { Cmd_Sortir_Click(); };
    Cmd_Imprimer.Click = [this] { Cmd_Imprimer_Click(); };

    Cmd_Tournee.Click = [this] { Cmd_Tournee_Click(); };
    Mnu_DossierAide.Click = [this] { Mnu_DossierAide_Click(); };
    Mnu_ElemGestSSIAD.Click = [this] { Mnu_ElemGestSSIAD_Click(); };
    Mnu_ProtocoleTraitement.Click = [this] { Mnu_ProtocoleTraitement_Click(); };
    Mnu_Sommaire.Click = [this] { Mnu_Sommaire_Click(); };
}

// ---- Public members.

void Ctr_Zandorel::setTheClient(std::shared_ptr<void> client) {
    Mod.TheClient = std::move(client);
}

void Ctr_Zandorel::setTheDatabase(std::shared_ptr<mvdb::Database> database) {
    Mod.fichiers.TheDatabase = std::move(database);
}

void Ctr_Zandorel::setDroitsUtilisateur(std::shared_ptr<DroitsUtilisateur> droits) {
    Droits = std::move(droits);
    DroitsElement = Droits ? Droits->element("") : nullptr;
}

mvdb::Database& Ctr_Zandorel::database() const {
    if (!Mod.fichiers.TheDatabase) {
        throw base::Error(base::codes::kNotBound,
                          "La base de données n'a pas été donnée au contrôle Zandorel");
    }
    return *Mod.fichiers.TheDatabase;
}

void Ctr_Zandorel::Init() {
    // 1. Nothing may reach the control while it starts.
    host().setScreenMousePointer(toolkit::kPointerHourglass);
    UserControl.setEnabled(false);

    // 2.
    AppliquerDroitsUtilisateur();

    // 3. The host must have handed over the database before.
    database();
    data::OuvrirFichiersSSIAD(Mod.fichiers);

    // 4.
    CouleurFondControles(kGrisFond);

    // 5.
    EnregTravail = mvdb::DynamicRecord();

    // 6.
    DebordementDecalage = false;
    JourneeAffichee = false;
    HauteurEtq = 800;

    // 7. Kept as decimal texts: every user converts them at its use.
    CouleurAide1 = base::numberText(0xC0E0FF);
    CouleurAide2 = base::numberText(0x80C0FF);
    CouleurInfirmier = base::numberText(0xC0FFC0);
    CouleurSoignant = base::numberText(0xC0FFFF);
    CouleurMixte = base::numberText(0xFFC0C0);

    // 8. The purge is a long command of its own and restores the pointer and the control when done, so
    // the later steps run enabled: deliberate, the screen has always started so. An instance that only
    // computes figures leaves the file to the screen's own start.
    if (usage == Usage::Ecran) {
        data::CommandeLongue commande{[this] { debutCommandeLongue(); }, {}, [this] { finCommandeLongue(); }};
        data::ApurerFichierSSIADTOURNEE(Mod.fichiers, clock().today(), commande);
    }

    // 9.
    Cbo_Date.setVisible(false);
    Txt_Date.setText(clock().today().text());

    // 10. Cbo_Tournee is still empty: every tournée in force is listed.
    RequeteTournee();

    // 11.
    HeureDebutEchelle = 600.0 / 100;
    HeureFinEchelle = 1400.0 / 100;

    // 12.
    ChargerEtiquetteHeuresAide(HeureDebutEchelle, HeureFinEchelle);
    ChargerEtiquetteHeuresDetail(HeureDebutEchelle, HeureFinEchelle);

    // 13.
    Txt_CodeTournee.setFocus();
    host().DoEvents();

    // 14.
    host().setScreenMousePointer(toolkit::kPointerDefault);
    UserControl.setEnabled(true);
}

void Ctr_Zandorel::AppliquerDroitsUtilisateur() {
    if (!DroitsElement) {
        throw base::Error(base::codes::kNotBound,
                          "Les droits de l'utilisateur n'ont pas été donnés au contrôle Zandorel avant Init");
    }
    // Only validation depends on the rights, and only the exact level 2 grants it.
    if (DroitsElement->niveau() != 2) Cmd_Ok.setVisible(false);
}

void Ctr_Zandorel::CouleurFondControles(toolkit::Colour couleur) {
    for (toolkit::Control* c : UserControl.controls()) {
        std::string prefixe = base::UCase(base::Left(c->name(), 3));
        if (prefixe == "CBO" || prefixe == "TXT" || prefixe == "LST") continue;
        // Lines, menus and the scroll bar have no back colour: they are passed over.
        if (c->hasBackColor()) c->setBackColor(couleur);
    }
    UserControl.setBackColor(couleur);
}

std::string Ctr_Zandorel::NomUtilisateurSysteme() const {
    // The system asks for the name into a buffer of 20 characters, terminator included: a longer name
    // is cut to 19 characters, and the work keys built on it depend on that cut.
    constexpr std::int64_t kTampon = 20;
    std::string nom = nomSysteme();
    std::int64_t longueur = std::min<std::int64_t>(static_cast<std::int64_t>(base::Len(nom)) + 1, kTampon);
    return base::Left(nom, longueur - 1);
}

void Ctr_Zandorel::debutCommandeLongue() {
    host().setScreenMousePointer(toolkit::kPointerHourglass);
    UserControl.setEnabled(false);
}

void Ctr_Zandorel::finCommandeLongue() {
    // The control is enabled only after the yield, so that events queued meanwhile find it disabled.
    host().DoEvents();
    host().setScreenMousePointer(toolkit::kPointerDefault);
    UserControl.setEnabled(true);
}

void Ctr_Zandorel::UserControl_Terminate() {
    historique.vider();
    Tables.release(model::Pane::Aide);
    Tables.release(model::Pane::Detail);
    for (model::WorkTable* table :
         {&TabAnomalies, &TabTourneeEnregistree, &TabValidees, &TabProtocole, &edition.TabTempoDecale}) {
        table->release();
    }
    DroitsElement.reset();
    Droits.reset();
    data::FermerFichiersSSIAD(Mod.fichiers);
}

}  // namespace control
