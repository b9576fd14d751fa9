#include "companions/frm_protocole_ssiad.h"

// The protocoles screen.

#include <algorithm>

#include "base/text.h"
#include "companions/regles_service.h"
#include "companions/saisie.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"

namespace control {
namespace {

namespace pr = data::protocole;

constexpr int kLongueurElement = 6;
constexpr int kLongueurJour = 5;
constexpr double kPlusLarge = 2400;

// The code of an item "code label" of a list of soins or elements: what comes before the first blank.
std::string code(const std::string& item) {
    return item.substr(0, item.find(' '));
}

// The soins of the catalogue as "code label", in code order.
std::vector<std::string> catalogue(mvdb::Database& database) {
    const mvdb::DynamicRecord reponse = data::Interroger(
        database, "SELECT SSIADSOINS PAR 0", data::kSSIADSOINS, "0 " + std::to_string(data::soins::kLibelle));
    std::vector<std::string> out;
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i)
        if (!reponse(i, 1).empty()) out.push_back(reponse(i, 1) + " " + reponse(i, 2));
    return out;
}

// The item of `liste` whose code is `valeur`; `valeur` itself when there is none.
std::string itemDe(const std::vector<std::string>& liste, const std::string& valeur) {
    const auto it =
        std::find_if(liste.begin(), liste.end(), [&](const std::string& i) { return code(i) == valeur; });
    return it == liste.end() ? valeur : *it;
}

}  // namespace

Frm_ProtocoleSsiad::Frm_ProtocoleSsiad(Ctr_Zandorel& ctl)
    :  // The rows name the aidé, the window, the duration, the soins and the days: the list is wide.
      EcranService("Frm_ProtocoleSsiad", ctl, "Protocoles de soins", 11400 + kPlusLarge, 7560,
                   kLargeurListe + kPlusLarge),
      Cbo_Aide("Cbo_Aide", this),
      Cbo_Element("Cbo_Element", this),
      Chk_Lundi("Chk_Lundi", this),
      Chk_Mardi("Chk_Mardi", this),
      Chk_Mercredi("Chk_Mercredi", this),
      Chk_Jeudi("Chk_Jeudi", this),
      Chk_Vendredi("Chk_Vendredi", this),
      Chk_Samedi("Chk_Samedi", this),
      Chk_Dimanche("Chk_Dimanche", this),
      Txt_Debut("Txt_Debut", this),
      Txt_Fin("Txt_Fin", this),
      Txt_DureeMn("Txt_DureeMn", this),
      Cbo_Soin("Cbo_Soin", this),
      Cmd_AjouterSoin("Cmd_AjouterSoin", this),
      Lst_Soins("Lst_Soins", this),
      Cmd_RetirerSoin("Cmd_RetirerSoin", this),
      Cbo_NbIntervenants("Cbo_NbIntervenants", this),
      Txt_PremierJour("Txt_PremierJour", this),
      Txt_DernierJour("Txt_DernierJour", this) {
    const double gauche = gaucheChamps(), champs = gaucheChamps() + 1920;
    legende("Aidé", gauche, 150, 1860);
    Cbo_Aide.setGeometry(champs, 120, 3600, 315);
    legende("Élément de gestion", gauche, 570, 1860);
    Cbo_Element.setGeometry(champs, 540, 2400, 315);
    legende("Jours (aucun : tous)", gauche, 990, 1860);
    const char* const noms[] = {"Lundi", "Mardi", "Mercredi", "Jeudi", "Vendredi", "Samedi", "Dimanche"};
    int j = 0;
    for (toolkit::CheckBox* c : jours()) {
        c->setCaption(noms[j]);
        c->setGeometry(champs + (j % 4) * 1380, 960 + (j / 4) * 360, 1320, 315);
        ++j;
    }
    const std::pair<toolkit::TextBox*, const char*> heures[] = {{&Txt_Debut, "Début de la fenêtre"},
                                                                {&Txt_Fin, "Fin de la fenêtre"},
                                                                {&Txt_DureeMn, "Durée (minutes)"}};
    double top = 1800;
    for (const auto& [boite, texte] : heures) {
        legende(texte, gauche, top + 30, 1860);
        boite->setGeometry(champs, top, 960, 315);
        boite->setMaxLength(5);
        top += 420;
    }
    legende("Soins", gauche, top + 30, 1860);
    Cbo_Soin.setGeometry(champs, top, 3600, 315);
    bouton(Cmd_AjouterSoin, "Ajouter", champs + 3720, top - 30);
    top += 420;
    Lst_Soins.setGeometry(champs, top, 3600, 1080);
    bouton(Cmd_RetirerSoin, "Retirer", champs + 3720, top);
    top += 1200;
    legende("Intervenants", gauche, top + 30, 1860);
    Cbo_NbIntervenants.setGeometry(champs, top, 720, 315);
    Cbo_NbIntervenants.addItem("1");
    Cbo_NbIntervenants.addItem("2");
    top += 420;
    legende("Premier jour", gauche, top + 30, 1860);
    Txt_PremierJour.setGeometry(champs, top, 1200, 315);
    Txt_PremierJour.setMaxLength(10);
    top += 420;
    legende("Dernier jour", gauche, top + 30, 1860);
    Txt_DernierJour.setGeometry(champs, top, 1200, 315);
    Txt_DernierJour.setMaxLength(10);
    Cbo_Aide.Click = [this] { listerElements(""); };
    Cmd_AjouterSoin.Click = [this] { Cmd_AjouterSoin_Click(); };
    Cmd_RetirerSoin.Click = [this] { Cmd_RetirerSoin_Click(); };
}

