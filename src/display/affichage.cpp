#include "display/affichage.h"

// The display command. It turns the choice of a tournée and a date into labels, and is the one routine
// that makes items of Etq_Aide: the pane builders only fill the tables.
#include <cstdint>
#include <optional>

#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
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

bool Affichage::enregistrementSain(const std::optional<data::RecordFault>& defaut) {
    Ctr_Zandorel& c = m_c;
    if (!defaut) return true;
    c.defautsLus.add(*defaut);
    return false;
}

void Affichage::ecarterInterventionsIncoherentes(mvdb::DynamicRecord& reponse) {
    for (std::int64_t i = reponse.DCount(); i >= 1; --i) {
        if (!enregistrementSain(data::checkPlanned(reponse(i, 1), reponse(i, 2)))) reponse.Delete(i);
    }
}

void Affichage::signalerDefauts() {
    Ctr_Zandorel& c = m_c;
    if (c.defautsLus.empty()) return;
    const std::string message = c.defautsLus.message();
    c.defautsLus.clear();
    c.host().MsgBox(message, kStyleAvertissement, kTitreMessage);
}

void Affichage::Cmd_Affichage_Click() {
    Ctr_Zandorel& c = m_c;
    const Historique::Oubli oubli(c.historique);
    // 1. What the last display met was told then.
    c.debutCommandeLongue();
    c.SansTournee = false;
    c.defautsLus.clear();

    // 2. While an assignment is pending, the waiting labels and their table stay as they are.
    if (!c.Mod.FlagAffectationEnCours) {
        if (c.Etq_Aide.Count() > 1) {
            c.Etq_Aide.unloadAll();
            c.IndiceEtqMax = 0;
        }
        c.Tables.renew(model::Pane::Aide);
        viderDefilement(c);
    }

    // The panes are built from several queries: they must all see one state of the database, or a
    // tournée another planner validates meanwhile would show partly old and partly new.
    std::optional<mvdb::ConsistentRead> lecture;
    if (c.Mod.fichiers.TheDatabase) lecture.emplace(*c.Mod.fichiers.TheDatabase);

    // 3. The anomaly list belongs to the day on show.
    c.Tables.renew(model::Pane::Detail);
    c.TabAnomalies.renew();
    c.NbLignesAnomalies = 0;

    if (c.Txt_CodeTournee.text().empty()) {
        // 4. JourneeAffichee and the caption of Cmd_Sortir stay as they were.
        c.SansTournee = true;
        c.m_sauvegarde.oublierVersionAffichee();
        CadreAideSansTournee();
        // The labels read their aidés' records in the same moment; no moment is held while the user
        // reads a message.
        if (!c.TabTempoAide->text().empty()) {
            creerEtiquettesAide(c);
            lecture.reset();
        } else {
            lecture.reset();
            c.host().MsgBox("Pas d'aidé à affecter pour cette date.", kStyleAvertissement, kTitreMessage);
        }
    } else {
        // 5.
        NbLignesDetail = 0;
        CadreDetailAvecTournee();

        // 6. No anomaly is looked for in a past day, nor during an assignment.
        for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i) {
            const toolkit::Label& etiquette = c.creerEtiquetteDetail(static_cast<int>(i));
            if (!c.Mod.FlagAffectationEnCours && !c.TourneeAnterieure) c.TesterAnomalie(i, etiquette);
        }

        // 7.
        c.AlternerCouleursDetail();

        // 8.
        if (!c.Mod.FlagAffectationEnCours) {
            if (!c.TabTempoAide->text().empty()) creerEtiquettesAide(c);
            c.Cmd_Sortir.setCaption("Annuler");
            c.JourneeAffichee = true;
        }
    }

    // 9. The faults are told over a finished screen, once no read of the database is open.
    lecture.reset();
    c.finCommandeLongue();
    signalerDefauts();

    // 10. Over a finished screen, enabled.
    if (c.usage == Ctr_Zandorel::Usage::Ecran && !c.Mod.FlagAffectationEnCours && !c.TourneeAnterieure &&
        !c.TabAnomalies->text().empty())
        c.AfficherAnomalies(true);
}

}  // namespace control
