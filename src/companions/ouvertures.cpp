#include "shell/ctr_zandorel.h"

// How the control opens its companion screens and its help.

#include "base/text.h"
#include "companions/companions.h"
#include "companions/frm_accords.h"
#include "companions/frm_dossier_aide.h"
#include "companions/frm_elem_gest_ssiad.h"
#include "companions/frm_protocole_ssiad.h"
#include "companions/frm_soins.h"
#include "companions/frm_ssiad_caract_tournee.h"
#include "data/layouts.h"
#include "toolkit/host.h"

namespace control {
namespace {

// The page of help and the title of its window, as the help menu names them.
constexpr const char* kPageAide = "SSIADTournee.htm";
constexpr const char* kTitreAide = "Gestion des tournées SSIAD";

}  // namespace

std::string Ctr_Zandorel::codeAideEtiquetteCourante() const {
    return base::Left(Etq_Aide(IndiceEtqCourante).tag(), 5);
}

void Ctr_Zandorel::Cmd_Tournee_Click() {
    // 1.
    bool tourneeExistante = false;
    if (!Txt_CodeTournee.text().empty()) {
        mvdb::DynamicRecord enreg;
        tourneeExistante =
            data::LireEnregistrement(*Mod.fichiers.SSIADCARACTTOURNEE, enreg, Txt_CodeTournee.text());
    }

    // 2.
    Frm_SsiadCaractTournee form(*this);
    form.setTheDatabase(Mod.fichiers.TheDatabase);
    form.setTheClient(Mod.TheClient);
    form.setCodeTournee(Txt_CodeTournee.text());
    form.setDroits(Droits);
    form.Demarrer();
    host().ShowModal(form);

    // 3. Only a tournée that was not there before can have made the list grow.
    if (tourneeExistante) return;
    Cbo_Tournee.clear();
    Cbo_Tournee.setText("");
    RequeteTournee();
}

void Ctr_Zandorel::Mnu_DossierAide_Click() {
    Frm_DossierAide form(*this);
    form.setDroits(Droits);
    form.setTheDatabase(Mod.fichiers.TheDatabase);
    form.setTheClient(Mod.TheClient);
    form.setDroits(Droits);
    form.Demarrer(codeAideEtiquetteCourante());
    host().ShowModal(form);
}

void Ctr_Zandorel::Mnu_ElemGestSSIAD_Click() {
    const std::string code = codeAideEtiquetteCourante();
    Frm_ElemGestSSIAD form(*this);
    form.setDroits(Droits);
    form.setCodeAide(code);
    mvdb::DynamicRecord& civil = Mod.fichiers.EnregCIVILAIDE;
    if (data::LireEnregistrement(*Mod.fichiers.CIVILAIDE, civil, code))
        form.setNomAide(civil(data::civilaide::kNom) + " " + civil(data::civilaide::kPrenom));
    form.setTheDatabase(Mod.fichiers.TheDatabase);
    form.setTheClient(Mod.TheClient);
    form.setDroits(Droits);
    form.Demarrer();
    host().ShowModal(form);
}

void Ctr_Zandorel::Mnu_ProtocoleTraitement_Click() {
    Frm_ProtocoleSsiad form(*this);
    form.setDroits(Droits);
    form.setCodeAide(codeAideEtiquetteCourante());
    // The date goes through its internal day and back, so the screen gets it in one form whatever was typed.
    const std::string jour = Txt_Date.visible() ? Txt_Date.text() : Cbo_Date.text();
    form.setDateProtocole(ObjetConversion.DateDepuisInterne(ObjetConversion.DateInterne(jour)));
    form.setDroits(Droits);
    form.setTheDatabase(Mod.fichiers.TheDatabase);
    form.setTheClient(Mod.TheClient);
    form.Demarrer();
    host().ShowModal(form);
}

void Ctr_Zandorel::ouvrirEcranService(EcranServiceType type) {
    // After the tournées' screen, as after the tournée characteristics: a tournée code shown that names a
    // tournée stays shown; otherwise the list is made again, since it may have grown.
    bool tourneeExistante = type != EcranServiceType::Tournees;
    if (!tourneeExistante && !Txt_CodeTournee.text().empty()) {
        mvdb::DynamicRecord enreg;
        tourneeExistante =
            data::LireEnregistrement(*Mod.fichiers.SSIADCARACTTOURNEE, enreg, Txt_CodeTournee.text());
    }
    const auto montrer = [this]<typename Ecran>() {
        Ecran ecran(*this);
        ecran.setTheDatabase(Mod.fichiers.TheDatabase);
        ecran.setTheClient(Mod.TheClient);
        ecran.setDroits(Droits);
        ecran.ouvrir();
        host().ShowModal(ecran);
    };
    switch (type) {
        case EcranServiceType::Soins:
            montrer.operator()<Frm_Soins>();
            break;
        case EcranServiceType::Accords:
            montrer.operator()<Frm_Accords>();
            break;
        case EcranServiceType::Aides:
            montrer.operator()<Frm_DossierAide>();
            break;
        case EcranServiceType::Protocoles:
            montrer.operator()<Frm_ProtocoleSsiad>();
            break;
        case EcranServiceType::ElementsGestion:
            montrer.operator()<Frm_ElemGestSSIAD>();
            break;
        case EcranServiceType::Tournees:
            montrer.operator()<Frm_SsiadCaractTournee>();
            break;
    }
    if (tourneeExistante) return;
    Cbo_Tournee.clear();
    Cbo_Tournee.setText("");
    RequeteTournee();
}

void Ctr_Zandorel::Mnu_Sommaire_Click() {
    host().ShowHelp(kPageAide, kTitreAide);
}

}  // namespace control
