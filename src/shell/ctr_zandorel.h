#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "data/conversion.h"
#include "data/gateway.h"
#include "data/record_checks.h"
#include "display/affichage.h"
#include "display/selection.h"
#include "editing/edition.h"
#include "editing/historique.h"
#include "model/label_tables.h"
#include "model/working_table.h"
#include "printing/impression.h"
#include "saving/sauvegarde.h"
#include "shell/droits.h"
#include "toolkit/control_array.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"
#include "toolkit/host.h"
#include "toolkit/printer.h"

namespace base {
class Clock;
}
namespace toolkit {
class Host;
}

// The planning screen: the control Ctr_Zandorel. Its routines are spread over the folders of their
// subsystems (shell, display, editing, saving, printing, companions), which together are one library:
// they call one another as the screen requires. A subsystem that has a header of its own in its folder
// keeps its state there, in an object the control owns and forwards its events to; the others share
// this instance's state.
namespace control {

// The title of every message box of the screen.
inline constexpr const char* kTitreMessage = "Message KORVELINE";
// A warning the user acknowledges: the exclamation icon and the one button OK.
inline constexpr int kStyleAvertissement = toolkit::msgbox::kOkOnly | toolkit::msgbox::kExclamation;

// What all routines and forms of one control share. It belongs to the instance: two controls, or two
// tests, never share it.
struct Mod_VarSsiadTournee {
    std::shared_ptr<void> TheClient;
    data::FichiersSSIAD fichiers;  // TheDatabase, the eight files and their record buffers
    bool FlagAffectationEnCours = false;
    std::string CodeTourneeAffectation;
};

// The screens that set up and keep the service's own data, one per kind of record.
enum class EcranServiceType { Aides, Accords, Protocoles, Soins, ElementsGestion, Tournees };

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
    // TheDatabase as the host handed it over; a failure that says so when it never did.
    mvdb::Database& database() const;

    // ---- The screen (client area 11355 x 7110 twips). Declared parent before child.
    toolkit::Form UserControl;
    // The background frames first: what is made later is drawn over what was made before.
    toolkit::Frame Frame2;
    toolkit::Frame Frame4;
    toolkit::Frame Frame3;
    toolkit::Frame Frm_MatinSoir;
    toolkit::Frame Label1;
    toolkit::Frame Frame1;
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
    bool JourneeAffichee = false;
    int DerniereValeurScroll = 0;
    int IndiceEtqMax = 0;
    int IndiceEtqCourante = 0;
    // The pane of the label taken last; its text is what the drag code keeps.
    model::Pane PanneauSource = model::Pane::None;
    bool SansTournee = false;
    bool TourneeAnterieure = false;
    int NbIntervenantsTournee = 0;
    std::string DateAffichee;
    bool ValidationAnomalies = false;
    // What the instance serves. A private instance that only computes figures (the week overview) starts
    // without the purge, builds, for a tournée, the detail pane and its anomalies without the waiting
    // list beside it, and opens no anomaly list: these are for a planner at the screen.
    enum class Usage { Ecran, Chiffres };
    Usage usage = Usage::Ecran;

    // The two label tables. Every change to them goes through their owner; the names read them.
    model::LabelTables Tables;
    const model::WorkTable& TabTempoAide = Tables.aide();
    const model::WorkTable& TabTempoDetail = Tables.detail();
    model::WorkTable TabAnomalies{"TabAnomalies"};
    model::WorkTable TabTourneeEnregistree{"TabTourneeEnregistree"};
    model::WorkTable TabValidees{"TabValidees"};
    model::WorkTable TabProtocole{"TabProtocole"};

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
    // Lays out `label` as row i of TabTempoAide by the display's rules, with the aidé's name the civil
    // record buffer holds, and writes its Top back to the row. With Textes::Gardes its caption and tooltip
    // stay as they are (a removal whose aidé has no civil record).
    enum class Textes { Refaits, Gardes };
    void habillerEtiquetteAide(toolkit::Label& label, std::int64_t i, Textes textes);
    // Where the scales start and how long a quarter is, as the labels' geometry takes them.
    model::ScaleRef echelleRef() const;
    // The three kind colours of waiting labels.
    model::KindColours couleursNatures() const;

