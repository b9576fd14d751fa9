#pragma once

#include <memory>
#include <string>

#include "data/conversion.h"
#include "data/gateway.h"
#include "model/working_table.h"
#include "shell/droits.h"
#include "toolkit/control_array.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace base {
class Clock;
}
namespace toolkit {
class Host;
}

// The planning screen: the control Ctr_Zandorel. Its routines are spread over the folders of their
// subsystems (shell, display, editing, saving, printing, companions), which together are one library:
// they share this instance's state and call one another as the screen requires.
namespace control {

// What all routines and forms of one control share. It belongs to the instance: two controls, or two
// tests, never share it.
struct Mod_VarSsiadTournee {
    std::shared_ptr<void> TheClient;
    data::FichiersSSIAD fichiers;  // TheDatabase, the eight files and their record buffers
    bool FlagAffectationEnCours = false;
    std::string CodeTourneeAffectation;
};

class Ctr_Zandorel {
public:
    Ctr_Zandorel(toolkit::Host& host, const base::Clock& clock);
    ~Ctr_Zandorel();
    Ctr_Zandorel(const Ctr_Zandorel&) = delete;
    Ctr_Zandorel& operator=(const Ctr_Zandorel&) = delete;

    // ---- Public members, in the order the host uses them.
    void setTheClient(std::shared_ptr<void> client);
    void setTheDatabase(std::shared_ptr<mvdb::Database> database);
    void setDroitsUtilisateur(std::shared_ptr<DroitsUtilisateur> droits);
    void Init();
    // False until the user leaves the screen.
    bool W_Sortir = false;
    void UserControl_Terminate();

    toolkit::Host& host() const { return m_host; }
    const base::Clock& clock() const { return m_clock; }

    // ---- The screen (client area 11355 x 7110 twips). Declared parent before child.
    toolkit::Form UserControl;
    toolkit::Frame Frame3;
    toolkit::Frame Frm_MatinSoir;
    toolkit::Frame Label1;
    toolkit::Frame Frame1;
    toolkit::Frame Frame2;
    toolkit::Frame Frame4;
    toolkit::Label Etq_LibelleTournee;
    toolkit::TextBox Txt_CodeTournee;
    toolkit::ComboBox Cbo_Tournee;
    toolkit::CommandButton Cmd_Tournee;
    toolkit::Label Etq_Date;
    toolkit::TextBox Txt_Date;
    toolkit::ComboBox Cbo_Date;
    toolkit::OptionButton Opt_Matin;
    toolkit::OptionButton Opt_Soir;
    toolkit::CommandButton Cmd_Affichage;
    toolkit::Label Label10;
    toolkit::ControlArray<toolkit::Line> Line_HeureAide;
    toolkit::ControlArray<toolkit::Label> Etq_HeureAide;
    toolkit::Label Label9;
    toolkit::ControlArray<toolkit::Label> Etq_HeureDetail;
    toolkit::ControlArray<toolkit::Line> Line_HeureDetail;
    toolkit::Label Etq_Horaire;
    toolkit::ControlArray<toolkit::Label> Etq_Aide;
    toolkit::VScrollBar VScroll;
    toolkit::Label Etq_Infirmier;
    toolkit::ListBox Lst_Infirmier;
    toolkit::Label Etq_Soignant;
    toolkit::ListBox Lst_Soignant;
    toolkit::Label Etq_Mixte;
    toolkit::ListBox Lst_Mixte;
    toolkit::CommandButton Cmd_Enchainement;
    toolkit::CommandButton Cmd_Imprimer;
    toolkit::CommandButton Cmd_Ok;
    toolkit::CommandButton Cmd_Sortir;
    toolkit::Menu Mnu_MenuEtq;
    toolkit::Menu Mnu_ElemGestSSIAD;
    toolkit::Menu Mnu_ProtocoleTraitement;
    toolkit::Menu Mnu_DossierAide;
    toolkit::Menu Mnu_AffectationTournee;
    toolkit::Menu Mnu_Aide;
    toolkit::Menu Mnu_Sommaire;

    // ---- Module data and instance state.
    Mod_VarSsiadTournee Mod;
    data::ObjetConversion ObjetConversion;
    std::shared_ptr<DroitsUtilisateur> Droits;
    std::shared_ptr<ElementDroits> DroitsElement;
    mvdb::DynamicRecord EnregTravail;

    double HeureDebutEchelle = 6.00;
    double HeureFinEchelle = 14.00;
    int PasQuartHeure = 0;
    int HauteurEtq = 800;
    std::string CouleurAide1, CouleurAide2, CouleurInfirmier, CouleurSoignant, CouleurMixte;
    bool DebordementDecalage = false;
    bool JourneeAffichee = false;
    int DerniereValeurScroll = 0;
    int IndiceEtqMax = 0;
    int IndiceEtqCourante = 0;
    std::string PanneauSource;
    bool SansTournee = false;
    bool TourneeAnterieure = false;
    int NbIntervenantsTournee = 0;
    std::string DateSaisie;
    std::string DateAffichee;
    bool ValidationAnomalies = false;

    mvdb::DynamicRecord RequeteTournees;
    model::WorkTable TabTempoAide{"TabTempoAide"};
    model::WorkTable TabTempoDetail{"TabTempoDetail"};
    model::WorkTable TabAnomalies{"TabAnomalies"};
    model::WorkTable TabTourneeEnregistree{"TabTourneeEnregistree"};
    model::WorkTable TabValidees{"TabValidees"};
    model::WorkTable TabProtocole{"TabProtocole"};
    model::WorkTable TabTempoDecale{"TabTempoDecale"};

    // ---- Start-up and shutdown (shell).
    void AppliquerDroitsUtilisateur();
    void CouleurFondControles(toolkit::Colour couleur);
    std::string NomUtilisateurSysteme() const;
    // Hourglass and disabled control on entry of a long command; the reverse, after one yield, on exit.
    void debutCommandeLongue();
    void finCommandeLongue();

    // ---- Time scales and labels (model).
    void ChargerEtiquetteHeuresAide(double W_HeureDebut, double W_HeureFin);
    void ChargerEtiquetteHeuresDetail(double W_HeureDebut, double W_HeureFin);
    void Opt_Matin_Click();
    void Opt_Soir_Click();
    void VScroll_Change();
    void AlternerCouleursDetail();
    void AjoutEtqAide(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                      const std::string& CleProtocole, const std::string& TypeEtq);
    void CouleurAjoutEtqLst(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                            const std::string& CleProtocole, const std::string& TypeEtq);
    void TriCouleurEtq(int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                       const std::string& CleProtocole, const std::string& TypeEtq);
    // -- Labels made by the display, one per table row. Each loads Etq_Aide(IndiceEtqMax + 1) for
    // row i, writes the label's Top and index back into the row, and shows it. The aidé's name comes
    // from CIVILAIDE; when it cannot be read the label takes the name the buffer last held.
    toolkit::Label& creerEtiquetteAide(int i);
    // Row i of TabTempoDetail: the planned start at the end of TypeEtq moves to the label's LinkItem.
    toolkit::Label& creerEtiquetteDetail(int i);

    // ---- Selection of a tournée and a date (display).
    void RequeteTournee();

private:
    void buildInventory();
    void wireEvents();
    void buildTopBar();
    void buildScales();
    void buildPanesAndLegend();
    void buildButtonsAndMenus();
    void setTabOrder();
    // TheDatabase as the host handed it over; a failure that says so when it never did.
    mvdb::Database& database() const;

    toolkit::Host& m_host;
    const base::Clock& m_clock;
};

}  // namespace control
