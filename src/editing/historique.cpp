#include "editing/historique.h"

#include <array>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "shell/ctr_zandorel.h"
#include "toolkit/form_state.h"
#include "toolkit/host.h"

namespace control {

namespace {

// The instance state that moves change, in one place: a capture copies these members, a restore
// assigns them back. Those of the day decide whether a move changed anything; those of
// the gesture are what any press and drop leaves behind, a refused one too.
auto etatDuJour(Ctr_Zandorel& c) {
    return std::tie(c.HeureDebutEchelle, c.HeureFinEchelle, c.PasQuartHeure, c.IndiceEtqMax, c.SansTournee,
                    c.TourneeAnterieure, c.JourneeAffichee, c.NbIntervenantsTournee, c.selection().DateSaisie,
                    c.DateAffichee, c.ValidationAnomalies, c.W_Sortir, c.DerniereValeurScroll,
                    c.IndiceEtqAffectee, c.NbTourneesAffectation, c.NbLignesAnomalies,
                    c.Mod.FlagAffectationEnCours, c.Mod.CodeTourneeAffectation);
}
auto etatDuGeste(Ctr_Zandorel& c) {
    return std::tie(c.IndiceEtqCourante, c.PanneauSource, c.edition.DecalageSourisX,
                    c.edition.DecalageSourisY, c.edition.DecalageImpossible, c.DebordementDecalage);
}
// The working tables that moves change besides the two label tables, which their owner snapshots.
constexpr std::size_t kTables = 3;
std::array<model::WorkTable*, kTables> tables(Ctr_Zandorel& c) {
    return {&c.TabAnomalies, &c.TabTourneeEnregistree, &c.edition.TabTempoDecale};
}
// The control array of the labels: the only controls that decide, with the tables, whether a move
// changed anything.
constexpr const char* kEtiquettes = "Etq_Aide";
// The labels of pane "AIDE" stand where the scroll bar's value puts them, and the user may scroll between
// a move and its undo: the labels and the bar come back whole, so that they hang together.
bool vientEntier(const toolkit::ControlKey& cle) {
    return cle.first == kEtiquettes || cle.first == "VScroll";
}

template <typename... T>
std::tuple<T...> valeurs(const std::tuple<T&...>& membres) {
    return membres;
}
using EtatJour = decltype(valeurs(etatDuJour(std::declval<Ctr_Zandorel&>())));
using EtatGeste = decltype(valeurs(etatDuGeste(std::declval<Ctr_Zandorel&>())));

bool memesEtiquettes(const toolkit::FormState& a, const toolkit::FormState& b) {
    const auto ea = a.elements(kEtiquettes), eb = b.elements(kEtiquettes);
    if (ea.size() != eb.size()) return false;
    for (auto i = ea.begin(), j = eb.begin(); i != ea.end(); ++i, ++j) {
        if (i->first != j->first || !(*i->second == *j->second)) return false;
    }
    return true;
}

}  // namespace

struct Historique::Instantane {
    toolkit::FormState ecran;
    int pointeur = 0;
    model::LabelTables::Snapshot etiquettes;
    std::array<std::optional<std::string>, kTables> tables;  // the whole text, none for a released table
    EtatJour jour;
    EtatGeste geste;

