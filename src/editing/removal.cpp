#include "shell/ctr_zandorel.h"

// Taking the screen out of a shown tournée, and giving back to the waiting list the label that the
// assignment dialog sent there. Nothing is written to the database here.
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"

namespace control {
namespace {

// Rows that the pane of aidés shows at once; more need the scroll bar.
constexpr std::int64_t kLignesVisibles = 7;
constexpr std::int64_t kLongueurCleProtocole = data::protocole::kLongueurCle;

int entier(const std::string& texte) {
    return static_cast<int>(base::roundHalfEven(base::toNumber(texte)));
}

// TypeEtq of the label going back. In pane "AIDE" the figure of a two-person label counts the free
// places: a tournée of two frees both, a tournée of one the place it held. A one-person label keeps its
// kind alone whatever the tournée; only a two-person label is ever sent to a tournée of two.
std::string typeRendu(const std::string& typeEtq, int nbIntervenantsTournee) {
    if (base::Len(typeEtq) <= 1) return typeEtq;
    if (nbIntervenantsTournee == 2) return base::Left(typeEtq, 2) + "2";
    return base::Left(typeEtq, 2) + "1";
}

// The look of pane "AIDE" for row i, with the name the civil record buffer holds.
model::LabelLook lookAide(const Ctr_Zandorel& c, std::int64_t i) {
    const data::FichiersSSIAD& f = c.Mod.fichiers;
    return model::lookAide(*c.TabTempoAide, i, f.EnregCIVILAIDE(data::civilaide::kNom),
                           f.EnregCIVILAIDE(data::civilaide::kPrenom),
                           {model::HeureVersCentiemes(c.HeureDebutEchelle), c.PasQuartHeure}, c.HauteurEtq,
                           {c.CouleurInfirmier, c.CouleurSoignant, c.CouleurMixte});
}

// Lays out the label of each row of TabTempoAide from `premiere` to `derniere` by the rules of pane
// "AIDE", on the line its row number gives, and writes the new Top back to the row. A label whose aidé
// has no civil record keeps its caption and tooltip.
void placerEtiquettesAide(Ctr_Zandorel& c, std::int64_t premiere, std::int64_t derniere) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    for (std::int64_t i = premiere; i <= derniere; ++i) {
        const int index = entier(c.TabTempoAide(i, model::col::NumEtq));
        if (index < 1 || !c.Etq_Aide.exists(index)) continue;
        toolkit::Label& etiquette = c.Etq_Aide(index);
        const std::string code = model::codeAideOf(c.TabTempoAide(i, model::col::CleProtocole));
        const bool civil = data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code);
        model::LabelLook look = lookAide(c, i);
        if (!civil) {
            look.caption = etiquette.caption();
            look.toolTip = etiquette.toolTipText();
        }
        model::applyLook(etiquette, look);
        c.TabTempoAide->set(i, model::col::TopEtq, base::numberText(etiquette.top()));
    }
}

// Row a of TabTempoAide, the half that still waits, becomes the label of both places again; the label
// that was assigned goes.
void joindreMoities(Ctr_Zandorel& c, std::int64_t a) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    c.TabTempoAide->set(a, model::col::TypeEtq, base::Left(c.TabTempoAide(a, model::col::TypeEtq), 2) + "2");
    const int index = entier(c.TabTempoAide(a, model::col::NumEtq));
    const std::string code = model::codeAideOf(c.TabTempoAide(a, model::col::CleProtocole));
    if (c.Etq_Aide.exists(index) && data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code)) {
        const model::LabelLook look = lookAide(c, a);
        c.Etq_Aide(index).setCaption(look.caption);
        c.Etq_Aide(index).setToolTipText(look.toolTip);
    }
    if (c.Etq_Aide.exists(c.IndiceEtqAffectee)) c.Etq_Aide.Unload(c.IndiceEtqAffectee);
}

}  // namespace

