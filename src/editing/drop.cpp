#include "editing/edition.h"

// The drop of a label: whether it is refused, goes back to the waiting list or lands in the tournée at a
// time, and how far an act for two intervenants is placed. A drop changes the tables and the labels
// only: nothing is written until validation, and no flag records the change, since leaving compares the
// labels with what was read.
#include <cmath>
#include <cstdint>
#include <string>

#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {

namespace {

// A drop this close to the grab offset, both ways, is no move.
constexpr double kSeuilDeplacement = 200;

struct Aide {
    std::string code, nom, prenom;
};

// The wording of a placed label; whether the count of intervenants changed it, and made a waiting half.
struct Comptage {
    std::string caption, toolTip;
    bool reecrit = false;
    bool moitie = false;
};

// Rule R5. An act for two whose first intervenant is in another tournée of the day may come only at a
// time shared with that one; true when the drop may go on.
bool regleR5(Ctr_Zandorel& c, mvdb::Database& db, mvdb::DynamicRecord& reponse, const std::string& cle,
             int minutes, bool depuisAide) {
    // 1.
    if (depuisAide && c.Tables.findByKey(model::Pane::Detail, cle) != 0) {
        c.Etq_Horaire.setVisible(false);
        c.host().MsgBox("Déplacement impossible : cette intervention est déjà affectée à cette tournée.",
                        kStyleAvertissement, kTitreMessage);
        return false;
    }
    // 2.
    const std::string phrase = "SELECT SSIADTOURNEE AVEC DateTournee = \"" +
                               c.ObjetConversion.DateInterne(c.DateAffichee) + "\" AND AVEC 2 =\"" + cle +
                               "]\" AND AVEC CodeTournee <>\"" + c.Txt_CodeTournee.text() + "\"";
    reponse = data::Interroger(db, phrase, data::kSSIADTOURNEE, "0 1 2");
    c.ecarterInterventionsIncoherentes(reponse);
    if (reponse.DCount() == 0) return true;
    // 3. Only the first tournée that holds the act counts.
    const std::string cleAutre = reponse(1, 1);
    const double debutAutre = base::toNumber(data::tournee::heureDebut(cleAutre));
    const double finAutre = base::toNumber(reponse(1, 2));
    // 4.
    const double heures = model::HeureVersCentiemes(base::toNumber(c.Etq_Horaire.caption()));
    const auto debut = static_cast<double>(base::roundHalfEven(heures * 100));
    const double fin =
        base::toNumber(base::Left(base::numberText((minutes * 10.0 / 6 / 100 + heures) * 100), 4));
    // 5. Both bounds count: what is asked is the presence of both together, not the absence of a clash.
    if (debut <= finAutre && debutAutre <= fin) return true;
    // 6.
    c.Etq_Horaire.setVisible(false);
    data::FichiersSSIAD& f = c.Mod.fichiers;
    const std::string code = data::tournee::codeTournee(cleAutre);
    if (!data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE, code)) return true;
    c.host().MsgBox("Déplacement impossible : un intervenant est déjà prévu dans la tournée " + code + " (" +
                        f.EnregSSIADCARACTTOURNEE(data::caracttournee::kLibelle) + ") de " +
                        Ctr_Zandorel::heureDepot(debutAutre) + " à " + Ctr_Zandorel::heureDepot(finAutre),
                    kStyleAvertissement, kTitreMessage);
    return false;
}

// The wording of the tournée that a label from the waiting list takes, from its start in hundredths.
// Deliberately without the blank and the suffix that the display writes behind the minutes.
Comptage libelleDetail(const Aide& aide, int minutes, const std::string& linkItem, int dureeMn) {
    const std::string duree = base::numberText(minutes) + "mn";
    const std::string fin =
        Ctr_Zandorel::heureDepot(base::toInteger(base::Left(linkItem, 4)) + dureeMn * 10.0 / 6);
    return {aide.nom + " " + aide.prenom + " " + duree,
            aide.code + " - " + aide.nom + " " + aide.prenom + " - " +
                Ctr_Zandorel::heureDepot(base::toNumber(linkItem)) + " à " + fin + " = " + duree};
}

