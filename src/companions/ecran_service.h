#pragma once

#include <string>
#include <vector>

#include "companions/companions.h"

// The frame every service screen shares: a search as you type over the list of what exists, and the four
// buttons that create, save, delete and close. A screen says what its records are, how a record shows in
// its fields, what it checks and how it writes; the frame makes each save one transaction and asks before
// a deletion.
namespace control {

class EcranService : public FormeCompagnon {
public:
    // The list is `largeurListe` wide; the screen's fields stand right of it, from gaucheChamps().
    EcranService(const std::string& nom, Ctr_Zandorel& ctl, const std::string& titre, double largeur,
                 double hauteur, double largeurListe = kLargeurListe);
    ~EcranService() override;

    // Lists what exists and shows the record of key `cle`; empty fields for a new record when `cle` is
    // empty or names nothing. From then on Escape, wherever the focus is, closes the screen as Fermer does.
    void ouvrir(const std::string& cle = "");
    // The key of the record shown; empty for a new record.
    const std::string& cleCourante() const { return m_cle; }

    toolkit::TextBox Txt_Recherche;
    toolkit::ListBox Lst_Elements;
    toolkit::CommandButton Cmd_Nouveau, Cmd_Enregistrer, Cmd_Supprimer, Cmd_Fermer;

    void Cmd_Nouveau_Click();
    // Checks, then writes in one transaction; false, with the refusal or the store's message in a box
    // and what was typed kept, when nothing was written.
    bool Cmd_Enregistrer_Click();
    // Refuses what other records still use, asks, then deletes in one transaction; true when deleted.
    bool Cmd_Supprimer_Click();

protected:
    // A row of the list: the record's key and what the planner reads of it (its code and name, which the
    // search looks through).
    struct Element {
        std::string cle, texte;
    };
    // Every record, in the order of the list.
    virtual std::vector<Element> elements() = 0;
    // Shows the record of key `cle` in the fields; empty fields, or the defaults of a new record, when
    // `cle` is empty.
    virtual void afficher(const std::string& cle) = 0;
    // The refusal of what is typed, empty when every value is right. Reads nothing but the fields and the
    // database.
    virtual std::string verifier() = 0;
    // Writes what is typed, inside the transaction the frame holds, under the key of the record shown
    // (empty: a new record, whose key the screen makes). Gives the key written.
    virtual std::string ecrire(const std::string& cle) = 0;
    // How a deletion names the record: "le soin 12 « Toilette »".
    virtual std::string designation(const std::string& cle) = 0;
    // What still uses the record, one text each ("protocole 00012215110000010900"); nothing by default.
    virtual std::vector<std::string> utilisateurs(const std::string& cle);
    // Deletes the record, inside the transaction the frame holds.
    virtual void effacer(const std::string& cle) = 0;

    static constexpr double kLargeurListe = 3480;
    // The left edge of the fields, right of the list.
    double gaucheChamps() const { return m_gaucheChamps; }
    // The bottom of the room for the fields, above the buttons.
    double basDesChamps() const { return height() - 720; }

private:
    void ordonnerTabulation();
    void fermerParEchappement();
    void lister();
    void filtrer();
    void montrer(const std::string& cle);
    std::vector<Element> m_elements;
    std::vector<std::size_t> m_visibles;  // rows of the list: indexes in m_elements
    std::string m_cle;
    double m_gaucheChamps;
    bool m_remplissage = false;  // the list is being filled: its Click is not the user's
    bool m_echappement = false;  // Escape already closes the screen
};

}  // namespace control