    // ---- Selection of a tournée and a date (display/selection.h): the events of its boxes. RequeteTournee
    // is also how start-up and the tournée characteristics screen fill the list of tournées.
    void RequeteTournee() { m_selection.RequeteTournee(); }
    void Txt_CodeTournee_Change() { m_selection.Txt_CodeTournee_Change(); }
    void Txt_CodeTournee_KeyPress(int& KeyAscii) { m_selection.Txt_CodeTournee_KeyPress(KeyAscii); }
    void Txt_CodeTournee_LostFocus() { m_selection.Txt_CodeTournee_LostFocus(); }
    void Cbo_Tournee_Click() { m_selection.Cbo_Tournee_Click(); }
    void Cbo_Tournee_KeyPress(int& KeyAscii) { m_selection.Cbo_Tournee_KeyPress(KeyAscii); }
    void Cbo_Tournee_KeyDown(int& KeyCode, int Shift) { m_selection.Cbo_Tournee_KeyDown(KeyCode, Shift); }
    void Cbo_Tournee_LostFocus() { m_selection.Cbo_Tournee_LostFocus(); }
    void Cbo_Date_Change() { m_selection.Cbo_Date_Change(); }
    void Cbo_Date_Click() { m_selection.Cbo_Date_Click(); }
    void Cbo_Date_KeyPress(int& KeyAscii) { m_selection.Cbo_Date_KeyPress(KeyAscii); }
    void Cbo_Date_LostFocus() { m_selection.Cbo_Date_LostFocus(); }
    void Txt_Date_Change() { m_selection.Txt_Date_Change(); }
    void Txt_Date_KeyPress(int& KeyAscii) { m_selection.Txt_Date_KeyPress(KeyAscii); }
    void Txt_Date_LostFocus() { m_selection.Txt_Date_LostFocus(); }
    Selection& selection() { return m_selection; }

    // Unloads every label but the model, and empties and hides the scroll range.
    void DechargerEtiquettes();

    // ---- Display of a day (display/).
    void Cmd_Affichage_Click() { affichage.Cmd_Affichage_Click(); }
    void RechercheProtocole(const std::string& CodeAide) { affichage.RechercheProtocole(CodeAide); }
    void RechercheInterventionsValidees(const std::string& CodeAide, bool DemiJournee, int Portee) {
        affichage.RechercheInterventionsValidees(CodeAide, DemiJournee, Portee);
    }
    void CadreAideSansTournee() { affichage.CadreAideSansTournee(); }
    void CadreAideAvecTournee() { affichage.CadreAideAvecTournee(); }
    void CadreDetailAvecTournee() { affichage.CadreDetailAvecTournee(); }
    // Counts the soins of a protocole into the infirmier's acts and the others, adding to the counts given:
    // callers carry them from one record to the next on purpose. A soin missing from SSIADSOINS counts
    // for neither.
    void CompterActes(const mvdb::DynamicRecord& protocole, int& actesInfirmiers, int& autresActes) {
        affichage.CompterActes(protocole, actesInfirmiers, autresActes);
    }
    void CadreDetail(const std::string& CodeAide, const std::string& CleTournee,
                     const std::string& CleElement) {
        affichage.CadreDetail(CodeAide, CleTournee, CleElement);
    }

    int NbLignesAnomalies = 0;
    // The display's own state: the replies it reads a day from.
    Affichage affichage{*this};

    // Columns of TabProtocole: one row per intervention the aidé needs in the half-day shown.
    struct ColProtocole {
        static constexpr int CleProtocole = 1, HeureDebut = 2, HeureFin = 3, TypeEtq = 4, DureeMn = 5,
                             NbIntervenantsProtocole = 6, NbPlaces = 7;
    };
    // Columns of TabValidees: one row per SSIADTOURNEE record of the aidé already planned.
    struct ColValidees {
        static constexpr int HeureValidee = 1, HeureFinValidee = 2, CleProtocole = 3, TypeTournee = 4,
                             NbIntervenantsValides = 5;
    };

