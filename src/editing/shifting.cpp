#include "editing/edition.h"

// The push of pane "DETAIL": a dropped label does not lie on another, so the labels it meets go down in
// turn, and one that would run off the bottom goes back to the waiting list. A dry run on a copy of the
// table tells beforehand whether anything would run off; the real run moves the labels. The way back
// to pane "AIDE" that both the drop and the push take lives here too.
#include <cstdint>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"

namespace control {

namespace {

// Counts the nesting of the push. With durations of zero or more each level moves a label strictly
// lower and no label twice, so the nesting stays within the number of labels; beyond it only a duration
// below zero can have led, and the push stops with an error rather than run on.
class Imbrication {
public:
    Imbrication(int& profondeur, int limite) : m_profondeur(profondeur) {
        if (m_profondeur >= limite)
            throw base::Error(base::codes::kBadData,
                              "Décalage des étiquettes sans fin : une durée est négative");
        ++m_profondeur;
    }
    ~Imbrication() { --m_profondeur; }
    Imbrication(const Imbrication&) = delete;
    Imbrication& operator=(const Imbrication&) = delete;

private:
    int& m_profondeur;
};

}  // namespace

void Edition::TrierTabTempoDetail(int index, int position, bool Decale) {
    Ctr_Zandorel& c = m_c;
    // 1. Until the dry run moves anything, TabTempoDetail holds the same rows as its copy.
    const bool depuisAide = !Decale && c.PanneauSource != model::Pane::Detail;
    const model::WorkTable& source = Decale ? TabTempoDecale : depuisAide ? c.TabTempoAide : c.TabTempoDetail;
    const std::int64_t r = model::findRow(source, model::col::NumEtq, base::numberText(index));
    // 2.
    model::LabelRow ligne = model::readRow(source, r);
    // 3.
    if (!depuisAide) TabTempoDecale->Delete(r);
    // 4. and 5. A tie goes to the newcomer here, where the waiting list puts it behind.
    ligne.TopEtq = position;
    model::insertLabelRow(*TabTempoDecale, model::rowForTopEtq(*TabTempoDecale, position), ligne);
}

void Edition::VerifEtqDecale(int index, int hauteur, int position) {
    Ctr_Zandorel& c = m_c;
    const Imbrication niveau(m_profondeurDecalage, c.Etq_Aide.Count());
    // Rows move while the loop runs, so some are looked at twice and some not at all: deliberate, the dry
    // run only answers whether anything runs off.
    const std::int64_t n = TabTempoDecale->DCount();
    for (std::int64_t i = 1; i <= n; ++i) {
        const int l = base::toInteger(TabTempoDecale(i, model::col::NumEtq));
        if (l == index || !c.Etq_Aide.exists(l) || c.Etq_Aide(l).left() != model::kLeftDetail) continue;
        const double haut = base::toNumber(TabTempoDecale(i, model::col::TopEtq));
        const int h = hauteurDetail(model::dureeMnFromTag(c.Etq_Aide(l).tag()));
        // Strict above, loose below, deliberately unlike the real run: a label that starts exactly where
        // the moved one ends counts here, so the dry run may refuse what the push would have done.
        if (!(position < haut + h && haut <= hauteur + position)) continue;
        if (hauteur + position + h >= model::kBasDecalage) {
            DecalageImpossible = true;
            continue;
        }
        TrierTabTempoDetail(l, hauteur + position, true);
        VerifEtqDecale(l, h, hauteur + position);
    }
}

void Edition::DecalerEtiquettes(int index, int hauteur) {
    Ctr_Zandorel& c = m_c;
    const Imbrication niveau(m_profondeurDecalage, c.Etq_Aide.Count());
    const int minutes = model::dureeMnFromTag(c.Etq_Aide(index).tag());
    // In the order of the indexes; a label that an inner level sent back and unloaded is passed over.
    for (int l = 1; l <= c.Etq_Aide.UBound(); ++l) {
        if (l == index || !c.Etq_Aide.exists(l) || c.Etq_Aide(l).left() != model::kLeftDetail) continue;
        toolkit::Label& e = c.Etq_Aide(l);
        const toolkit::Label& m = c.Etq_Aide(index);
        const int h = hauteurDetail(model::dureeMnFromTag(e.tag()));
        // Both bounds strict, deliberately unlike the dry run: a label that starts exactly where the moved
        // one ends stays where it is.
        if (!(e.top() + h > m.top() && m.top() + hauteur > e.top())) continue;
        if (m.top() + hauteur + h >= model::kBasDecalage) {
            c.DebordementDecalage = true;
            renvoyerEnAide(l, RetourPar::Decalage);
            continue;
        }
        e.setTop(m.top() + hauteur);
        // The half is added behind the truncation and only cut off as text, so a start under 1000 keeps its
        // comma ("925,"). Chaining rounds inside Int; the two differ on purpose.
        e.setLinkItem(base::Left(
            base::numberText(base::toNumber(m.linkItem()) + base::Int(minutes * 10.0 / 6) + 0.5), 4));
        c.Tables.moveInDetail(l, static_cast<int>(base::roundHalfEven(e.top())));
        DecalerEtiquettes(l, h);
    }
}

void Edition::renvoyerEnAide(int index, RetourPar par) {
    Ctr_Zandorel& c = m_c;
    // 1.
    c.VScroll.setValue(1);
    const model::LabelRow ligne =
        c.Tables.row(model::Pane::Detail, c.Tables.findByLabel(model::Pane::Detail, index));

    // 2. to 4. The figure of the act's state as the waiting list reads it.
    model::TypeEtq c7(ligne.TypeEtq);
    if (c.Tables.findByKey(model::Pane::Aide, ligne.CleProtocole) != 0) c7 = c7.avecMoitieEnAttente();
    const char figure = c7.figure();
    if (c.NbIntervenantsTournee == 2) {
        c7 = c7.avecFigure('2');
    } else if (figure == '1') {
        // The half that waits is found by the key the label carries.
        const std::string cle = base::Left(c.Etq_Aide(index).tag(), data::protocole::kLongueurCle);
        const std::int64_t a = c.Tables.findByKey(model::Pane::Aide, cle);
        if (a != 0) {
            joindreMoities(a, index, par);
            c.Tables.remove(model::Pane::Detail, c.Tables.findByLabel(model::Pane::Detail, index));
            c.AlternerCouleursDetail();
            return;
        }
        bool ailleurs = false;
        RechercheTourneesIntervenant(ligne.CleProtocole, ailleurs);
        c7 = c7.avecFigure(ailleurs ? '1' : '2');
    } else if (figure == '0') {
        c7 = c7.avecFigure('1');
    }

    // 5. to 7. The rows from the new one on move down a line. A row below it whose label went to the
    // tournée when its act was split stays there: that label is not the waiting list's to lay out.
    const std::int64_t ou = c.Tables.sendBack(index, c7);
    for (std::int64_t i = ou; i <= c.TabTempoAide->DCount(); ++i) {
        const int l = base::toInteger(c.TabTempoAide(i, model::col::NumEtq));
        if (i > ou && c.Etq_Aide.exists(l) && c.Etq_Aide(l).left() == model::kLeftDetail) continue;
        if (!PlacerEtqAide(i, par)) break;
    }
    reglerDefilementDepot();
    c.AlternerCouleursDetail();
}

void Edition::joindreMoities(std::int64_t a, int rendue, RetourPar par) {
    Ctr_Zandorel& c = m_c;
    namespace col = model::col;
    c.Tables.join(a);
    const mvdb::DynamicRecord& t = *c.TabTempoAide;
    const int attente = base::toInteger(t(a, col::NumEtq));
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (c.Etq_Aide.exists(attente)) {
        toolkit::Label& e = c.Etq_Aide(attente);
        // The removal leaves the font as it is; the drop and the push put back the waiting list's.
        if (par != RetourPar::Retrait) e.setFontSize(8);
        const std::string code = model::codeAideOf(t(a, col::CleProtocole));
        if (data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code)) {
            const std::string nom = f.EnregCIVILAIDE(data::civilaide::kNom);
            const std::string prenom = f.EnregCIVILAIDE(data::civilaide::kPrenom);
            if (par == RetourPar::Retrait) {
                // The removal words it as the display does.
                const model::LabelLook look =
                    model::lookAide(t, a, nom, prenom, c.echelleRef(), c.HauteurEtq, c.couleursNatures());
                e.setCaption(look.caption);
                e.setToolTipText(look.toolTip);
            } else {
                // The push writes the whole suffix at the end of the tooltip, the drop its last three
                // characters.
                const model::LabelFacts facts{code,
                                              nom,
                                              prenom,
                                              t(a, col::DureeMn),
                                              c.heureDepot(base::toNumber(t(a, col::HeureDebut))),
                                              c.heureDepot(base::toNumber(t(a, col::HeureFin))),
                                              par == RetourPar::Depot ? "0/2" : "- 0/2"};
                e.setCaption(model::captionAide(facts));
                e.setToolTipText(model::toolTipAide(facts));
            }
        }
    }
    if (c.Etq_Aide.exists(rendue)) c.Etq_Aide.Unload(rendue);
}