void Ctr_Zandorel::EnleveAffectationTournee(bool SansRetour) {
    const Historique::Deplacement deplacement(historique);
    // 1. Emptying the code runs its change handler, still in the assignment branch, which finds no
    // tournée for an empty code and stops there.
    Txt_CodeTournee.setText("");
    Cbo_Tournee.setText("");
    for (toolkit::Control* actif :
         std::initializer_list<toolkit::Control*>{&Frm_MatinSoir, &Opt_Matin, &Opt_Soir, &Txt_Date,
                                                  &Cmd_Affichage, &Cbo_Tournee, &Txt_CodeTournee})
        actif->setEnabled(true);
    Cbo_Date.setVisible(false);
    SansTournee = true;

    // 2. The horizontal scale never left the option's hours.
    HeureDebutEchelle = Opt_Matin.value() ? 6.0 : 14.0;
    HeureFinEchelle = Opt_Matin.value() ? 14.0 : 22.0;
    ChargerEtiquetteHeuresDetail(HeureDebutEchelle, HeureFinEchelle);

    // 3, 4. A label not placed yet has nothing to give back.
    const std::int64_t d =
        SansRetour || !TabTempoDetail.exists()
            ? 0
            : chercherLigne(TabTempoDetail, model::col::NumEtq, base::numberText(IndiceEtqAffectee));
    const std::string typeEtq = d > 0 ? TabTempoDetail(d, model::col::TypeEtq) : "";
    if (d > 0 && !TabTempoAide.exists()) TabTempoAide.renew();

    // 5, 6. A half whose other place still waits joins it: nothing is added.
    std::int64_t a = 0;
    if (d > 0 && NbIntervenantsTournee != 2 && base::Len(typeEtq) > 1 && base::Right(typeEtq, 1) == "1") {
        a = chercherLigne(TabTempoAide, model::col::CleProtocole,
                          base::Left(TabTempoDetail(d, model::col::CleProtocole), kLongueurCleProtocole));
        if (a > 0) joindreMoities(*this, a);
    }

    // 7. The row goes back in start order. The three places it can take differ only by the lines laid
    // out anew: the new one alone at row 1 or at the end, every row when it comes between others.
    if (d > 0 && a == 0) {
        const bool vide = TabTempoAide->text().empty();
        const std::int64_t n = TabTempoAide->DCount();
        const int ligne = InsererDansTabTempoAide(
            entier(TabTempoDetail(d, model::col::NumEtq)), entier(TabTempoDetail(d, model::col::HeureDebut)),
            entier(TabTempoDetail(d, model::col::HeureFin)), entier(TabTempoDetail(d, model::col::DureeMn)),
            entier(TabTempoDetail(d, model::col::TopEtq)), TabTempoDetail(d, model::col::CleProtocole),
            typeRendu(typeEtq, NbIntervenantsTournee));
        if (vide || ligne > n) {
            placerEtiquettesAide(*this, ligne, ligne);
        } else {
            placerEtiquettesAide(*this, 1, TabTempoAide->DCount());
        }
        const std::int64_t lignes = TabTempoAide->DCount();
        VScroll.setMax(lignes > kLignesVisibles ? static_cast<int>(lignes) : 0);
        VScroll.setVisible(VScroll.max() != 0);
    }

    // 8. A placed label always stands at Left 760, wherever the user dropped it.
    std::vector<int> places;
    for (toolkit::Control* etiquette : Etq_Aide.elements()) {
        if (etiquette->index() == 0) continue;
        if (etiquette->left() == model::kLeftDetail) {
            places.push_back(etiquette->index());
        } else {
            etiquette->setEnabled(true);
        }
    }
    for (int index : places)
        Etq_Aide.Unload(index);

    // 9.
    TabTempoDetail.renew();
    Cmd_Sortir.setCaption("Sortir");
    Mod.FlagAffectationEnCours = false;
}

}  // namespace control