    // ---- Editing of a tournée (editing/), forwarded to the editing's own object.
    // Drag tracking.
    void Etq_Aide_MouseMove(int Index, int Button, int Shift, float X, float Y) {
        edition.Etq_Aide_MouseMove(Index, Button, Shift, X, Y);
    }
    void Etq_Aide_MouseDown(int Index, int Button, int Shift, float X, float Y) {
        edition.Etq_Aide_MouseDown(Index, Button, Shift, X, Y);
    }
    void Etq_Aide_DragOver(int Index, toolkit::Control& Source, float X, float Y, int State) {
        edition.Etq_Aide_DragOver(Index, Source, X, Y, State);
    }
    void Etq_Aide_DragDrop(int Index, toolkit::Control& Source, float X, float Y) {
        edition.Etq_Aide_DragDrop(Index, Source, X, Y);
    }
    void UserControl_DragOver(toolkit::Control& Source, float X, float Y, int State);
    void UserControl_DragDrop(toolkit::Control& Source, float X, float Y);
    void UserControl_MouseDown(int Button, int Shift, float X, float Y);
    void Cmd_Enchainement_DragOver(toolkit::Control& Source, float X, float Y, int State) {
        edition.Cmd_Enchainement_DragOver(Source, X, Y, State);
    }
    // Shows the time under a dragged label; runs at every mouse move and allocates nothing.
    void SuivreHoraireEtiquette(float X, float Y) { edition.SuivreHoraireEtiquette(X, Y); }

    // Drop rules.
    void DeposerEtiquette(float X, float Y) { edition.DeposerEtiquette(X, Y); }
    void RechercheTourneesIntervenant(const std::string& cle, bool& trouve) {
        edition.RechercheTourneesIntervenant(cle, trouve);
    }
    // A time in hundredths as HHhMM, all of it through CentiemesVersHeure (899 reads "09h00"), as the
    // drop writes it; the display cuts the hour and the minutes apart.
    static std::string heureDepot(double centiemes);

    // Shifting engine and chaining.
    void TrierTabTempoDetail(int index, int position, bool Decale) {
        edition.TrierTabTempoDetail(index, position, Decale);
    }
    void VerifEtqDecale(int index, int hauteur, int position) {
        edition.VerifEtqDecale(index, hauteur, position);
    }
    void DecalerEtiquettes(int index, int hauteur) { edition.DecalerEtiquettes(index, hauteur); }
    void Cmd_Enchainement_Click() { edition.Cmd_Enchainement_Click(); }
    // The push ran a label off pane "DETAIL".
    bool DebordementDecalage = false;
    // The editing's own state: what a drag and a push keep between two events.
    Edition edition{*this};

    // Removal of an assignment (editing/removal.cpp) and the assignment dialog
    // (editing/frm_affectation_tournee.cpp).
    void EnleveAffectationTournee(bool SansRetour) { edition.EnleveAffectationTournee(SansRetour); }
    void Mnu_AffectationTournee_Click();
    int NbTourneesAffectation = 0;
    int IndiceEtqAffectee = 0;

