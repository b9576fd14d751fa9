#include "companions/ecran_service.h"

#include <gtest/gtest.h>

#include "companions/frm_elem_gest_ssiad.h"
#include "service_test.h"
#include "toolkit/host.h"

namespace {

using control::EcranServiceType;

// Escape pressed in a field of each screen closes it as Fermer does, and so is refused where Fermer is.
TEST(EcranService, EscapeClosesTheScreenAsFermerDoes) {
    struct Cas {
        const char* nom;
        EcranServiceType type;
        const char *forme, *champ;
        std::function<void(toolkit::Form&)> changer;
        std::string message;
    } const cas[] = {
        {"elements, a sector changed and not saved", EcranServiceType::ElementsGestion, "Frm_ElemGestSSIAD",
         "Cbo_Secteur",
         [](toolkit::Form& f) { static_cast<control::Frm_ElemGestSSIAD&>(f).Cbo_Secteur.setText("N1"); },
         "Le secteur a été modifié : enregistrez-le ou annulez la modification avant de fermer."},
        {"soins", EcranServiceType::Soins, "Frm_Soins", "Txt_Libelle", nullptr, ""},
        {"accords", EcranServiceType::Accords, "Frm_Accords", "Txt_PremierJour", nullptr, ""},
        {"aidés", EcranServiceType::Aides, "Frm_DossierAide", "Txt_Nom", nullptr, ""},
        {"protocoles", EcranServiceType::Protocoles, "Frm_ProtocoleSsiad", "Cbo_Aide", nullptr, ""},
        {"elements", EcranServiceType::ElementsGestion, "Frm_ElemGestSSIAD", "Cbo_Secteur", nullptr, ""},
        {"tournées", EcranServiceType::Tournees, "Frm_SsiadCaractTournee", "Txt_Libelle", nullptr, ""},
        {"the list", EcranServiceType::Soins, "Frm_Soins", "Lst_Elements", nullptr, ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        testing_support::ServiceEcrans e;
        bool ouvert = true;
        e.f.host.queueDialog(k.forme, [&](toolkit::Form& form) {
            if (k.changer) k.changer(form);
            toolkit::input::key(*form.find(k.champ), toolkit::Key::Escape);
            ouvert = form.isLoaded();
            // What the planner does next is not this test's: the change taken back, the screen closed.
            if (toolkit::Control* annuler = form.find("Cmd_Annuler"); ouvert && annuler) annuler->fireClick();
            if (ouvert) form.unload();
        });
        e.c.ouvrirEcranService(k.type);
        EXPECT_EQ(ouvert, !k.message.empty());
        EXPECT_EQ(e.message(), k.message);
    }
}

}  // namespace
