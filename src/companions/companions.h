#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "mvdb/database.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

// What the screens that stand beside the planning screen share. Each is handed its members by the
// control, in the order the control's menu handler gives them, then started; it works on the same
// database.
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

}  // namespace control
