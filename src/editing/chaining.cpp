#include <cstdint>
#include <optional>

#include "base/text.h"
#include "editing/edition.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

// Chaining: the labels of the tournée brought up one after the other, in memory only; the database is
// written at validation.
namespace control {

namespace {

// The label of row i of TabTempoDetail, through NumEtq; nullptr when none is loaded for it.
toolkit::Label* etiquetteDeLigne(Ctr_Zandorel& c, std::int64_t i) {
    const std::optional<int> index = c.Tables.labelOfRow(model::Pane::Detail, i);
    if (!index || !c.Etq_Aide.exists(*index)) return nullptr;
    return &c.Etq_Aide(*index);
}

double cellule(const Ctr_Zandorel& c, std::int64_t i, int colonne) {
    return base::toNumber(c.TabTempoDetail->view(i, colonne));
}

}  // namespace

void Edition::Cmd_Enchainement_Click() {
    Ctr_Zandorel& c = m_c;
    const Historique::Deplacement deplacement(c.historique);
    // 1.
    if (c.TourneeAnterieure) {
        c.host().MsgBox("Enchaînement impossible : date de la tournée antérieure à la date du jour.",
                        kStyleAvertissement, kTitreMessage);
        return;
    }
    // Before any display there is no tournée to chain, as with an empty one.
    if (!c.TabTempoDetail.exists()) return;

    // 2. Top to bottom, so that a label just brought up hands its new end on to the next one.
    const std::int64_t n = c.TabTempoDetail->DCount();
    for (std::int64_t i = 1; i <= n; ++i) {
        // 2.1
        if (c.TabTempoDetail(i + 1).empty()) continue;

        // 2.2 The end of label i from the table, in twips, not rounded.
        const double dureeMn = cellule(c, i, model::col::DureeMn);
        const double fin = cellule(c, i, model::col::TopEtq) + (c.PasQuartHeure * 4.0 * dureeMn) / 60;

        // 2.3 Labels that touch or overlap stay: chaining only closes gaps.
        if (fin >= cellule(c, i + 1, model::col::TopEtq)) continue;

        // 2.4
        c.Tables.setTopEtq(model::Pane::Detail, i + 1, fin);
        toolkit::Label* suivante = etiquetteDeLigne(c, i + 1);
        if (!suivante) continue;  // a row shown by no label has no place or start to change
        suivante->setTop(fin);

        // 2.5 The start follows in hundredths of an hour: minutes times 10 / 6, the half added inside
        // Int. Deliberately not the rounding of the shifting engine, whose push rounds otherwise.
        const toolkit::Label* precedente = etiquetteDeLigne(c, i);
        if (!precedente) continue;
        const std::int64_t debut = base::roundHalfEven(base::toNumber(precedente->linkItem()));
        const double suite = static_cast<double>(debut) + base::Int(dureeMn * 10 / 6 + 0.5);
        suivante->setLinkItem(base::Left(base::numberText(suite), 4));
    }
}

}  // namespace control
