#include "editing/edition.h"

// Taking the screen out of a shown tournée, and giving back to the waiting list the label that the
// assignment dialog sent there. Nothing is written to the database here.
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

// TypeEtq of the label going back. In pane "AIDE" the figure of a two-person label counts the free
// places: a tournée of two frees both, a tournée of one the place it held. A one-person label keeps its
// kind alone whatever the tournée; only a two-person label is ever sent to a tournée of two. Unlike the
// drop and the push, the removal asks no other tournée.
model::TypeEtq typeRendu(const model::TypeEtq& type, int nbIntervenantsTournee) {
    if (!type.pourDeuxPersonnes()) return type;
    return type.avecFigure(nbIntervenantsTournee == 2 ? '2' : '1');
}

// Lays out the label of each row of TabTempoAide from `premiere` to `derniere` by the rules of pane
// "AIDE", on the line its row number gives. A label whose aidé has no civil record keeps its caption and
// tooltip.
void placerEtiquettesAide(Ctr_Zandorel& c, std::int64_t premiere, std::int64_t derniere) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    for (std::int64_t i = premiere; i <= derniere; ++i) {
        const std::optional<int> index = c.Tables.labelOfRow(model::Pane::Aide, i);
        if (!index || !c.Etq_Aide.exists(*index)) continue;
        const std::string code = model::codeAideOf(c.TabTempoAide(i, model::col::CleProtocole));
        const bool civil = data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code);
        c.habillerEtiquetteAide(c.Etq_Aide(*index), i,
                                civil ? Ctr_Zandorel::Textes::Refaits : Ctr_Zandorel::Textes::Gardes);
    }
}

}  // namespace

void Edition::EnleveAffectationTournee(bool SansRetour) {
    Ctr_Zandorel& c = m_c;
    const Historique::Deplacement deplacement(c.historique);
    // 1. Emptying the code runs its change handler, still in the assignment branch, which finds no
    // tournée for an empty code and stops there.
    c.Txt_CodeTournee.setText("");
    c.Cbo_Tournee.setText("");
    for (toolkit::Control* actif :
         std::initializer_list<toolkit::Control*>{&c.Frm_MatinSoir, &c.Opt_Matin, &c.Opt_Soir, &c.Txt_Date,
                                                  &c.Cmd_Affichage, &c.Cbo_Tournee, &c.Txt_CodeTournee})
        actif->setEnabled(true);
    c.Cbo_Date.setVisible(false);
    c.SansTournee = true;

    // 2. The horizontal scale never left the option's hours.
    c.HeureDebutEchelle = c.Opt_Matin.value() ? 6.0 : 14.0;
    c.HeureFinEchelle = c.Opt_Matin.value() ? 14.0 : 22.0;
    c.ChargerEtiquetteHeuresDetail(c.HeureDebutEchelle, c.HeureFinEchelle);

    // 3, 4. A label not placed yet has nothing to give back.
    const std::int64_t d = SansRetour || !c.TabTempoDetail.exists()
                               ? 0
                               : c.Tables.findByLabel(model::Pane::Detail, c.IndiceEtqAffectee);
    const model::TypeEtq typeEtq = d > 0 ? c.Tables.typeEtq(model::Pane::Detail, d) : model::TypeEtq();
    if (d > 0 && !c.TabTempoAide.exists()) c.Tables.renew(model::Pane::Aide);

    // 5, 6. A half whose other place still waits joins it: nothing is added.
    std::int64_t a = 0;
    if (d > 0 && c.NbIntervenantsTournee != 2 && typeEtq.figure() == '1') {
        a = c.Tables.findByKey(model::Pane::Aide, base::Left(c.TabTempoDetail(d, model::col::CleProtocole),
                                                             data::protocole::kLongueurCle));
        if (a > 0) joindreMoities(a, c.IndiceEtqAffectee, RetourPar::Retrait);
    }

    // 7. The row goes back in start order. The three places it can take differ only by the lines laid
    // out anew: the new one alone at row 1 or at the end, every row when it comes between others.
    if (d > 0 && a == 0) {
        const bool vide = c.TabTempoAide->text().empty();
        const std::int64_t n = c.TabTempoAide->DCount();
        const std::int64_t ligne =
            c.Tables.sendBack(c.IndiceEtqAffectee, typeRendu(typeEtq, c.NbIntervenantsTournee));
        if (vide || ligne > n) {
            placerEtiquettesAide(c, ligne, ligne);
        } else {
            placerEtiquettesAide(c, 1, c.TabTempoAide->DCount());
        }
        c.VScroll.setMax(c.Tables.scrollMax());
        c.VScroll.setVisible(c.VScroll.max() != 0);
    }

    // 8. A placed label always stands at Left 760, wherever the user dropped it.
    std::vector<int> places;
    for (toolkit::Control* etiquette : c.Etq_Aide.elements()) {
        if (etiquette->index() == 0) continue;
        if (etiquette->left() == model::kLeftDetail) {
            places.push_back(etiquette->index());
        } else {
            etiquette->setEnabled(true);
        }
    }
    for (int index : places)
        c.Etq_Aide.Unload(index);

    // 9.
    c.Tables.renew(model::Pane::Detail);
    c.Cmd_Sortir.setCaption("Sortir");
    c.Mod.FlagAffectationEnCours = false;
}

}  // namespace control