std::vector<toolkit::CheckBox*> Frm_ProtocoleSsiad::jours() {
    return {&Chk_Lundi, &Chk_Mardi, &Chk_Mercredi, &Chk_Jeudi, &Chk_Vendredi, &Chk_Samedi, &Chk_Dimanche};
}

void Frm_ProtocoleSsiad::setCodeAide(const std::string& code) {
    m_code = code;
    recu("CodeAide");
}

void Frm_ProtocoleSsiad::setDateProtocole(const std::string& date) {
    m_date = date;
    recu("DateProtocole");
}

void Frm_ProtocoleSsiad::Demarrer() {
    // In force on the date: begun on or before it, and not ended before it (an empty end never ends).
    const std::string jour = m_ctl.ObjetConversion.DateInterne(m_date);
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADPROTOCOLE);
    std::string enVigueur;
    for (const std::string& cle : m_code.empty() ? std::vector<std::string>{}
                                                 : clesSelectionnees(database(), data::kSSIADPROTOCOLE,
                                                                     "CodeAide = \"" + m_code + "\"")) {
        mvdb::DynamicRecord enreg;
        if (!enVigueur.empty() || !data::LireEnregistrement(*f, enreg, cle)) continue;
        const std::string fin = enreg(pr::kDernierJour);
        if (!jour.empty() && (base::compareValues(enreg(pr::kPremierJour), jour) > 0 ||
                              (!fin.empty() && base::compareValues(fin, jour) < 0)))
            continue;
        enVigueur = cle;
    }
    Txt_Recherche.setText(m_code);
    ouvrir(enVigueur);
}

std::vector<EcranService::Element> Frm_ProtocoleSsiad::elements() {
    const std::vector<std::string> aides = listeAides(database());
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADPROTOCOLE);
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    std::vector<Element> out;
    for (const std::string& cle : clesSelectionnees(database(), data::kSSIADPROTOCOLE, "")) {
        mvdb::DynamicRecord enreg;
        if (!data::LireEnregistrement(*f, enreg, cle)) continue;
        std::string soins;
        for (const std::string& s : valeurs(enreg, pr::kSoins))
            soins += (soins.empty() ? "" : " ") + s;
        const std::string dernier = enreg(pr::kDernierJour);
        // The aidé first: the planner looks for a person, then for one of its windows.
        out.push_back({cle, itemDe(aides, base::Left(cle, 5)) + "   " + heureSaisie(base::Right(cle, 4)) +
                                " - " + heureSaisie(enreg(pr::kBorneFin)) + "   " + enreg(pr::kDureeMn) +
                                " mn   " + soins + "   du " +
                                conversion.DateDepuisInterne(enreg(pr::kPremierJour)) +
                                (dernier.empty() ? "" : " au " + conversion.DateDepuisInterne(dernier))});
    }
    return out;
}