    // Undo and redo of the moves (editing/historique.cpp). Each is refused, without a word, while a drag
    // or a long command is under way, and when there is nothing to undo or redo.
    void Annuler();
    void Retablir();
    bool peutAnnuler() const;
    bool peutRetablir() const;
    Historique historique{*this};

private:
    bool occupe() const;

public:
    // ---- Records that other programs wrote badly (display/affichage.cpp).
    // True when there is no fault; a fault joins those that the display or print in progress tells once,
    // at its end, and its record gives no label and no printed line.
    bool enregistrementSain(const std::optional<data::RecordFault>& defaut) {
        return affichage.enregistrementSain(defaut);
    }
    // Row i of a reply on SSIADACCORDS listed "0 1 2 3", its days checked as enregistrementSain does
    // (display/cadre_aide.cpp, beside the reply's columns).
    bool accordSain(const mvdb::DynamicRecord& accords, std::int64_t i) {
        return affichage.accordSain(accords, i);
    }
    // The aidé's absences, checked likewise before the waiting pane asks what he needs: absences that
    // make no sense cannot tell whether he is there. The tournée's own records of him are shown still,
    // so that a validation keeps them.
    bool absencesSaines(const std::string& CodeAide) { return affichage.absencesSaines(CodeAide); }
    // Takes out of a reply listed with "0 1 2" (key, planned end, ...) the planned interventions that
    // make no sense, noting each; the other rows keep their order.
    void ecarterInterventionsIncoherentes(mvdb::DynamicRecord& reponse) {
        affichage.ecarterInterventionsIncoherentes(reponse);
    }
    // The same for the planned interventions whose protocole or accord makes no sense: the screen shows
    // none of them, and nor does the paper.
    void ecarterInterventionsDependantes(mvdb::DynamicRecord& reponse) {
        affichage.ecarterInterventionsDependantes(reponse);
    }
    // One box that names every fault noted since the last one, when there is any; then forgets them.
    void signalerDefauts() { affichage.signalerDefauts(); }
    data::FaultList defautsLus;
    // ---- Saving (saving/).
    // Validates the tournée on show. Whether it went through is ValidationAnomalies: false only when the
    // anomaly list was answered Cancel, the database refused the change (the user is told), or the user
    // kept the version another workstation saved since the display (the day is then shown as stored);
    // on the early exits with nothing to save it keeps its former value.
    void Cmd_Ok_Click() { m_sauvegarde.Cmd_Ok_Click(); }
    bool commitReussi() const { return ValidationAnomalies; }
    // Adds a row to TabAnomalies when the planned time of detail row `ligne`, shown by `etiquette`, leaves
    // the window of its protocole (both bounds allowed). Returns whether it did.
    bool TesterAnomalie(std::int64_t ligne, const toolkit::Control& etiquette) {
        return m_sauvegarde.TesterAnomalie(ligne, etiquette);
    }
    // Clears the screen when there is nothing to save: labels, tables, the code.
    void ReinitialiserEcran() { m_sauvegarde.ReinitialiserEcran(); }
    // The button that leaves the screen, or cancels the tournée on show.
    void Cmd_Sortir_Click() { m_sauvegarde.Cmd_Sortir_Click(); }
    // Shows the anomaly list modally; in its asking use the answer comes back in ValidationAnomalies.
    void AfficherAnomalies(bool affichage);

    // ---- Printing (printing/impression.h).
    // The printers of the machine as the host gives them, which the printer choice shows. A new list
    // forgets the current printer. Until one is given, any print fails with a message.
    void setPrinters(std::shared_ptr<toolkit::Printers> printers) {
        m_impression.setPrinters(printers);
        ObjetConversion.setImprimantes(m_host, std::move(printers));
    }
    // The print of the tournée of Txt_CodeTournee or, with no code, of every tournée of the date.
    void Cmd_Imprimer_Click() { m_impression.imprimer(); }
    Impression& impression() { return m_impression; }

private:
    // ---- Companion screens (companions/).
    // The tournée characteristics; when the code shown named no tournée, the list is rebuilt afterwards.
    void Cmd_Tournee_Click();
    // The aidé of the label pressed last: its file, its management elements, its protocoles on the day
    // shown.
    void Mnu_DossierAide_Click();
    void Mnu_ElemGestSSIAD_Click();
    void Mnu_ProtocoleTraitement_Click();
    // The planners' help page.
    void Mnu_Sommaire_Click();

public:
    // One of the service screens, modally, on no record chosen. After the tournées' screen the list of
    // tournées is made again when no tournée was shown, as after Cmd_Tournee.
    void ouvrirEcranService(EcranServiceType type);

private:
    // The first five characters of the Tag of the label pressed last: the aidé's code.
    std::string codeAideEtiquetteCourante() const;

private:
    void buildInventory();
    void wireEvents();
    void buildTopBar();
    void buildScales();
    void buildPanesAndLegend();
    void buildButtonsAndMenus();
    void setTabOrder();
    // The display, the editing and the saving reach the control's private routines.
    friend class Affichage;
    friend class Edition;
    friend class Sauvegarde;
    Sauvegarde m_sauvegarde{*this};

    toolkit::Host& m_host;
    const base::Clock& m_clock;
    Selection m_selection{*this};
    Impression m_impression{*this};
};

}  // namespace control
