#include "companions/frm_soins.h"

// The soins screen. A soin's code is made here, the next of the codes in use: the protocoles and the
// reports name soins by code, so a code once given never changes.

#include "base/error.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace control {
namespace {

namespace so = data::soins;

constexpr const char* kLibelle = "Libellé";
// The width of the codes when the catalogue is empty.
constexpr int kLargeurCode = 2;
constexpr std::string_view kActeInfirmier = "O";

}  // namespace

Frm_Soins::Frm_Soins(Ctr_Zandorel& ctl)
    : EcranService("Frm_Soins", ctl, "Soins", 9600, 4800),
      Etq_Code("Etq_Code", this),
      Txt_Libelle("Txt_Libelle", this),
      Chk_ActeInfirmier("Chk_ActeInfirmier", this) {
    Etq_Code.setGeometry(gaucheChamps(), 120, 5700, 255);
    legende(kLibelle, gaucheChamps(), 520, 5700);
    Txt_Libelle.setGeometry(gaucheChamps(), 800, 5700, 315);
    Chk_ActeInfirmier.setGeometry(gaucheChamps(), 1320, 5700, 315);
    Chk_ActeInfirmier.setCaption("Acte infirmier");
}

std::vector<EcranService::Element> Frm_Soins::elements() {
    const mvdb::DynamicRecord reponse =
        data::Interroger(database(), "SELECT SSIADSOINS PAR 0", data::kSSIADSOINS, "0 1");
    std::vector<Element> liste;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) liste.push_back({reponse(i, 1), reponse(i, 1) + "   " + reponse(i, 2)});
    return liste;
}

void Frm_Soins::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (cle.empty() || !data::LireEnregistrement(*fichier(data::kSSIADSOINS), enreg, cle))
        enreg = mvdb::DynamicRecord();
    Etq_Code.setCaption(cle.empty() ? "Nouveau soin : son code sera donné à l'enregistrement"
                                    : "Soin " + cle);
    Txt_Libelle.setText(enreg(so::kLibelle));
    Chk_ActeInfirmier.setValue(enreg(so::kActeInfirmier) == kActeInfirmier);
}

std::string Frm_Soins::verifier() {
    return verifierRempli(kLibelle, Txt_Libelle.text());
}

std::string Frm_Soins::ecrire(const std::string& cle) {
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADSOINS);
    std::string code = cle;
    mvdb::DynamicRecord enreg;
    if (code.empty()) {
        // Read inside the transaction: a code another workstation just gave is seen.
        std::vector<std::string> codes;
        for (const Element& e : elements())
            codes.push_back(e.cle);
        code = prochainCode(codes, kLargeurCode);
        if (code.empty()) throw base::Error(base::codes::kBadData, "Tous les codes de soin sont pris.");
        enreg = f->New(code);
    } else {
        enreg = f->Read(code);  // keeps the attributes that other programs own
    }
    enreg.set(so::kLibelle, Txt_Libelle.text());
    enreg.set(so::kActeInfirmier, Chk_ActeInfirmier.value() ? std::string(kActeInfirmier) : "");
    enreg.DBWrite();
    return code;
}

std::string Frm_Soins::designation(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    const std::string libelle =
        data::LireEnregistrement(*fichier(data::kSSIADSOINS), enreg, cle) ? enreg(so::kLibelle) : "";
    return "le soin " + cle + " « " + libelle + " »";
}

std::vector<std::string> Frm_Soins::utilisateurs(const std::string& cle) {
    const mvdb::DynamicRecord reponse = data::Interroger(
        database(), "SELECT SSIADPROTOCOLE AVEC 3 = \"" + cle + "\" PAR 0", data::kSSIADPROTOCOLE, "0");
    std::vector<std::string> protocoles;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) protocoles.push_back("protocole " + reponse(i, 1));
    return protocoles;
}

void Frm_Soins::effacer(const std::string& cle) {
    fichier(data::kSSIADSOINS)->Delete(cle);
}

}  // namespace control
