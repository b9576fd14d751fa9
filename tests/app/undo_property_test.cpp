// Random moves on generated days, all undone and all redone: the screen comes back exactly each way.
#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "app/demo_data.h"
#include "app/state_dump.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "support/memory_database.h"
#include "toolkit/headless_host.h"
#include "toolkit/input.h"

namespace {

using json = nlohmann::json;

// Where the label is held while it moves, inside it.
constexpr double kPrise = 20;

// The fields of the dump that a move changes and an undo must put back.
const char* const kChamps[] = {"labels", "tables", "state", "controls", "scales"};

json ecran(const control::Ctr_Zandorel& c) {
    const json dump = json::parse(app::dumpState(c, {}, {}));
    json champs;
    for (const char* champ : kChamps)
        champs[champ] = dump[champ];
    return champs;
}

// The first place where two screens differ, for the failure's message.
std::string ecart(const json& attendu, const json& obtenu) {
    const json patch = json::diff(attendu, obtenu);
    return patch.empty() ? "" : patch[0].dump();
}

class Partie {
public:
    Partie(testing_support::MemoryDatabase& service, const std::string& tournee, unsigned graine)
        : m_ctl(m_host, service.clock), m_hasard(graine) {
        m_ctl.setTheClient(nullptr);
        m_ctl.setTheDatabase(service.db);
        m_ctl.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        m_ctl.Init();
        // The anomaly list that a display may open, closed at once.
        m_host.queueDialog("Frm_Anomalies",
                           [](toolkit::Form& f) { toolkit::input::click(*f.find("Cmd_Annuler")); });
        m_ctl.Txt_CodeTournee.setText(tournee);
        m_ctl.Cbo_Date.setText("30/11/2026");
        m_ctl.Cmd_Affichage.fireClick();
    }

    control::Ctr_Zandorel& ctl() { return m_ctl; }

    // One gesture of a planner, at random: a waiting label or a placed one dropped in the tournée, low
    // enough at times to push the labels below off the pane; a placed label sent back; chaining.
    void geste() {
        const int tirage = entre(0, 99);
        if (tirage < 10) return toolkit::input::click(m_ctl.Cmd_Enchainement);
        const bool enAide = tirage < 45;
        const int etiquette = auHasard(enAide);
        if (etiquette == 0) return;
        if (!enAide && tirage < 60) return glisser(etiquette, entre(5300, 9000), entre(1120, 5900));
        const int bas = tirage % 4 == 0 ? entre(5300, 6300) : entre(700, 6300);
        glisser(etiquette, entre(150, 4300), bas);
    }

private:
    int entre(int bas, int haut) { return std::uniform_int_distribution<int>(bas, haut)(m_hasard); }

    // A label that a user can take, in pane "AIDE" or in the tournée; 0 when there is none.
    int auHasard(bool enAide) {
        std::vector<int> candidates;
        for (const toolkit::Control* e : m_ctl.Etq_Aide.elements()) {
            if (e->index() == 0 || !e->effectivelyVisible() || !e->effectivelyEnabled()) continue;
            if ((e->left() == model::kLeftDetail) != enAide) candidates.push_back(e->index());
        }
        if (candidates.empty()) return 0;
        return candidates[static_cast<std::size_t>(entre(0, static_cast<int>(candidates.size()) - 1))];
    }

    // The label's top left corner dropped at (L, T), through the drag of the toolkit, as a mouse does it.
    void glisser(int index, double L, double T) {
        toolkit::Label& e = m_ctl.Etq_Aide(index);
        e.MouseMove(0, 0, kPrise, kPrise);
        e.MouseDown(1, 0, kPrise, kPrise);
        if (!m_ctl.UserControl.dragSource()) return;
        toolkit::input::dragOver(m_ctl.UserControl, L + kPrise, T + kPrise, 0);
        toolkit::input::dragDrop(m_ctl.UserControl, L + kPrise, T + kPrise);
    }

    toolkit::HeadlessHost m_host;
    control::Ctr_Zandorel m_ctl;
    std::mt19937 m_hasard;
};

TEST(UndoRedo, RandomMovesAllUndoneGiveTheDisplayBackAndAllRedoneTheLastMove) {
    constexpr std::size_t kDeplacements = 25;  // recorded moves per sequence
    constexpr int kGestesMax = 80;             // gestures per sequence, refused ones included
    int sequences = 0, gestes = 0, deplacements = 0;
    for (unsigned graine : {1u, 2u, 3u}) {
        testing_support::MemoryDatabase service;
        service.clock.setToday(*base::Date::fromDmy(23, 11, 2026));
        app::writeDemoService(*service.db, app::DemoOptions{service.clock.today(), 40, 0, graine});
        // Every tournée of Monday morning, of one intervenant and of two.
        const std::vector<std::string> tournees = service.keys(
            "SSIADCARACTTOURNEE", "SELECT SSIADCARACTTOURNEE AVEC 2 = \"0\" AND AVEC 3 < \"12\"");
        ASSERT_FALSE(tournees.empty());
        for (const std::string& tournee : tournees) {
            SCOPED_TRACE("graine " + std::to_string(graine) + ", tournée " + tournee);
            Partie partie(service, tournee, graine * 1000 + static_cast<unsigned>(sequences));
            control::Ctr_Zandorel& c = partie.ctl();
            ASSERT_FALSE(c.peutAnnuler());
            const json affichage = ecran(c);
            json dernier = affichage;
            // The sequence ends on a gesture that made a move: a refused gesture after it is no move,
            // and is not redone.
            for (int n = 0; n < kGestesMax && c.historique.annulables() < kDeplacements; ++n) {
                const std::size_t avant = c.historique.annulables();
                partie.geste();
                ++gestes;
                if (c.historique.annulables() > avant) dernier = ecran(c);
            }
            const std::size_t faits = c.historique.annulables();
            ASSERT_TRUE(c.peutAnnuler()) << "no gesture made a move";
            while (c.peutAnnuler())
                c.Annuler();
            EXPECT_EQ(ecart(affichage, ecran(c)), "") << "after " << faits << " undos";
            for (std::size_t i = 0; i < faits; ++i)
                c.Retablir();
            EXPECT_FALSE(c.peutRetablir());
            EXPECT_EQ(ecart(dernier, ecran(c)), "") << "after " << faits << " redos";
            ++sequences;
            deplacements += static_cast<int>(faits);
        }
    }
    std::cout << "[ undo/redo ] " << sequences << " sequences, " << gestes << " gestures, " << deplacements
              << " moves undone and redone\n";
}

}  // namespace
