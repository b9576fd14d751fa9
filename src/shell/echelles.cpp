#include <climits>

#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "model/scales.h"
#include "shell/ctr_zandorel.h"

// The control's time scales, the paging of the pane of aidés, and the making of labels. The rules are
// in model/; these routines hand them the control's state and apply what comes back.
namespace control {

namespace {

// The label of row i, found through NumEtq; nullptr when the row has none loaded.
toolkit::Label* labelOfRow(toolkit::ControlArray<toolkit::Label>& etiquettes, const model::WorkTable& table,
                           std::int64_t i) {
    const std::int64_t index = base::roundHalfEven(base::toNumber(table(i, model::col::NumEtq)));
    if (index < 1 || index > INT_MAX || !etiquettes.exists(static_cast<int>(index))) return nullptr;
    return &etiquettes(static_cast<int>(index));
}

model::ScaleRef scaleRef(const Ctr_Zandorel& c) {
    return {model::HeureVersCentiemes(c.HeureDebutEchelle), c.PasQuartHeure};
}

model::KindColours kindColours(const Ctr_Zandorel& c) {
    return {c.CouleurInfirmier, c.CouleurSoignant, c.CouleurMixte};
}

struct Identite {
    std::string nom;
    std::string prenom;
};

// Reads the aidé's civil record into the shared buffer. A failed read leaves the buffer as it was, and
// the name it last held is used: deliberate, the label is made all the same.
Identite lireIdentite(data::FichiersSSIAD& fichiers, const std::string& codeAide) {
    if (!fichiers.CIVILAIDE)
        throw base::Error(base::codes::kNotBound, "Le fichier CIVILAIDE n'est pas ouvert");
    data::LireEnregistrement(*fichiers.CIVILAIDE, fichiers.EnregCIVILAIDE, codeAide);
    return {fichiers.EnregCIVILAIDE(data::civilaide::kNom),
            fichiers.EnregCIVILAIDE(data::civilaide::kPrenom)};
}

// Morning and evening differ only by their hours. Changing them clears the display without a prompt:
// the options are disabled while a tournée is chosen.
void changerPeriode(Ctr_Zandorel& c, double heureDebut, double heureFin) {
    c.historique.vider();
    if (c.Etq_Aide.Count() > 1) {
        c.Etq_Aide.unloadAll();
        c.IndiceEtqMax = 0;
        c.VScroll.setMax(0);
        c.DerniereValeurScroll = c.VScroll.value();
        c.VScroll.setVisible(false);
    }
    c.TabTempoAide.release();
    c.HeureDebutEchelle = heureDebut;
    c.HeureFinEchelle = heureFin;
    c.ChargerEtiquetteHeuresAide(c.HeureDebutEchelle, c.HeureFinEchelle);
    c.ChargerEtiquetteHeuresDetail(c.HeureDebutEchelle, c.HeureFinEchelle);
}

void writeBack(model::WorkTable& table, int i, const toolkit::Label& label) {
    table->set(i, model::col::TopEtq, base::numberText(label.top()));
    table->set(i, model::col::NumEtq, base::numberText(label.index()));
}

}  // namespace

void Ctr_Zandorel::ChargerEtiquetteHeuresAide(double W_HeureDebut, double W_HeureFin) {
    model::loadHorizontalScale(Etq_HeureAide, Line_HeureAide, W_HeureDebut, W_HeureFin);
}

void Ctr_Zandorel::ChargerEtiquetteHeuresDetail(double W_HeureDebut, double W_HeureFin) {
    PasQuartHeure = model::loadDetailScale(Etq_HeureDetail, Line_HeureDetail, W_HeureDebut, W_HeureFin);
}

void Ctr_Zandorel::Opt_Matin_Click() {
    changerPeriode(*this, 600.0 / 100, 1400.0 / 100);
}

void Ctr_Zandorel::Opt_Soir_Click() {
    changerPeriode(*this, 1400.0 / 100, 2200.0 / 100);
}

void Ctr_Zandorel::VScroll_Change() {
    if (Etq_Aide.Count() > 1 && TabTempoAide.exists()) {
        const model::AidePage page = model::pageAide(VScroll.value(), VScroll.max(), DerniereValeurScroll);
        // This write runs VScroll_Change again from inside this call; the rows laid out below are the
        // same ones, and the last value is the corrected one.
        if (page.resetValue) VScroll.setValue(page.first);
        const std::int64_t n = TabTempoAide->DCount();
        for (std::int64_t i = 1; i <= n; ++i) {
            toolkit::Label* label = labelOfRow(Etq_Aide, TabTempoAide, i);
            if (!label) continue;
            const int row = static_cast<int>(i);
            if (model::rowShown(page, row)) {
                label->setVisible(true);
                label->setTop(model::rowTop(page, row));
            } else {
                label->setTop(model::kTopHorsVue);
                label->setVisible(false);
            }
        }
    }
    DerniereValeurScroll = VScroll.value();
}

void Ctr_Zandorel::AlternerCouleursDetail() {
    const std::int64_t n = TabTempoDetail->DCount();
    for (std::int64_t i = 1; i <= n; ++i) {
        toolkit::Label* label = labelOfRow(Etq_Aide, TabTempoDetail, i);
        if (!label) continue;
        label->setBackColor(model::colourNumber(i % 2 == 1 ? CouleurAide1 : CouleurAide2));
    }
}

void Ctr_Zandorel::AjoutEtqAide(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                                const std::string& CleProtocole, const std::string& TypeEtq) {
    model::insertLabelRow(*TabTempoAide, row,
                          {NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq});
}

void Ctr_Zandorel::CouleurAjoutEtqLst(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn,
                                      int TopEtq, const std::string& CleProtocole,
                                      const std::string& TypeEtq) {
    model::insertLabelRow(*TabTempoDetail, row,
                          {NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq});
}

void Ctr_Zandorel::TriCouleurEtq(int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                                 const std::string& CleProtocole, const std::string& TypeEtq) {
    const auto row = static_cast<int>(model::rowForTopEtq(*TabTempoDetail, TopEtq));
    CouleurAjoutEtqLst(row, NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq);
}

toolkit::Label& Ctr_Zandorel::creerEtiquetteAide(int i) {
    const Identite qui =
        lireIdentite(Mod.fichiers, model::codeAideOf(TabTempoAide(i, model::col::CleProtocole)));
    toolkit::Label& label = Etq_Aide.Load(++IndiceEtqMax);
    model::applyLook(label, model::lookAide(*TabTempoAide, i, qui.nom, qui.prenom, scaleRef(*this),
                                            HauteurEtq, kindColours(*this)));
    writeBack(TabTempoAide, i, label);
    label.setVisible(true);
    return label;
}

toolkit::Label& Ctr_Zandorel::creerEtiquetteDetail(int i) {
    const Identite qui =
        lireIdentite(Mod.fichiers, model::codeAideOf(TabTempoDetail(i, model::col::CleProtocole)));
    toolkit::Label& label = Etq_Aide.Load(++IndiceEtqMax);
    const model::PlannedStart planned = model::cutPlannedStart(TabTempoDetail(i, model::col::TypeEtq));
    label.setLinkItem(planned.linkItem);
    TabTempoDetail->set(i, model::col::TypeEtq, planned.typeEtq);
    const model::DetailContext context{
        scaleRef(*this), model::heuresAffichees(HeureDebutEchelle, HeureFinEchelle), NbIntervenantsTournee};
    model::applyLook(label, model::lookDetail(*TabTempoDetail, i, planned.linkItem, qui.nom, qui.prenom,
                                              context, kindColours(*this)));
    writeBack(TabTempoDetail, i, label);
    label.setVisible(true);
    return label;
}

}  // namespace control
