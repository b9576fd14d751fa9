#include "shell/ctr_zandorel.h"

// The display command. It turns the choice of a tournée and a date into labels, and is the one routine
// that makes items of Etq_Aide: the pane builders only fill the tables.
#include <cstdint>
#include <optional>

#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "toolkit/host.h"

namespace control {

namespace {

// The range of the last display goes with its labels. Emptied while no label is loaded, so that the
// Change a clamped value fires has nothing to move; a stale value would otherwise fire over the new rows
// once the range is set, and hide them all.
void viderDefilement(Ctr_Zandorel& c) {
    c.VScroll.setMax(0);
    c.DerniereValeurScroll = c.VScroll.value();
    c.VScroll.setVisible(false);
}

// The scroll range after the labels of pane "AIDE" are made, and their first layout. Writing Max fires no
// Change while the value stays put, and at the value 0 the paging shows the first row one line low: the
// bar is put on row 1, whose Change shows rows 1 to 7 where they were made and parks the others. When
// the value already is 1, the Change is run here instead, so the rows are laid out exactly once.
void reglerDefilement(Ctr_Zandorel& c) {
    c.VScroll.setMax(c.Tables.scrollMax());
    c.DerniereValeurScroll = c.VScroll.value();
    c.VScroll.setVisible(c.VScroll.max() != 0);
    if (c.VScroll.max() == 0) return;
    const int avant = c.VScroll.value();
    c.VScroll.setValue(1);
    if (c.VScroll.value() == avant) c.VScroll_Change();
}

void creerEtiquettesAide(Ctr_Zandorel& c) {
    for (std::int64_t i = 1; i <= c.TabTempoAide->DCount(); ++i)
        c.creerEtiquetteAide(static_cast<int>(i));
    reglerDefilement(c);
}

}  // namespace

bool Ctr_Zandorel::enregistrementSain(const std::optional<data::RecordFault>& defaut) {
    if (!defaut) return true;
    defautsLus.add(*defaut);
    return false;
}

void Ctr_Zandorel::ecarterInterventionsIncoherentes(mvdb::DynamicRecord& reponse) {
    for (std::int64_t i = reponse.DCount(); i >= 1; --i) {
        if (!enregistrementSain(data::checkPlanned(reponse(i, 1), reponse(i, 2)))) reponse.Delete(i);
    }
}

void Ctr_Zandorel::signalerDefauts() {
    if (defautsLus.empty()) return;
    const std::string message = defautsLus.message();
    defautsLus.clear();
    host().MsgBox(message, kStyleAvertissement, kTitreMessage);
}

void Ctr_Zandorel::Cmd_Affichage_Click() {
    // 1. What the last display met was told then.
    debutCommandeLongue();
    SansTournee = false;
    defautsLus.clear();

    // 2. While an assignment is pending, the waiting labels and their table stay as they are.
    if (!Mod.FlagAffectationEnCours) {
        if (Etq_Aide.Count() > 1) {
            Etq_Aide.unloadAll();
            IndiceEtqMax = 0;
        }
        Tables.renew(model::Pane::Aide);
        viderDefilement(*this);
    }

    // The panes are built from several queries: they must all see one state of the database, or a
    // tournée another planner validates meanwhile would show partly old and partly new.
    std::optional<mvdb::ConsistentRead> lecture;
    if (Mod.fichiers.TheDatabase) lecture.emplace(*Mod.fichiers.TheDatabase);

    // 3. The anomaly list belongs to the day on show.
    Tables.renew(model::Pane::Detail);
    TabAnomalies.renew();
    NbLignesAnomalies = 0;

    if (Txt_CodeTournee.text().empty()) {
        // 4. JourneeAffichee and the caption of Cmd_Sortir stay as they were.
        SansTournee = true;
        m_sauvegarde.oublierVersionAffichee();
        CadreAideSansTournee();
        // The labels read their aidés' records in the same moment; no moment is held while the user
        // reads a message.
        if (!TabTempoAide->text().empty()) {
            creerEtiquettesAide(*this);
            lecture.reset();
        } else {
            lecture.reset();
            host().MsgBox("Pas d'aidé à affecter pour cette date.", kStyleAvertissement, kTitreMessage);
        }
    } else {
        // 5.
        NbLignesDetail = 0;
        CadreDetailAvecTournee();

        // 6. No anomaly is looked for in a past day, nor during an assignment.
        for (std::int64_t i = 1; i <= TabTempoDetail->DCount(); ++i) {
            const toolkit::Label& etiquette = creerEtiquetteDetail(static_cast<int>(i));
            if (!Mod.FlagAffectationEnCours && !TourneeAnterieure) TesterAnomalie(i, etiquette);
        }

        // 7.
        AlternerCouleursDetail();

        // 8.
        if (!Mod.FlagAffectationEnCours) {
            if (!TabTempoAide->text().empty()) creerEtiquettesAide(*this);
            Cmd_Sortir.setCaption("Annuler");
            JourneeAffichee = true;
        }
    }

    // 9. The faults are told over a finished screen, once no read of the database is open.
    lecture.reset();
    finCommandeLongue();
    signalerDefauts();

    // 10. Over a finished screen, enabled.
    if (usage == Usage::Ecran && !Mod.FlagAffectationEnCours && !TourneeAnterieure &&
        !TabAnomalies->text().empty())
        AfficherAnomalies(true);
}

}  // namespace control
