#include "shell/ctr_zandorel.h"

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

namespace control {

namespace {

// The bottom of pane "DETAIL" for both runs of the push (a drop allows 6355).
constexpr double kLimiteBas = 6350;
constexpr double kGaucheAide = 5290;
// Where the rows of pane "AIDE" stand once a label came back: five twips under the display's 320.
constexpr double kHautAide = 325;

int entier(std::string_view texte) {
    return static_cast<int>(base::roundHalfEven(base::toNumber(texte)));
}

model::LabelRow lireLigne(const model::WorkTable& table, std::int64_t r) {
    namespace col = model::col;
    return {entier(table(r, col::NumEtq)),   entier(table(r, col::HeureDebut)),
            entier(table(r, col::HeureFin)), entier(table(r, col::DureeMn)),
            entier(table(r, col::TopEtq)),   table(r, col::CleProtocole),
            table(r, col::TypeEtq)};
}

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

// The return of one half of an act for two while the other half waits in pane "AIDE": the waiting half
// reads "0/2" again and the returning label is unloaded. False when no half waits.
bool joindreMoitie(Ctr_Zandorel& c, int index, Ctr_Zandorel::RetourPar par) {
    namespace col = model::col;
    const std::string cle = base::Left(c.Etq_Aide(index).tag(), data::protocole::kLongueurCle);
    const std::int64_t a = Ctr_Zandorel::chercherLigne(c.TabTempoAide, col::CleProtocole, cle);
    if (a == 0) return false;
    const mvdb::DynamicRecord& t = *c.TabTempoAide;
    const int attente = entier(t(a, col::NumEtq));
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (c.Etq_Aide.exists(attente)) {
        toolkit::Label& e = c.Etq_Aide(attente);
        e.setFontSize(8);
        if (data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, model::codeAideOf(cle))) {
            // The push writes the whole suffix at the end of the tooltip, the drop its last three characters.
            const model::LabelFacts facts{model::codeAideOf(cle),
                                          f.EnregCIVILAIDE(data::civilaide::kNom),
                                          f.EnregCIVILAIDE(data::civilaide::kPrenom),
                                          t(a, col::DureeMn),
                                          Ctr_Zandorel::heureDepot(base::toNumber(t(a, col::HeureDebut))),
                                          Ctr_Zandorel::heureDepot(base::toNumber(t(a, col::HeureFin))),
                                          par == Ctr_Zandorel::RetourPar::Depot ? "0/2" : "- 0/2"};
            e.setCaption(model::captionAide(facts));
            e.setToolTipText(model::toolTipAide(facts));
        }
    }
    c.TabTempoAide->set(a, col::TypeEtq, base::Left(t(a, col::TypeEtq), 2) + "2");
    c.Etq_Aide.Unload(index);
    return true;
}

}  // namespace

void Ctr_Zandorel::TrierTabTempoDetail(int index, int position, bool Decale) {
    // 1. Until the dry run moves anything, TabTempoDetail holds the same rows as its copy.
    const bool depuisAide = !Decale && PanneauSource != model::kPaneDetail;
    const model::WorkTable& source = Decale ? TabTempoDecale : depuisAide ? TabTempoAide : TabTempoDetail;
    const std::int64_t r = chercherLigne(source, model::col::NumEtq, base::numberText(index));
    // 2.
    model::LabelRow ligne = lireLigne(source, r);
    // 3.
    if (!depuisAide) TabTempoDecale->Delete(r);
    // 4. and 5. A tie goes to the newcomer here, where the waiting list puts it behind.
    ligne.TopEtq = position;
    model::insertLabelRow(*TabTempoDecale, model::rowForTopEtq(*TabTempoDecale, position), ligne);
}