// The waiting half of an act for two that the drop splits: loaded in the place the dragged label had,
// on row `r` of TabTempoAide, which was inserted for it.
void chargerMoitie(Ctr_Zandorel& c, std::int64_t r, const Aide& aide, double ancienLeft,
                   double ancienneLargeur) {
    const mvdb::DynamicRecord& t = *c.TabTempoAide;
    const std::string typeEtq = t(r, model::col::TypeEtq);
    const model::LabelFacts facts{aide.code,
                                  aide.nom,
                                  aide.prenom,
                                  t(r, model::col::DureeMn),
                                  Ctr_Zandorel::heureDepot(base::toNumber(t(r, model::col::HeureDebut))),
                                  Ctr_Zandorel::heureDepot(base::toNumber(t(r, model::col::HeureFin))),
                                  "1/2"};
    model::LabelLook look;
    look.geometry = model::clipAide({ancienLeft, base::toNumber(t(r, model::col::TopEtq)), ancienneLargeur,
                                     static_cast<double>(c.HauteurEtq)});
    look.tag = model::makeTag(t(r, model::col::CleProtocole), t(r, model::col::DureeMn));
    look.caption = model::captionAide(facts);
    look.toolTip = model::toolTipAide(facts);
    look.backColor = model::colourNumber(
        model::couleurParType(typeEtq, c.CouleurInfirmier, c.CouleurSoignant, c.CouleurMixte));
    toolkit::Label& moitie = c.Etq_Aide.Load(base::toInteger(t(r, model::col::NumEtq)));
    model::applyLook(moitie, look);
    moitie.setVisible(true);
}

// What becomes of an act for two that leaves pane "AIDE" for the tournée (r its row there, typeEtq its
// column 7, rewritten here). Gives the wording of the placed label when it changes, and whether a waiting
// half was made.
Comptage compterIntervenants(Ctr_Zandorel& c, std::int64_t r, model::TypeEtq& typeEtq, const Comptage& detail,
                             const Aide& aide, bool aideLu, double ancienLeft, double ancienneLargeur) {
    const char f = typeEtq.figure();
    const model::TypeEtq un = typeEtq.avecFigure('1');
    if (c.NbIntervenantsTournee == 2) {
        // Both intervenants are in this tournée: the row leaves the waiting list.
        if (f != '2') return detail;
        typeEtq = un;
        c.Tables.setTypeEtq(model::Pane::Aide, r, typeEtq);
        return {detail.caption + "    ", detail.toolTip, true};
    }
    const Comptage unSurDeux{detail.caption + " 1/2", detail.toolTip + " - 1/2", true};
    if (f == '1') {
        typeEtq = un;
        return unSurDeux;
    }
    if (f != '2' || !aideLu) return detail;
    // The split. Deliberately the dragged label's row stays in TabTempoAide right behind the new half,
    // ending in 1 like it: closing the waiting list skips both rows, and a return finds the new half first.
    typeEtq = un;
    chargerMoitie(c, c.Tables.split(r, ++c.IndiceEtqMax), aide, ancienLeft, ancienneLargeur);
    return {unSurDeux.caption, unSurDeux.toolTip, true, true};
}

}  // namespace

int Edition::hauteurDetail(int minutes) const {
    Ctr_Zandorel& c = m_c;
    return static_cast<int>(base::roundHalfEven(c.PasQuartHeure * 4.0 * minutes / 60));
}

std::string Ctr_Zandorel::heureDepot(double centiemes) {
    const std::string hhmm =
        base::zeroPad(base::roundHalfEven(model::CentiemesVersHeure(centiemes / 100) * 100), 4);
    return base::Left(hhmm, 2) + "h" + base::Right(hhmm, 2);
}

