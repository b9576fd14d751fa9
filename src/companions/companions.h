#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "mvdb/database.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

// The four screens that stand beside the planning screen: tournée characteristics, aidé file,
// management elements and protocoles. Each is handed its members by the control, in the order the
// control's menu handler gives them, then started; it works on the same database and writes one record
// per save through the data layer.
namespace control {

class Ctr_Zandorel;
class DroitsUtilisateur;

class FormeCompagnon : public toolkit::Form {
public:
    FormeCompagnon(const std::string& nom, Ctr_Zandorel& ctl, const std::string& titre, double largeur,
                   double hauteur);
    ~FormeCompagnon() override;

    void setTheDatabase(std::shared_ptr<mvdb::Database> database);
    void setTheClient(std::shared_ptr<void> client);
    void setDroits(std::shared_ptr<DroitsUtilisateur> droits);
    // The members in the order they were handed over, the start last ("Demarrer").
    const std::vector<std::string>& membresRecus() const { return m_membres; }

protected:
    void recu(const std::string& membre) { m_membres.push_back(membre); }
    std::shared_ptr<mvdb::File> fichier(std::string_view nom);
    mvdb::Database& database();
    // Shows a refusal in a box of the form's caption; always false, so a check can return it.
    bool refuser(const std::string& message);
    void legende(const std::string& texte, double left, double top, double width = 1800);
    void bouton(toolkit::CommandButton& b, const std::string& texte, double left, double top);
    Ctr_Zandorel& m_ctl;

private:
    std::shared_ptr<mvdb::Database> m_database;
    std::shared_ptr<void> m_client;
    std::shared_ptr<DroitsUtilisateur> m_droits;
    std::vector<std::string> m_membres;
    std::vector<std::unique_ptr<toolkit::Label>> m_legendes;
};

// Every SSIADCARACTTOURNEE record: listed by code, created and edited. Nothing is written before all
// the checks pass.
class Frm_SsiadCaractTournee : public FormeCompagnon {
public:
    explicit Frm_SsiadCaractTournee(Ctr_Zandorel& ctl);
    void setCodeTournee(const std::string& code);
    // Lists the tournées and opens the code handed over, or a new tournée of that code.
    void Demarrer();

    toolkit::ListBox Lst_Tournees;
    toolkit::TextBox Txt_Code, Txt_Libelle, Txt_Jour, Txt_HeureDebut, Txt_MinuteDebut, Txt_HeureFin,
        Txt_MinuteFin, Txt_Type, Txt_Secteurs, Txt_NbIntervenants, Txt_Supprimee;
    toolkit::CommandButton Cmd_Nouveau, Cmd_Enregistrer, Cmd_Fermer;

    void Cmd_Nouveau_Click();
    // Checks, then writes the tournée; false with a message box when refused.
    bool Cmd_Enregistrer_Click();

private:
    void listerTournees();
    void afficher(const std::string& code);
    bool verifier();
    std::string m_codeRecu;
    bool m_nouvelle = true;
};

// The CIVILAIDE record of one aidé with its absences.
class Frm_DossierAide : public FormeCompagnon {
public:
    explicit Frm_DossierAide(Ctr_Zandorel& ctl);
    void Demarrer(const std::string& codeAide);

    toolkit::TextBox Txt_Nom, Txt_Prenom, Txt_Adresse1, Txt_Adresse2, Txt_Adresse3, Txt_Localite,
        Txt_CodePostal, Txt_Ville, Txt_Telephone;
    toolkit::ListBox Lst_Absences;
    toolkit::TextBox Txt_AbsenceDebut, Txt_AbsenceFin;
    toolkit::CommandButton Cmd_AjouterAbsence, Cmd_RetirerAbsence, Cmd_Enregistrer, Cmd_Fermer;

    bool Cmd_AjouterAbsence_Click();
    void Cmd_RetirerAbsence_Click();
    bool Cmd_Enregistrer_Click();
    const std::string& codeAide() const { return m_code; }

private:
    std::string m_code;
    std::vector<std::pair<std::string, std::string>> m_absences;  // internal days
    void listerAbsences();
};

// The aidé's SSIADELEMGEST records with their sector. A sector changed and not saved keeps it open.
class Frm_ElemGestSSIAD : public FormeCompagnon {
public:
    explicit Frm_ElemGestSSIAD(Ctr_Zandorel& ctl);
    void setCodeAide(const std::string& code);
    void setNomAide(const std::string& nom);
    void Demarrer();
    // Whether the form may close: false while a sector is changed and not saved.
    bool PeutFermer() const;

    toolkit::Label Etq_Aide;
    toolkit::ListBox Lst_Elements;
    toolkit::TextBox Txt_Secteur;
    toolkit::CommandButton Cmd_Enregistrer, Cmd_Annuler, Cmd_Fermer;

    bool Cmd_Enregistrer_Click();
    void Form_Unload(int& Cancel);
    const std::string& nomAide() const { return m_nom; }

private:
    void lister();
    std::string m_code, m_nom;
    std::vector<std::pair<std::string, std::string>> m_elements;  // key, sector as saved
};

// The aidé's protocoles in force on the date shown, editable one at a time.
class Frm_ProtocoleSsiad : public FormeCompagnon {
public:
    explicit Frm_ProtocoleSsiad(Ctr_Zandorel& ctl);
    void setCodeAide(const std::string& code);
    // The shown day as "dd/mm/yyyy".
    void setDateProtocole(const std::string& date);
    const std::string& dateProtocole() const { return m_date; }
    void Demarrer();

    toolkit::ListBox Lst_Protocoles;
    toolkit::TextBox Txt_Jours, Txt_BorneFin, Txt_DureeMn, Txt_Soins, Txt_NbIntervenants;
    toolkit::CommandButton Cmd_Enregistrer, Cmd_Fermer;

    bool Cmd_Enregistrer_Click();

private:
    void lister();
    void afficher(int index);
    std::string m_code, m_date;
    std::vector<std::string> m_cles;
    std::string m_finAffichee;  // the end bound as Txt_BorneFin showed it
};

}  // namespace control