    // Whether anything a move is about differs: the labels, the tables, the state of the day.
    bool memeJournee(const Instantane& autre) const {
        return etiquettes == autre.etiquettes && tables == autre.tables && jour == autre.jour &&
               memesEtiquettes(ecran, autre.ecran);
    }
};

Historique::Historique(Ctr_Zandorel& ctl) : m_ctl(ctl) {}

Historique::~Historique() = default;

std::unique_ptr<Historique::Instantane> Historique::capturer() const {
    auto i = std::make_unique<Instantane>();
    // The controls that did not change since the last capture share its states.
    const Instantane* recent = m_debut               ? m_debut.get()
                               : m_avantGeste        ? m_avantGeste.get()
                               : !m_annuler.empty()  ? m_annuler.back().apres.get()
                               : !m_retablir.empty() ? m_retablir.back().avant.get()
                                                     : nullptr;
    i->ecran = toolkit::captureForm(m_ctl.UserControl, recent ? &recent->ecran : nullptr);
    i->pointeur = m_ctl.host().screenMousePointer();
    i->etiquettes = m_ctl.Tables.snapshot();
    const auto t = tables(m_ctl);
    for (std::size_t k = 0; k < t.size(); ++k) {
        if (t[k]->exists()) i->tables[k] = (*t[k])->text();
    }
    i->jour = etatDuJour(m_ctl);
    i->geste = etatDuGeste(m_ctl);
    return i;
}

void Historique::restaurer(const Instantane& vers, const Instantane& depuis) {
    // The controls first: putting them back fires no event, so no handler sees the tables half restored.
    // Those that come back whole are compared with what the screen holds now, the others with the
    // screen the move started from or ended on: a control that the move left alone stays as it is now.
    toolkit::FormState reference = depuis.ecran;
    std::erase_if(reference.controls, [](const auto& c) { return vientEntier(c.first); });
    for (auto& [cle, etat] : toolkit::captureForm(m_ctl.UserControl).controls) {
        if (vientEntier(cle)) reference.controls.emplace(cle, std::move(etat));
    }
    toolkit::restoreForm(m_ctl.UserControl, vers.ecran, reference);
    if (vers.pointeur != depuis.pointeur) m_ctl.host().setScreenMousePointer(vers.pointeur);
    // The tables and the state of the day come back whole: nothing but a move changes them while the day
    // is shown.
    m_ctl.Tables.restore(vers.etiquettes);
    const auto t = tables(m_ctl);
    for (std::size_t k = 0; k < t.size(); ++k) {
        if (!vers.tables[k]) {
            t[k]->release();
            continue;
        }
        t[k]->renew();
        (*t[k])->setText(*vers.tables[k]);
    }
    etatDuJour(m_ctl) = vers.jour;
    etatDuGeste(m_ctl) = vers.geste;
}

void Historique::annuler() {
    if (m_annuler.empty()) return;
    Entree entree = std::move(m_annuler.back());
    m_annuler.pop_back();
    m_avantGeste.reset();
    restaurer(*entree.avant, *entree.apres);
    m_retablir.push_back(std::move(entree));
}

void Historique::retablir() {
    if (m_retablir.empty()) return;
    Entree entree = std::move(m_retablir.back());
    m_retablir.pop_back();
    m_avantGeste.reset();
    restaurer(*entree.apres, *entree.avant);
    m_annuler.push_back(std::move(entree));
}

void Historique::vider() {
    m_annuler.clear();
    m_retablir.clear();
    m_avantGeste.reset();
    // A move under way that leaves the day is not one to undo.
    m_debut.reset();
}

void Historique::debutGeste() {
    if (m_oublis == 0 && !m_avantGeste) m_avantGeste = capturer();
}

Historique::Deplacement::Deplacement(Historique& h) : m_historique(h) {
    if (h.m_oublis > 0 || h.m_profondeur++ > 0) return;
    h.m_debut = h.capturer();
}

Historique::Deplacement::~Deplacement() {
    Historique& h = m_historique;
    if (h.m_oublis > 0 || --h.m_profondeur > 0 || !h.m_debut) return;
    try {
        std::unique_ptr<Instantane> apres = h.capturer();
        std::unique_ptr<Instantane> debut = std::move(h.m_debut);
        if (debut->memeJournee(*apres)) return;
        h.m_annuler.push_back(
            {h.m_avantGeste ? std::move(h.m_avantGeste) : std::move(debut), std::move(apres)});
        h.m_retablir.clear();
        if (h.m_annuler.size() > kEntreesMax) h.m_annuler.erase(h.m_annuler.begin());
    } catch (...) {
        // Without memory for the screen after the move, the move stays done and is not recorded: what was
        // recorded before it no longer leads to the screen as it is.
        h.vider();
    }
}

Historique::Oubli::Oubli(Historique& h) : m_historique(h) {
    h.vider();
    ++h.m_oublis;
}

Historique::Oubli::~Oubli() {
    --m_historique.m_oublis;
    m_historique.vider();
}

// ---- The control's entry points.

bool Ctr_Zandorel::occupe() const {
    return UserControl.dragSource() != nullptr || !UserControl.enabled();
}

bool Ctr_Zandorel::peutAnnuler() const {
    return historique.peutAnnuler() && !occupe();
}

bool Ctr_Zandorel::peutRetablir() const {
    return historique.peutRetablir() && !occupe();
}

void Ctr_Zandorel::Annuler() {
    if (peutAnnuler()) historique.annuler();
}

void Ctr_Zandorel::Retablir() {
    if (peutRetablir()) historique.retablir();
}

}  // namespace control