void Frm_ProtocoleSsiad::listerElements(const std::string& element) {
    const std::string aide = code(Cbo_Aide.text());
    Cbo_Element.clear();
    if (aide.size() == 5) {
        const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADELEMGEST);
        for (const std::string& cle :
             clesSelectionnees(database(), data::kSSIADELEMGEST, "CodeAide = \"" + aide + "\"")) {
            mvdb::DynamicRecord enreg;
            // Only the aidé's own elements: longer keys are look-ups of the assignment dialog.
            if (cle.size() != 5 + kLongueurElement || !data::LireEnregistrement(*f, enreg, cle)) continue;
            Cbo_Element.addItem(base::Mid(cle, 6) + " " + enreg(data::elemgest::kSecteur));
        }
    }
    const std::string choisi = itemDe(Cbo_Element.items(), element);
    Cbo_Element.setText(element.empty() && Cbo_Element.listCount() > 0 ? Cbo_Element.list(0) : choisi);
}

void Frm_ProtocoleSsiad::afficher(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    if (!cle.empty()) data::LireEnregistrement(*fichier(data::kSSIADPROTOCOLE), enreg, cle);
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    Cbo_Aide.clear();
    for (const std::string& a : listeAides(database()))
        Cbo_Aide.addItem(a);
    Cbo_Aide.setText(itemDe(Cbo_Aide.items(), cle.empty() ? m_code : base::Left(cle, 5)));
    listerElements(cle.empty() ? "" : base::Mid(cle, 11, kLongueurElement));
    const std::vector<std::string> joursEnreg = valeurs(enreg, pr::kJoursSemaine);
    int j = 1;
    for (toolkit::CheckBox* c : jours())
        c->setValue(std::find(joursEnreg.begin(), joursEnreg.end(), std::to_string(j++)) != joursEnreg.end());
    m_debutCentiemes = cle.empty() ? "" : base::Right(cle, 4);
    m_finCentiemes = enreg(pr::kBorneFin);
    m_debutAffiche = m_debutCentiemes.empty() ? "" : heureSaisie(m_debutCentiemes);
    m_finAffichee = m_finCentiemes.empty() ? "" : heureSaisie(m_finCentiemes);
    Txt_Debut.setText(m_debutAffiche);
    Txt_Fin.setText(m_finAffichee);
    Txt_DureeMn.setText(enreg(pr::kDureeMn));
    const std::vector<std::string> soins = catalogue(database());
    Cbo_Soin.clear();
    for (const std::string& s : soins)
        Cbo_Soin.addItem(s);
    Cbo_Soin.setText("");
    Lst_Soins.clear();
    for (const std::string& s : valeurs(enreg, pr::kSoins))
        if (!s.empty()) Lst_Soins.addItem(itemDe(soins, s));
    const std::string nb = enreg(pr::kNbIntervenants, 1);
    Cbo_NbIntervenants.setText(nb.empty() ? "1" : nb);
    Txt_PremierJour.setText(cle.empty() ? m_date : conversion.DateDepuisInterne(enreg(pr::kPremierJour)));
    const std::string dernier = enreg(pr::kDernierJour);
    Txt_DernierJour.setText(dernier.empty() ? "" : conversion.DateDepuisInterne(dernier));
}

bool Frm_ProtocoleSsiad::Cmd_AjouterSoin_Click() {
    const std::string saisi = Cbo_Soin.text();
    if (std::string refus = verifierRempli("Soins", saisi); !refus.empty()) return refuser(refus);
    const std::string item = itemDe(Cbo_Soin.items(), code(saisi));
    if (Cbo_Soin.find(item) < 0)
        return refuser(messageChamp("Soins", saisi + " n'est pas dans le catalogue."));
    if (Lst_Soins.find(item) < 0) Lst_Soins.addItem(item);
    Cbo_Soin.setText("");
    return true;
}