void Ctr_Zandorel::VerifEtqDecale(int index, int hauteur, int position) {
    const Imbrication niveau(m_profondeurDecalage, Etq_Aide.Count());
    // Rows move while the loop runs, so some are looked at twice and some not at all: deliberate, the dry
    // run only answers whether anything runs off.
    const std::int64_t n = TabTempoDecale->DCount();
    for (std::int64_t i = 1; i <= n; ++i) {
        const int l = entier(TabTempoDecale(i, model::col::NumEtq));
        if (l == index || !Etq_Aide.exists(l) || Etq_Aide(l).left() != model::kLeftDetail) continue;
        const double haut = base::toNumber(TabTempoDecale(i, model::col::TopEtq));
        const int h = hauteurDetail(model::dureeMnFromTag(Etq_Aide(l).tag()));
        // Strict above, loose below, deliberately unlike the real run: a label that starts exactly where
        // the moved one ends counts here, so the dry run may refuse what the push would have done.
        if (!(position < haut + h && haut <= hauteur + position)) continue;
        if (hauteur + position + h >= kLimiteBas) {
            DecalageImpossible = true;
            continue;
        }
        TrierTabTempoDetail(l, hauteur + position, true);
        VerifEtqDecale(l, h, hauteur + position);
    }
}

void Ctr_Zandorel::DecalerEtiquettes(int index, int hauteur) {
    const Imbrication niveau(m_profondeurDecalage, Etq_Aide.Count());
    const int minutes = model::dureeMnFromTag(Etq_Aide(index).tag());
    // In the order of the indexes; a label that an inner level sent back and unloaded is passed over.
    for (int l = 1; l <= Etq_Aide.UBound(); ++l) {
        if (l == index || !Etq_Aide.exists(l) || Etq_Aide(l).left() != model::kLeftDetail) continue;
        toolkit::Label& e = Etq_Aide(l);
        const toolkit::Label& m = Etq_Aide(index);
        const int h = hauteurDetail(model::dureeMnFromTag(e.tag()));
        // Both bounds strict, deliberately unlike the dry run: a label that starts exactly where the moved
        // one ends stays where it is.
        if (!(e.top() + h > m.top() && m.top() + hauteur > e.top())) continue;
        if (m.top() + hauteur + h >= kLimiteBas) {
            DebordementDecalage = true;
            renvoyerEnAide(l, RetourPar::Decalage);
            continue;
        }
        e.setTop(m.top() + hauteur);
        // The half is added behind the truncation and only cut off as text, so a start under 1000 keeps its
        // comma ("925,"). Chaining rounds inside Int; the two differ on purpose.
        e.setLinkItem(base::Left(
            base::numberText(base::toNumber(m.linkItem()) + base::Int(minutes * 10.0 / 6) + 0.5), 4));
        const std::int64_t r = chercherLigne(TabTempoDetail, model::col::NumEtq, base::numberText(l));
        const model::LabelRow ligne = lireLigne(TabTempoDetail, r);
        TabTempoDetail->Delete(r);
        TriCouleurEtq(l, ligne.HeureDebut, ligne.HeureFin, ligne.DureeMn,
                      static_cast<int>(base::roundHalfEven(e.top())), ligne.CleProtocole, ligne.TypeEtq);
        DecalerEtiquettes(l, h);
    }
}

void Ctr_Zandorel::renvoyerEnAide(int index, RetourPar par) {
    // 1.
    VScroll.setValue(1);
    const std::int64_t r = chercherLigne(TabTempoDetail, model::col::NumEtq, base::numberText(index));
    const model::LabelRow ligne = lireLigne(TabTempoDetail, r);

    // 2. to 4. The figure of the act's state as the waiting list reads it.
    std::string c7 = ligne.TypeEtq;
    if (chercherLigne(TabTempoAide, model::col::CleProtocole, ligne.CleProtocole) != 0) c7 += "|1";
    const std::string tete = base::Left(c7, 2);
    const std::string figure = base::Len(c7) > 1 ? base::Right(c7, 1) : "";
    if (NbIntervenantsTournee == 2) {
        c7 = tete + "2";
    } else if (figure == "1") {
        if (joindreMoitie(*this, index, par)) {
            TabTempoDetail->Delete(r);
            AlternerCouleursDetail();
            return;
        }
        bool ailleurs = false;
        RechercheTourneesIntervenant(ligne.CleProtocole, ailleurs);
        c7 = tete + (ailleurs ? "1" : "2");
    } else if (figure == "0") {
        c7 = tete + "1";
    }

    // 5. and 6. The rows from the new one on move down a line. A row below it whose label went to the
    // tournée when its act was split stays there: that label is not the waiting list's to lay out.
    const int ou = InsererDansTabTempoAide(index, ligne.HeureDebut, ligne.HeureFin, ligne.DureeMn,
                                           ligne.TopEtq, ligne.CleProtocole, c7);
    for (std::int64_t i = ou; i <= TabTempoAide->DCount(); ++i) {
        const int l = entier(TabTempoAide(i, model::col::NumEtq));
        if (i > ou && Etq_Aide.exists(l) && Etq_Aide(l).left() == model::kLeftDetail) continue;
        if (!PlacerEtqAide(i, par)) break;
    }
    reglerDefilementDepot();

    // 7.
    TabTempoDetail->Delete(r);
    AlternerCouleursDetail();
}