void Edition::RechercheTourneesIntervenant(const std::string& cle, bool& trouve) {
    Ctr_Zandorel& c = m_c;
    const std::string phrase = "SELECT SSIADTOURNEE AVEC DateTournee = \"" +
                               c.ObjetConversion.DateInterne(c.DateAffichee) + "\" AND AVEC 2=\"" + cle +
                               "\" AND AVEC CodeTournee <> \"" + c.Txt_CodeTournee.text() +
                               "\" PAR CodeTournee";
    ReponseAutresTournees = data::Interroger(c.database(), phrase, data::kSSIADTOURNEE, "0 1 2");
    // As the display, which named them, the moves pass over records that make no sense.
    c.ecarterInterventionsIncoherentes(ReponseAutresTournees);
    trouve = ReponseAutresTournees.DCount() != 0;
}

void Edition::DeposerEtiquette(float X, float Y) {
    Ctr_Zandorel& c = m_c;
    const Historique::Deplacement deplacement(c.historique);
    const double L = static_cast<double>(X) - DecalageSourisX;
    const double T = static_cast<double>(Y) - DecalageSourisY;

    // 1. Deliberately the drop point against the grab offset inside the label, not against the press:
    // this sets aside drops near the top left corner of the control.
    if (std::fabs(DecalageSourisX - static_cast<double>(X)) < kSeuilDeplacement &&
        std::fabs(DecalageSourisY - static_cast<double>(Y)) < kSeuilDeplacement)
        return;
    // A drop with no label taken from either pane behind it makes no move either.
    const bool depuisAide = c.PanneauSource == model::Pane::Aide;
    if ((!depuisAide && c.PanneauSource != model::Pane::Detail) || c.IndiceEtqCourante < 1 ||
        !c.Etq_Aide.exists(c.IndiceEtqCourante))
        return;

    // 2.
    const int M = model::dureeMnFromTag(c.Etq_Aide(c.IndiceEtqCourante).tag());
    const int H = hauteurDetail(M);

    // 3.
    if (c.TourneeAnterieure) {
        c.Etq_Horaire.setVisible(false);
        c.host().MsgBox("Déplacement impossible : date de la tournée antérieure à la date du jour.",
                        kStyleAvertissement, kTitreMessage);
        return;
    }

    // 4. The return zone. A refusal here does not end the routine: the placement test below ends it.
    const model::Zone& retour = model::kZoneRetourAide;
    if (!depuisAide && L >= retour.gauche && L <= retour.droite && T >= retour.haut && T <= retour.bas) {
        if (c.Mod.FlagAffectationEnCours) {
            c.host().MsgBox("Déplacement impossible.", kStyleAvertissement, kTitreMessage);
        } else {
            renvoyerEnAide(c.IndiceEtqCourante, RetourPar::Depot);
        }
    }

    // 5.
    const model::Zone& pose = model::kZonePoseDetail;
    if (L < pose.gauche || L > pose.droite || T < pose.haut || T + H > pose.bas) {
        c.Etq_Horaire.setVisible(false);
        return;
    }

    // 6.
    if (c.SansTournee) {
        c.host().MsgBox("Déplacement impossible : aucune tournée selectionnée.", kStyleAvertissement,
                        kTitreMessage);
        c.Etq_Horaire.setVisible(false);
        return;
    }

    // 7.
    if (depuisAide) c.VScroll.setValue(1);

    // 8. The dry run, on a copy that lives only for it.
    const auto position = static_cast<int>(base::roundHalfEven(T));
    DecalageImpossible = false;
    if (c.Mod.FlagAffectationEnCours) {
        TabTempoDecale.renew();
        TabTempoDecale->setText(c.Tables.detail()->text());
        TrierTabTempoDetail(c.IndiceEtqCourante, position, false);
        VerifEtqDecale(c.IndiceEtqCourante, H, position);
        TabTempoDecale.release();
    }

    // 9.
    if (DecalageImpossible) {
        c.host().MsgBox("Déplacement impossible, vous ne pouvez pas décaler les aidés.", kStyleAvertissement,
                        kTitreMessage);
        c.Etq_Horaire.setVisible(false);
        return;
    }

    // 10.
    const model::Pane origine = depuisAide ? model::Pane::Aide : model::Pane::Detail;
    const std::int64_t r = c.Tables.findByLabel(origine, c.IndiceEtqCourante);
    model::LabelRow ligne = c.Tables.row(origine, r);
    const int c4 = ligne.DureeMn;
    const std::string c6 = ligne.CleProtocole;
    model::TypeEtq K(ligne.TypeEtq);

    // 11.
    if (c.NbIntervenantsTournee != 2 && K.figure() == '1' &&
        !regleR5(c, c.database(), ReponseAutresTournees, c6, c4, depuisAide))
        return;

    // 12.
    toolkit::Label& etiquette = c.Etq_Aide(c.IndiceEtqCourante);
    const double ancienLeft = static_cast<double>(base::roundHalfEven(etiquette.left()));
    const double ancienneLargeur = static_cast<double>(base::roundHalfEven(etiquette.width()));
    etiquette.setGeometry(model::kLeftDetail, T, model::kLargeurDetail, H);
    etiquette.setLinkItem(
        base::numberText(model::HeureVersCentiemes(base::toNumber(c.Etq_Horaire.caption())) * 100));
    // Deliberately the plain difference of the H.MM bounds. A label long enough keeps its font.
    if (model::fontDetail(c.HeureFinEchelle - c.HeureDebutEchelle, M).bold) {
        etiquette.setFontSize(6);
        etiquette.setFontBold(true);
    }

    // 13. The name the buffer then holds serves the count of intervenants too, read or not.
    data::FichiersSSIAD& f = c.Mod.fichiers;
    const std::string code = model::codeAideOf(c6);
    const bool aideLu = depuisAide && data::LireEnregistrement(*f.CIVILAIDE, f.EnregCIVILAIDE, code);
    const Aide aide{code, f.EnregCIVILAIDE(data::civilaide::kNom),
                    f.EnregCIVILAIDE(data::civilaide::kPrenom)};
    const Comptage detail = libelleDetail(aide, M, etiquette.linkItem(), c4);
    if (aideLu) {
        etiquette.setCaption(detail.caption);
        etiquette.setToolTipText(detail.toolTip);
    }

    // 14.
    etiquette.setVisible(true);

    // 15.
    bool moitie = false;
    if (!depuisAide) {
        c.Tables.moveInDetail(c.IndiceEtqCourante, position);
    } else {
        const Comptage compte =
            compterIntervenants(c, r, K, detail, aide, aideLu, ancienLeft, ancienneLargeur);
        if (compte.reecrit) {
            etiquette.setCaption(compte.caption);
            etiquette.setToolTipText(compte.toolTip);
        }
        moitie = compte.moitie;
        ligne.NumEtq = c.IndiceEtqCourante;
        ligne.TopEtq = position;
        ligne.TypeEtq = K.text();
        c.Tables.insertByPosition(ligne);
    }

    // 16. Closing the waiting list. A row still waiting for its second intervenant stays, though the rows
    // from it on move up all the same. A label of those rows that stands in the tournée (the one dropped,
    // or the placed half of a split act) keeps its place there.
    if (depuisAide && !moitie) {
        const std::int64_t i = c.Tables.findByLabel(model::Pane::Aide, c.IndiceEtqCourante);
        if (i != 0) {
            c.Tables.closeLine(i, c.HauteurEtq);
            for (std::int64_t j = i; j <= c.TabTempoAide->DCount(); ++j) {
                const int l = base::toInteger(c.TabTempoAide(j, model::col::NumEtq));
                if (c.Etq_Aide.exists(l) && c.Etq_Aide(l).left() != model::kLeftDetail)
                    c.Etq_Aide(l).setTop(base::toNumber(c.TabTempoAide(j, model::col::TopEtq)));
            }
        }
    } else if (!depuisAide) {
        c.DebordementDecalage = false;
    }

    // 17. Also for a move inside pane "DETAIL".
    DecalerEtiquettes(c.IndiceEtqCourante, H);
    // 18.
    c.AlternerCouleursDetail();
    // 19.
    reglerDefilementDepot();
    // 20.
    c.Etq_Horaire.setVisible(false);
}

}  // namespace control
