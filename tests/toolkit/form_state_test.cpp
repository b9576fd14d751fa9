#include "toolkit/form_state.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "base/error.h"
#include "toolkit/control_array.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"
#include "toolkit/headless_host.h"

namespace toolkit {
namespace {

// A small screen whose every event writes a word, and whose observer counts what it hears.
struct Ecran : Observer {
    HeadlessHost host;
    Form form{"Ecran", host};
    Frame cadre{"Cadre", &form};
    TextBox texte{"Texte", &form};
    ComboBox liste{"Liste", &form};
    OptionButton matin{"Matin", &cadre}, soir{"Soir", &cadre};
    VScrollBar barre{"Barre", &form};
    Line trait{"Trait", &form};
    ControlArray<Label> etiquettes{"Etiquettes", &form};
    std::string evenements;
    int annonces = 0;

    Ecran() {
        form.setObserver(this);
        for (Control* c : std::initializer_list<Control*>{&texte, &liste, &matin, &soir, &barre}) {
            c->Change = [this, c] { evenements += c->name() + ".Change "; };
            c->Click = [this, c] { evenements += c->name() + ".Click "; };
            c->GotFocus = [this, c] { evenements += c->name() + ".GotFocus "; };
            c->LostFocus = [this, c] { evenements += c->name() + ".LostFocus "; };
        }
        liste.addItem("lundi");
        liste.addItem("mardi");
        barre.setMax(10);
        etiquettes.Load(1).setCaption("un");
        etiquettes.Load(2).setCaption("deux");
    }
    void changed(Control&, Property) override { ++annonces; }
    std::string legendes() const {
        std::string out;
        for (const Control* e : etiquettes.elements())
            out += std::to_string(e->index()) + "=" + e->caption() + " ";
        return out;
    }
};

TEST(RestoreForm, FailsOnAControlTheFormLacks) {
    struct Cas {
        const char* nom;
        std::function<void(FormState&)> changer;
        std::string message;
    } const cas[] = {
        {"a control of another form",
         [](FormState& s) {
             s.controls[{"Txt_Autre", -1}] = std::make_shared<ControlState>();
         },
         "Le contrôle Txt_Autre n'existe pas sur cet écran"},
        {"an element of an array the form lacks",
         [](FormState& s) {
             s.controls[{"Autres", 3}] = std::make_shared<ControlState>();
         },
         "Le contrôle Autres(3) n'existe pas sur cet écran"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        const FormState maintenant = captureForm(e.form);
        FormState autre = maintenant;
        k.changer(autre);
        try {
            restoreForm(e.form, autre, maintenant);
            ADD_FAILURE() << "no failure";
        } catch (const base::Error& erreur) {
            EXPECT_EQ(std::string(erreur.what()), k.message);
        }
    }
}

TEST(RestoreForm, PutsBackWhatDiffersWithoutAnyEventAndKeepsTheRest) {
    Ecran e;
    e.texte.setFocus();
    const FormState avant = captureForm(e.form);
    e.texte.setText("001");
    e.liste.setListIndex(1);
    e.soir.setValue(true);
    e.barre.setValue(4);
    e.trait.setEnds(1, 2, 3, 4);
    e.etiquettes.Unload(2);
    e.etiquettes.Load(3).setCaption("trois");
    e.etiquettes(1).setCaption("UN");
    e.liste.setFocus();
    const FormState apres = captureForm(e.form);
    // Changed after the capture and by neither state: it stays.
    e.cadre.setCaption("Période");
    e.evenements.clear();
    e.annonces = 0;

    restoreForm(e.form, avant, apres);
    EXPECT_EQ(e.evenements, "");
    EXPECT_GT(e.annonces, 0);
    EXPECT_EQ(e.texte.text(), "");
    EXPECT_EQ(e.liste.listIndex(), -1);
    EXPECT_EQ(e.liste.text(), "");
    EXPECT_FALSE(e.soir.value());
    EXPECT_FALSE(e.matin.value());
    EXPECT_EQ(e.barre.value(), 0);
    EXPECT_EQ(e.trait.x2(), 0);
    EXPECT_EQ(e.legendes(), "0= 1=un 2=deux ");
    EXPECT_EQ(e.form.activeControl(), &e.texte);
    EXPECT_EQ(e.cadre.caption(), "Période");

    restoreForm(e.form, apres, avant);
    EXPECT_EQ(e.evenements, "");
    EXPECT_EQ(e.texte.text(), "001");
    EXPECT_EQ(e.liste.text(), "mardi");
    EXPECT_TRUE(e.soir.value());
    EXPECT_EQ(e.barre.value(), 4);
    EXPECT_EQ(e.trait.y2(), 4);
    EXPECT_EQ(e.legendes(), "0= 1=UN 3=trois ");
    EXPECT_EQ(e.form.activeControl(), &e.liste);
    FormState maintenant = captureForm(e.form);
    auto cadre = std::make_shared<ControlState>(*maintenant.controls.at({"Cadre", -1}));
    EXPECT_EQ(cadre->caption, "Période");
    cadre->caption.clear();
    maintenant.controls[{"Cadre", -1}] = cadre;
    EXPECT_TRUE(maintenant == apres);
}

TEST(CaptureForm, SharesTheStatesThatDidNotChangeSinceTheCaptureGiven) {
    Ecran e;
    const FormState premiere = captureForm(e.form);
    e.texte.setText("001");
    e.etiquettes.Load(3);
    const FormState seconde = captureForm(e.form, &premiere);
    EXPECT_EQ(seconde.controls.at({"Liste", -1}), premiere.controls.at({"Liste", -1}));
    EXPECT_EQ(seconde.controls.at({"Etiquettes", 1}), premiere.controls.at({"Etiquettes", 1}));
    EXPECT_NE(seconde.controls.at({"Texte", -1}), premiere.controls.at({"Texte", -1}));
    EXPECT_EQ(seconde.controls.at({"Texte", -1})->text, "001");
    EXPECT_TRUE(seconde.controls.count({"Etiquettes", 3}));
    EXPECT_FALSE(seconde == premiere);
    EXPECT_TRUE(captureForm(e.form) == seconde);
}

}  // namespace
}  // namespace toolkit