bool Ctr_Zandorel::PlacerEtqAide(std::int64_t ligne, RetourPar par) {
    namespace col = model::col;
    const mvdb::DynamicRecord& t = *TabTempoAide;
    const int i = entier(t(ligne, col::NumEtq));
    // A row left without a label keeps its place and is passed over.
    if (!Etq_Aide.exists(i)) return true;
    toolkit::Label& e = Etq_Aide(i);

    // 1. to 4. Deliberately the drop turns the scale's start into hundredths and the push takes it as it
    // stands: after a push the label stands aside by as much on a scale that does not start on the hour.
    const double D =
        par == RetourPar::Depot ? model::HeureVersCentiemes(HeureDebutEchelle) : HeureDebutEchelle;
    const double parHeure = PasQuartHeure * 4.0;
    const double debut = base::toNumber(t(ligne, col::HeureDebut)),
                 fin = base::toNumber(t(ligne, col::HeureFin));
    const double top = kHautAide + static_cast<double>(ligne) * HauteurEtq;
    TabTempoAide->set(ligne, col::TopEtq, base::numberText(top));
    const model::Geometry g =
        model::clipAide({kGaucheAide + (debut / 100 - D) * parHeure, top,
                         (fin / 100 - debut / 100) * parHeure, static_cast<double>(HauteurEtq)});
    e.setGeometry(g.left, g.top, g.width, g.height);

    // 5. to 7.
    const std::string typeEtq = t(ligne, col::TypeEtq);
    e.setBackColor(
        model::colourNumber(model::couleurParType(typeEtq, CouleurInfirmier, CouleurSoignant, CouleurMixte)));
    e.setFontSize(8);
    e.setFontBold(false);
    const std::string suffixe = model::suffixeAide(typeEtq);

    // 8.
    const std::string code = model::codeAideOf(t(ligne, col::CleProtocole));
    data::FichiersSSIAD& f = Mod.fichiers;
    if (!data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code)) return false;
    model::LabelFacts facts{code,
                            f.EnregCIVILAIDE(data::civilaide::kNom),
                            f.EnregCIVILAIDE(data::civilaide::kPrenom),
                            t(ligne, col::DureeMn),
                            heureDepot(debut),
                            heureDepot(fin),
                            suffixe};
    e.setToolTipText(model::toolTipAide(facts));
    // The push writes the whole suffix on the last line, the drop its last three characters.
    if (par == RetourPar::Decalage) facts.suffixe.clear();
    e.setCaption(model::captionAide(facts) + (par == RetourPar::Decalage ? suffixe : ""));
    return true;
}

void Ctr_Zandorel::reglerDefilementDepot() {
    const std::int64_t n = TabTempoAide->DCount();
    if (!TabTempoAide->text().empty() && n > 7) {
        VScroll.setMax(static_cast<int>(n));
        DerniereValeurScroll = VScroll.value();
    } else {
        VScroll.setMax(0);
    }
    VScroll.setVisible(VScroll.max() != 0);
}

}  // namespace control
