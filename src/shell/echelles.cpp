#include <optional>

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

// The label of row i of a pane's table, found through NumEtq; nullptr when the row has none loaded.
toolkit::Label* labelOfRow(Ctr_Zandorel& c, model::Pane pane, std::int64_t i) {
    const std::optional<int> index = c.Tables.labelOfRow(pane, i);
    if (!index || !c.Etq_Aide.exists(*index)) return nullptr;
    return &c.Etq_Aide(*index);
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
    if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
    c.Tables.release(model::Pane::Aide);
    c.HeureDebutEchelle = heureDebut;
    c.HeureFinEchelle = heureFin;
    c.ChargerEtiquetteHeuresAide(c.HeureDebutEchelle, c.HeureFinEchelle);
    c.ChargerEtiquetteHeuresDetail(c.HeureDebutEchelle, c.HeureFinEchelle);
}

void writeBack(model::LabelTables& tables, model::Pane pane, int i, const toolkit::Label& label) {
    tables.setTopEtq(pane, i, label.top());
    tables.setNumEtq(pane, i, label.index());
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
            toolkit::Label* label = labelOfRow(*this, model::Pane::Aide, i);
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
        toolkit::Label* label = labelOfRow(*this, model::Pane::Detail, i);
        if (!label) continue;
        label->setBackColor(
            model::colourNumber(model::LabelTables::alternatingColour(i, CouleurAide1, CouleurAide2)));
    }
}

void Ctr_Zandorel::AjoutEtqAide(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                                const std::string& CleProtocole, const std::string& TypeEtq) {
    Tables.insertAt(model::Pane::Aide, row,
                    {NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq});
}

void Ctr_Zandorel::CouleurAjoutEtqLst(int row, int NumEtq, int HeureDebut, int HeureFin, int DureeMn,
                                      int TopEtq, const std::string& CleProtocole,
                                      const std::string& TypeEtq) {
    Tables.insertAt(model::Pane::Detail, row,
                    {NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq});
}

void Ctr_Zandorel::TriCouleurEtq(int NumEtq, int HeureDebut, int HeureFin, int DureeMn, int TopEtq,
                                 const std::string& CleProtocole, const std::string& TypeEtq) {
    Tables.insertByPosition({NumEtq, HeureDebut, HeureFin, DureeMn, TopEtq, CleProtocole, TypeEtq});
}

model::ScaleRef Ctr_Zandorel::echelleRef() const {
    return {model::HeureVersCentiemes(HeureDebutEchelle), PasQuartHeure};
}

model::KindColours Ctr_Zandorel::couleursNatures() const {
    return {CouleurInfirmier, CouleurSoignant, CouleurMixte};
}

void Ctr_Zandorel::habillerEtiquetteAide(toolkit::Label& label, std::int64_t i, Textes textes) {
    const data::FichiersSSIAD& f = Mod.fichiers;
    model::LabelLook look = model::lookAide(*TabTempoAide, i, f.EnregCIVILAIDE(data::civilaide::kNom),
                                            f.EnregCIVILAIDE(data::civilaide::kPrenom), echelleRef(),
                                            HauteurEtq, couleursNatures());
    if (textes == Textes::Gardes) {
        look.caption = label.caption();
        look.toolTip = label.toolTipText();
    }
    model::applyLook(label, look);
    Tables.setTopEtq(model::Pane::Aide, i, label.top());
}

toolkit::Label& Ctr_Zandorel::creerEtiquetteAide(int i) {
    lireIdentite(Mod.fichiers, model::codeAideOf(TabTempoAide(i, model::col::CleProtocole)));
    toolkit::Label& label = Etq_Aide.Load(++IndiceEtqMax);
    habillerEtiquetteAide(label, i, Textes::Refaits);
    Tables.setNumEtq(model::Pane::Aide, i, label.index());
    label.setVisible(true);
    return label;
}

toolkit::Label& Ctr_Zandorel::creerEtiquetteDetail(int i) {
    const Identite qui =
        lireIdentite(Mod.fichiers, model::codeAideOf(TabTempoDetail(i, model::col::CleProtocole)));
    toolkit::Label& label = Etq_Aide.Load(++IndiceEtqMax);
    const std::string linkItem = Tables.takePlannedStart(i);
    label.setLinkItem(linkItem);
    const model::DetailContext context{
        echelleRef(), model::heuresAffichees(HeureDebutEchelle, HeureFinEchelle), NbIntervenantsTournee};
    model::applyLook(label, model::lookDetail(*TabTempoDetail, i, linkItem, qui.nom, qui.prenom, context,
                                              couleursNatures()));
    writeBack(Tables, model::Pane::Detail, i, label);
    label.setVisible(true);
    return label;
}

}  // namespace control
