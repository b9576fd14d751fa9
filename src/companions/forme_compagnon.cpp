#include "shell/ctr_zandorel.h"

// What the four companion screens share: the members they are handed, the files they open on the
// database they were given, their refusals and their captions.

#include "base/error.h"
#include "companions/companions.h"
#include "toolkit/host.h"

namespace control {

FormeCompagnon::FormeCompagnon(const std::string& nom, Ctr_Zandorel& ctl, const std::string& titre,
                               double largeur, double hauteur)
    : toolkit::Form(nom, ctl.host()), m_ctl(ctl) {
    setCaption(titre);
    setGeometry(0, 0, largeur, hauteur);
}

FormeCompagnon::~FormeCompagnon() = default;

void FormeCompagnon::setTheDatabase(std::shared_ptr<mvdb::Database> database) {
    m_database = std::move(database);
    recu("TheDatabase");
}

void FormeCompagnon::setTheClient(std::shared_ptr<void> client) {
    m_client = std::move(client);
    recu("TheClient");
}

void FormeCompagnon::setDroits(std::shared_ptr<DroitsUtilisateur> droits) {
    m_droits = std::move(droits);
    recu("Droits");
}

mvdb::Database& FormeCompagnon::database() {
    if (!m_database) {
        throw base::Error(base::codes::kNotBound,
                          "La base de données n'a pas été donnée à l'écran " + name());
    }
    return *m_database;
}

std::shared_ptr<mvdb::File> FormeCompagnon::fichier(std::string_view nom) {
    return database().OpenFile(std::string(nom));
}

bool FormeCompagnon::refuser(const std::string& message) {
    host().MsgBox(message, toolkit::msgbox::kOkOnly | toolkit::msgbox::kExclamation, caption());
    return false;
}

void FormeCompagnon::legende(const std::string& texte, double left, double top, double width) {
    auto etiquette = std::make_unique<toolkit::Label>("Etq_" + std::to_string(m_legendes.size()), this);
    etiquette->setGeometry(left, top, width, 255);
    etiquette->setCaption(texte);
    m_legendes.push_back(std::move(etiquette));
}

void FormeCompagnon::bouton(toolkit::CommandButton& b, const std::string& texte, double left, double top) {
    b.setGeometry(left, top, 1335, 375);
    b.setCaption(texte);
}

}  // namespace control