bool Edition::PlacerEtqAide(std::int64_t ligne, RetourPar par) {
    Ctr_Zandorel& c = m_c;
    namespace col = model::col;
    const mvdb::DynamicRecord& t = *c.TabTempoAide;
    const int i = base::toInteger(t(ligne, col::NumEtq));
    // A row left without a label keeps its place and is passed over.
    if (!c.Etq_Aide.exists(i)) return true;
    toolkit::Label& e = c.Etq_Aide(i);

    // 1. to 4. Deliberately the drop turns the scale's start into hundredths and the push takes it as it
    // stands: after a push the label stands aside by as much on a scale that does not start on the hour.
    const double D =
        par == RetourPar::Depot ? model::HeureVersCentiemes(c.HeureDebutEchelle) : c.HeureDebutEchelle;
    const double parHeure = c.PasQuartHeure * 4.0;
    const double debut = base::toNumber(t(ligne, col::HeureDebut)),
                 fin = base::toNumber(t(ligne, col::HeureFin));
    const double top = model::kHautLignesAideRetour + static_cast<double>(ligne) * c.HauteurEtq;
    c.Tables.setTopEtq(model::Pane::Aide, ligne, top);
    const model::Geometry g =
        model::clipAide({model::kGaucheEchelleAide + (debut / 100 - D) * parHeure, top,
                         (fin / 100 - debut / 100) * parHeure, static_cast<double>(c.HauteurEtq)});
    e.setGeometry(g.left, g.top, g.width, g.height);

    // 5. to 7.
    const std::string typeEtq = t(ligne, col::TypeEtq);
    e.setBackColor(model::colourNumber(
        model::couleurParType(typeEtq, c.CouleurInfirmier, c.CouleurSoignant, c.CouleurMixte)));
    e.setFontSize(8);
    e.setFontBold(false);
    const std::string suffixe = model::suffixeAide(typeEtq);

    // 8.
    const std::string code = model::codeAideOf(t(ligne, col::CleProtocole));
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (!data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code)) return false;
    model::LabelFacts facts{code,
                            f.EnregCIVILAIDE(data::civilaide::kNom),
                            f.EnregCIVILAIDE(data::civilaide::kPrenom),
                            t(ligne, col::DureeMn),
                            c.heureDepot(debut),
                            c.heureDepot(fin),
                            suffixe};
    e.setToolTipText(model::toolTipAide(facts));
    // The push writes the whole suffix on the last line, the drop its last three characters.
    if (par == RetourPar::Decalage) facts.suffixe.clear();
    e.setCaption(model::captionAide(facts) + (par == RetourPar::Decalage ? suffixe : ""));
    return true;
}

void Edition::reglerDefilementDepot() {
    Ctr_Zandorel& c = m_c;
    c.VScroll.setMax(c.Tables.scrollMax());
    if (c.VScroll.max() != 0) c.DerniereValeurScroll = c.VScroll.value();
    c.VScroll.setVisible(c.VScroll.max() != 0);
}

}  // namespace control