void Frm_ProtocoleSsiad::Cmd_RetirerSoin_Click() {
    const int i = Lst_Soins.listIndex();
    if (i < 0) return;
    std::vector<std::string> restants = Lst_Soins.items();
    restants.erase(restants.begin() + i);
    Lst_Soins.clear();
    for (const std::string& s : restants)
        Lst_Soins.addItem(s);
}

std::string Frm_ProtocoleSsiad::debutSaisi() const {
    return Txt_Debut.text() == m_debutAffiche && !m_debutAffiche.empty() ? m_debutCentiemes
                                                                         : centiemes(Txt_Debut.text());
}

std::string Frm_ProtocoleSsiad::finSaisie() const {
    return Txt_Fin.text() == m_finAffichee && !m_finAffichee.empty() ? m_finCentiemes
                                                                     : centiemes(Txt_Fin.text());
}

std::string Frm_ProtocoleSsiad::nouvelleCle(const std::string& cle) {
    const std::string aide = code(Cbo_Aide.text()), element = code(Cbo_Element.text());
    const std::string premier = base::padZeros(
        m_ctl.ObjetConversion.DateInterne(m_ctl.ObjetConversion.NormaliserDate(Txt_PremierJour.text())),
        kLongueurJour);
    const std::string debut = debutSaisi();
    if (cle.size() == pr::kLongueurCle && cleProtocole(aide, premier, element, cle[16], debut) == cle)
        return cle;
    std::vector<std::string> cles =
        clesSelectionnees(database(), data::kSSIADPROTOCOLE, "CodeAide = \"" + aide + "\"");
    cles.erase(std::remove(cles.begin(), cles.end(), cle), cles.end());
    const std::optional<char> sequence = sequenceLibre(cles, aide, premier, element, debut);
    return sequence ? cleProtocole(aide, premier, element, *sequence, debut) : "";
}

std::string Frm_ProtocoleSsiad::verifier() {
    const std::string aide = Cbo_Aide.text();
    if (aide.empty()) return messageChamp("Aidé", "à choisir dans la liste.");
    if (Cbo_Aide.find(aide) < 0) return messageChamp("Aidé", aide + " n'est pas dans la liste.");
    const std::string& cle = cleCourante();
    if (!cle.empty() && code(aide) != base::Left(cle, 5)) {
        // The planned interventions carry their aidé in their key: they cannot follow to another one.
        if (const std::vector<std::string> planifie = usagesProtocole(database(), cle); !planifie.empty())
            return messageChamp("Aidé", "un protocole déjà planifié (" + planifie.front() +
                                            ") ne change pas d'aidé : créez-en un nouveau.");
    }
    if (Cbo_Element.listCount() == 0)
        return messageChamp("Élément de gestion", "l'aidé n'a pas d'élément de gestion.");
    if (Cbo_Element.find(Cbo_Element.text()) < 0)
        return messageChamp("Élément de gestion", "à choisir dans la liste.");
    std::string debut, fin;
    if (std::string refus = verifierHeure("Début de la fenêtre", Txt_Debut.text(), debut); !refus.empty())
        return refus;
    if (std::string refus = verifierHeure("Fin de la fenêtre", Txt_Fin.text(), fin); !refus.empty())
        return refus;
    int duree = 0;
    if (std::string refus = verifierDuree("Durée (minutes)", Txt_DureeMn.text(), duree); !refus.empty())
        return refus;
    if (std::string refus = verifierFenetre("Fin de la fenêtre", debutSaisi(), finSaisie(), duree);
        !refus.empty())
        return refus;
    if (Lst_Soins.listCount() == 0) return messageChamp("Soins", "à choisir dans le catalogue.");
    const std::string nb = Cbo_NbIntervenants.text();
    if (nb != "1" && nb != "2") return messageChamp("Intervenants", nb + " n'est pas 1 ou 2.");
    std::string premier, dernier;
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    if (std::string refus = verifierDate("Premier jour", Txt_PremierJour.text(), conversion, premier);
        !refus.empty())
        return refus;
    if (!Txt_DernierJour.text().empty()) {
        if (std::string refus = verifierDate("Dernier jour", Txt_DernierJour.text(), conversion, dernier);
            !refus.empty())
            return refus;
        if (base::compareValues(dernier, premier) < 0)
            return messageChamp("Dernier jour", "le dernier jour ne peut précéder le premier.");
    }
    if (nouvelleCle(cle).empty())
        return messageChamp(
            "Début de la fenêtre",
            "l'aidé a déjà neuf protocoles de cet élément commençant ce jour-là à cette heure.");
    return "";
}

