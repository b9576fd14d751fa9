#pragma once

#include <cstdint>
#include <string>

#include "model/working_table.h"
#include "mvdb/dynamic_record.h"
#include "toolkit/control.h"

namespace control {

class Ctr_Zandorel;

// The editing of a tournée, in memory only: the drag, the drop and its refusals, the push and its dry
// run, the way back to the waiting list, chaining and the removal of an assignment. It keeps what a drag
// and a push need between two events; the labels, the label tables and the state the screen shows stay
// the control's, which forwards its events and routines here.
class Edition {
public:
    explicit Edition(Ctr_Zandorel& c) : m_c(c) {}
    Edition(const Edition&) = delete;
    Edition& operator=(const Edition&) = delete;

    // The control's routines of the same names.
    void Etq_Aide_MouseMove(int Index, int Button, int Shift, float X, float Y);
    void Etq_Aide_MouseDown(int Index, int Button, int Shift, float X, float Y);
    void Etq_Aide_DragOver(int Index, toolkit::Control& Source, float X, float Y, int State);
    void Etq_Aide_DragDrop(int Index, toolkit::Control& Source, float X, float Y);
    void Cmd_Enchainement_DragOver(toolkit::Control& Source, float X, float Y, int State);
    void SuivreHoraireEtiquette(float X, float Y);
    void DeposerEtiquette(float X, float Y);
    void RechercheTourneesIntervenant(const std::string& cle, bool& trouve);
    void TrierTabTempoDetail(int index, int position, bool Decale);
    void VerifEtqDecale(int index, int hauteur, int position);
    void DecalerEtiquettes(int index, int hauteur);
    void Cmd_Enchainement_Click();
    void EnleveAffectationTournee(bool SansRetour);

    // Where the pointer took the label, inside it, in twips.
    int DecalageSourisX = 0;
    int DecalageSourisY = 0;
    // The dry run's answer: would the push run a label off pane "DETAIL"?
    bool DecalageImpossible = false;
    // The dry run's copy of TabTempoDetail; it exists only while the dry run lasts.
    model::WorkTable TabTempoDecale{"TabTempoDecale"};
    // The other tournées of the day that hold the act of the label dropped or sent back.
    mvdb::DynamicRecord ReponseAutresTournees;

private:
    // The drop, the push and the removal of an assignment send a label back to pane "AIDE" each its own
    // way: whose way it is.
    enum class RetourPar { Depot, Decalage, Retrait };
    // Sends detail label `index` back to pane "AIDE": its row takes its place there by start time, or the
    // half of an act for two joins the half that waits and the label is unloaded. The row leaves
    // TabTempoDetail, and pane "DETAIL" is painted again.
    void renvoyerEnAide(int index, RetourPar par);
    // The half of an act for two that waits on row `a` of TabTempoAide takes both places again and shows
    // "0/2", worded the way `par` words it; the label `rendue` of the half that came back is unloaded.
    void joindreMoities(std::int64_t a, int rendue, RetourPar par);
    // Lays out the label of row `ligne` of TabTempoAide on that line; false when the aidé's record cannot
    // be read, which ends the layout of the rows after it.
    bool PlacerEtqAide(std::int64_t ligne, RetourPar par);
    // The scroll range once a drop changed the waiting list: the bar beyond seven rows.
    void reglerDefilementDepot();
    // Height in pane "DETAIL" of a label of that many minutes.
    int hauteurDetail(int minutes) const;

    Ctr_Zandorel& m_c;
    // Nesting of the push; only a duration below zero could make it endless.
    int m_profondeurDecalage = 0;
};

}  // namespace control
