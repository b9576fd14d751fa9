#include <gtest/gtest.h>

#include <string>

#include "base/text.h"
#include "model/labels.h"
#include "support/small_service.h"

namespace {

// Labels a, b, c of the tournée, 30 minutes each: 210 twips high at 105 twips a quarter of an hour.
struct Pile : testing_support::SmallService {
    Pile() {
        aide("00012", "DUPONT");
        start();
        c.PasQuartHeure = 105;
        c.Tables.renew(model::Pane::Detail);
        c.Tables.renew(model::Pane::Aide);
    }
    int poser(double top) {
        const int i = ++c.IndiceEtqMax;
        const std::string cle = "00012210000000011" + base::zeroPad(800 + i, 4);
        toolkit::Label& e = c.Etq_Aide.Load(i);
        e.setGeometry(model::kLeftDetail, top, 4230, 210);
        e.setTag(model::makeTag(cle, "30"));
        e.setLinkItem("875");
        c.TriCouleurEtq(i, 800, 900, 30, static_cast<int>(top), cle, "I");
        return i;
    }
    std::string ou(int i) {
        const toolkit::Label& e = c.Etq_Aide(i);
        return e.left() == model::kLeftDetail ? base::numberText(e.top()) + " " + e.linkItem() : "AIDE";
    }
};

// a, first at 300, is dropped at `position`: the dry run on the copy, then the push itself.
TEST(DecalerEtiquettes, PushesBelowEachOtherWhatTheDryRunFoundAndTheyDifferAtEquality) {
    struct Cas {
        const char* nom;
        double b, c;
        int position;
        bool impossible;
        const char* pousse;  // b, c, then the rows of TabTempoDetail and TabTempoAide
    } const cas[] = {
        // clang-format off
        {"the worked example: b, then c below it", 1000, 1200, 900,  false, "1110 925, | 1320 975, | 3/0"},
        {"b starts exactly where a ends",          1110, 1500, 900,  false, "1110 875 | 1500 875 | 3/0"},
        {"the same near the bottom: refused",      2000, 6140, 5930, true,  "2000 875 | 6140 875 | 3/0"},
        {"c runs off the bottom",                  5900, 6100, 5800, true,  "6010 925, | AIDE | 2/1"},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Pile p;
        const int a = p.poser(300), b = p.poser(k.b), c = p.poser(k.c);
        const std::string detail = p.c.TabTempoDetail->text();
        p.c.PanneauSource = model::Pane::Detail;
        p.c.edition.TabTempoDecale.renew();
        p.c.edition.TabTempoDecale->setText(detail);
        p.c.TrierTabTempoDetail(a, k.position, false);
        p.c.VerifEtqDecale(a, 210, k.position);
        EXPECT_EQ(p.c.edition.DecalageImpossible, k.impossible);
        EXPECT_EQ(p.c.edition.TabTempoDecale(1, 1), k.position < k.b ? "1" : "2");
        EXPECT_EQ(p.c.TabTempoDetail->text(), detail);

        p.c.Etq_Aide(a).setTop(k.position);
        p.c.DecalerEtiquettes(a, 210);
        EXPECT_EQ(p.ou(b) + " | " + p.ou(c) + " | " + std::to_string(p.c.TabTempoDetail->DCount()) + "/" +
                      std::to_string(p.c.TabTempoAide->DCount()),
                  k.pousse);
        EXPECT_EQ(p.c.DebordementDecalage, p.ou(c) == "AIDE");
    }
}

}  // namespace