std::string Frm_ProtocoleSsiad::ecrire(const std::string& cle) {
    const std::string nouvelle = nouvelleCle(cle);
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADPROTOCOLE);
    mvdb::DynamicRecord enreg = f->New(nouvelle);
    // The record read keeps the attributes that belong to other programs, whatever its key becomes.
    if (!cle.empty()) enreg.setText(f->Read(cle).text());
    std::vector<std::string> joursCoches;
    int j = 1;
    for (toolkit::CheckBox* c : jours()) {
        if (c->value()) joursCoches.push_back(std::to_string(j));
        ++j;
    }
    ecrireValeurs(enreg, pr::kJoursSemaine, joursCoches);
    enreg.set(pr::kBorneFin, finSaisie());
    std::vector<std::string> soins;
    for (const std::string& s : Lst_Soins.items())
        soins.push_back(code(s));
    ecrireValeurs(enreg, pr::kSoins, soins);
    enreg.set(pr::kDureeMn, base::numberText(base::toNumber(Txt_DureeMn.text())));
    enreg.set(pr::kNbIntervenants, 1, Cbo_NbIntervenants.text());
    data::ObjetConversion& conversion = m_ctl.ObjetConversion;
    enreg.set(pr::kPremierJour, conversion.DateInterne(conversion.NormaliserDate(Txt_PremierJour.text())));
    enreg.set(pr::kDernierJour,
              Txt_DernierJour.text().empty()
                  ? ""
                  : conversion.DateInterne(conversion.NormaliserDate(Txt_DernierJour.text())));
    enreg.DBWrite();
    if (!cle.empty() && nouvelle != cle) deplacer(cle, nouvelle);
    // The assignment dialog finds the protocole's sector under a key made of its own.
    accorderSecteursAffectation(database(), base::Left(nouvelle, 5));
    if (!cle.empty() && base::Left(cle, 5) != base::Left(nouvelle, 5))
        accorderSecteursAffectation(database(), base::Left(cle, 5));
    return nouvelle;
}

void Frm_ProtocoleSsiad::deplacer(const std::string& cle, const std::string& nouvelle) {
    const std::shared_ptr<mvdb::File> f = fichier(data::kSSIADPROTOCOLE);
    f->Delete(cle);
    // The interventions already planned follow their protocole to its new key.
    const std::shared_ptr<mvdb::File> tournees = fichier(data::kSSIADTOURNEE);
    for (const std::string& k :
         clesSelectionnees(database(), data::kSSIADTOURNEE,
                           std::to_string(data::tournee::kCleProtocole) + " = \"" + cle + "\"")) {
        mvdb::DynamicRecord planifie = tournees->Read(k);
        planifie.set(data::tournee::kCleProtocole, nouvelle);
        planifie.DBWrite();
    }
}

std::string Frm_ProtocoleSsiad::designation(const std::string& cle) {
    mvdb::DynamicRecord enreg;
    data::LireEnregistrement(*fichier(data::kSSIADPROTOCOLE), enreg, cle);
    const std::string aide = itemDe(listeAides(database()), base::Left(cle, 5));
    return "le protocole de " + heureSaisie(base::Right(cle, 4)) + " à " + heureSaisie(enreg(pr::kBorneFin)) +
           " de l'aidé " + base::Left(aide, 5) + " « " + base::Mid(aide, 7) + " »";
}

std::vector<std::string> Frm_ProtocoleSsiad::utilisateurs(const std::string& cle) {
    return usagesProtocole(database(), cle);
}

void Frm_ProtocoleSsiad::effacer(const std::string& cle) {
    fichier(data::kSSIADPROTOCOLE)->Delete(cle);
    accorderSecteursAffectation(database(), base::Left(cle, 5));
}

}  // namespace control
