#include "display/affichage.h"

// The detail pane. A tournée is stored as dated versions, and the version in force on a day is the
// latest one at or before it: a past day shows exactly what was saved, any other day fits the latest
// version to the protocoles of that day.
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/clock.h"
#include "base/text.h"
#include "data/layouts.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {

namespace {

using ColP = Ctr_Zandorel::ColProtocole;
using ColV = Ctr_Zandorel::ColValidees;

// Columns of ResTourneeJour, listed by "0 1 2".
constexpr int kCleTournee = 1;
constexpr int kFinPrevue = 2;
constexpr int kCleProtocole = 3;

// Columns of the accords' reply, listed by "0 1 2 3".
constexpr int kCleAccord = 1;
constexpr int kPremierJourAccord = 2;
constexpr int kDernierJourAccord = 3;

// A protocole row this far from the planned start, or further, is never the nearest.
constexpr double kEcartMaximal = 999;

std::string entreGuillemets(std::string_view valeur) {
    return "\"" + std::string(valeur) + "\"";
}

bool egal(std::string_view a, std::string_view b) {
    return base::compareValues(a, b) == 0;
}

// Rows of TabValidees, up to the first without a start: readers do not look behind a hole.
std::int64_t lignesValidees(const model::WorkTable& validees) {
    std::int64_t n = 0;
    while (!validees(n + 1, ColV::HeureValidee).empty())
        ++n;
    return n;
}

// Places the protocoles ask for, a row of unknown count standing for one person.
std::int64_t placesRequises(const model::WorkTable& protocoles) {
    std::int64_t m = 0;
    for (std::int64_t r = 1; r <= protocoles->DCount(); ++r) {
        const std::string requis = protocoles(r, ColP::NbIntervenantsProtocole);
        m += requis.empty() ? 1 : base::toInteger(requis);
    }
    return m;
}

// One place filled on a protocole row for each validated record of its key, whatever team did it.
void compterPlaces(model::WorkTable& protocoles, const model::WorkTable& validees, std::int64_t n) {
    for (std::int64_t j = 1; j <= n; ++j) {
        for (std::int64_t r = 1; r <= protocoles->DCount(); ++r) {
            if (protocoles(r, ColP::CleProtocole) != validees(j, ColV::CleProtocole)) continue;
            protocoles->set(r, ColP::NbPlaces,
                            base::numberText(base::toNumber(protocoles(r, ColP::NbPlaces)) + 1));
        }
    }
}

// What the planned record says of itself: its start (key), its end and its protocole (attributes).
struct Enregistrement {
    std::string debut;
    std::string fin;
    std::string cleProtocole;
};

enum class Places { Indifferentes, Libres };

// The protocole row a planned record stands for: the first row of the same key; else the first whose
// window holds the planned time; else the nearest start. Row 0 when nothing starts within 999
// hundredths. With Places::Libres a row must have no place filled: the key's row or the nearest one that
// has ends the search with nothing, while the window test passes such rows over.
std::optional<std::int64_t> ligneDuProtocole(const model::WorkTable& p, const Enregistrement& e,
                                             Places places) {
    const std::int64_t n = p->DCount();
    auto libre = [&](std::int64_t k) {
        return places == Places::Indifferentes || egal(p(k, ColP::NbPlaces), "0");
    };
    for (std::int64_t k = 1; k <= n; ++k) {
        if (p(k, ColP::CleProtocole) != e.cleProtocole) continue;
        if (!libre(k)) return std::nullopt;
        return k;
    }
    for (std::int64_t k = 1; k <= n; ++k) {
        const bool dansLaFenetre = base::compareValues(p(k, ColP::HeureDebut), e.fin) <= 0 &&
                                   base::compareValues(p(k, ColP::HeureFin), e.debut) >= 0;
        if (dansLaFenetre && libre(k)) return k;
    }
    // Strict: the first of equal distances wins.
    double meilleur = kEcartMaximal;
    std::int64_t plusProche = 0;
    for (std::int64_t k = 1; k <= n; ++k) {
        const double ecart = std::fabs(base::toNumber(e.debut) - base::toNumber(p(k, ColP::HeureDebut)));
        if (ecart < meilleur) {
            meilleur = ecart;
            plusProche = k;
        }
    }
    if (!libre(plusProche)) return std::nullopt;
    return plusProche;
}

// What follows the kind in TypeEtq before the planned start: a two-person protocole counts the people
// it has once this row is placed, except in a tournée that brings a pair.
std::string suffixeDePlaces(int nbIntervenantsTournee, bool validees, std::string_view requis) {
    if (nbIntervenantsTournee == 2 || !egal(requis, "2")) return "|";
    return validees ? "|1|" : "|2|";
}

// Takes out of the waiting list what the detail rows hold. A pair, or a one-person intervention, or the
// second person of a pair, leaves the list; a pair with both places free keeps one.
void retirerPlacees(Ctr_Zandorel& c) {
    const model::WorkTable& aide = c.TabTempoAide;
    const std::int64_t nd = c.TabTempoDetail->DCount();
    for (std::int64_t d = 1; d <= nd; ++d) {
        const std::string cle = c.TabTempoDetail(d, model::col::CleProtocole);
        // The count is read once per detail row and the run goes on with the next row number after a
        // delete: the row that moved up into the place is not examined for this detail row. Deliberate.
        const std::int64_t na = aide->DCount();
        for (std::int64_t a = 1; a <= na; ++a) {
            if (aide(a, model::col::CleProtocole) != cle) continue;
            const model::TypeEtq type = c.Tables.typeEtq(model::Pane::Aide, a);
            const std::string dernier = base::Right(type.text(), 1);
            if (c.NbIntervenantsTournee == 2 || base::Len(type.text()) == 1 || dernier == "1") {
                c.Tables.remove(model::Pane::Aide, a);
            } else if (dernier == "2") {
                c.Tables.setTypeEtq(model::Pane::Aide, a, type.avecDerniereFigure('1'));
            }
        }
    }
}

// Fits the version in force to the protocoles of the day asked for, then builds the waiting list
// beside it. A deleted tournée shows nothing.
void ajusterVersion(Ctr_Zandorel& c, const std::string& jourDemande) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    if (!data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE,
                                  c.Txt_CodeTournee.text()) ||
        !f.EnregSSIADCARACTTOURNEE(data::caracttournee::kSupprimee).empty()) {
        return;
    }
    for (std::int64_t i = 1; i <= c.affichage.ResTourneeJour.DCount(); ++i) {
        const std::string cleProtocole = c.affichage.ResTourneeJour(i, kCleProtocole);
        c.CadreDetail(base::Left(cleProtocole, 5), c.affichage.ResTourneeJour(i, kCleTournee),
                      base::Mid(cleProtocole, 11, 6));
    }
    // The day of an assignment keeps its waiting list as it was.
    if (egal(jourDemande, c.affichage.DateTourneeInterne) && c.Mod.FlagAffectationEnCours) return;
    if (c.usage == Ctr_Zandorel::Usage::Chiffres) return;
    c.CadreAideAvecTournee();
    retirerPlacees(c);
}

// The kind of what the soins counted so far ask for.
std::string natureDesActes(int actesInfirmiers, int autresActes) {
    if (actesInfirmiers > 0 && autresActes == 0) return "I";
    if (actesInfirmiers == 0 && autresActes > 0) return "A";
    return "M";
}

// Copies the records of a past day as they were saved; no waiting list is built.
void copierVersion(Ctr_Zandorel& c) {
    data::FichiersSSIAD& f = c.Mod.fichiers;
    // The two counts start once for the whole day and go on rising from row to row, deliberately: a row
    // takes the kind of every soin read so far. A protocole that cannot be read keeps the kind of the
    // row before, and its HeureFin is what the buffer last held.
    int actesInfirmiers = 0;
    int autresActes = 0;
    std::string nature;
    for (std::int64_t i = 1; i <= c.affichage.ResTourneeJour.DCount(); ++i) {
        const std::string cleProtocole = c.affichage.ResTourneeJour(i, kCleProtocole);
        const std::string debut = base::Right(c.affichage.ResTourneeJour(i, kCleTournee), 4);
        const double dureeMn =
            (base::toNumber(c.affichage.ResTourneeJour(i, kFinPrevue)) / 100 - base::toNumber(debut) / 100) *
            100 * 6 / 10;
        if (data::LireEnregistrement(*f.SSIADPROTOCOLE, f.EnregSSIADPROTOCOLE, cleProtocole)) {
            c.CompterActes(f.EnregSSIADPROTOCOLE, actesInfirmiers, autresActes);
            nature = natureDesActes(actesInfirmiers, autresActes);
        }
        c.Tables.insertAt(model::Pane::Detail, i,
                          {static_cast<int>(i), base::toInteger(base::Right(cleProtocole, 4)),
                           base::toInteger(f.EnregSSIADPROTOCOLE(data::protocole::kBorneFin)),
                           static_cast<int>(base::roundHalfEven(dureeMn)), 0, cleProtocole,
                           model::TypeEtq::prevu(nature, "|", debut).text()});
    }
    // The count of waiting rows is compared with the empty text, which a count never equals: the flag is
    // always set on this path. Deliberate; drops on a past day are refused through it.
    if (base::numberText(static_cast<double>(c.TabTempoAide->DCount())) != "") c.TourneeAnterieure = true;
}

}  // namespace

void Affichage::CadreDetailAvecTournee() {
    Ctr_Zandorel& c = m_c;
    // 1.
    c.DateAffichee = c.Mod.FlagAffectationEnCours ? c.Txt_Date.text() : c.Cbo_Date.text();
    c.TourneeAnterieure = false;
    c.TabTourneeEnregistree.renew();
    const std::string codeTournee = entreGuillemets(c.Txt_CodeTournee.text());
    const std::string jourDemande = c.ObjetConversion.DateInterne(c.DateAffichee);
    // Read with the records below, in the same view of the database: what a validation of this day will
    // replace, and must find unchanged.
    c.m_sauvegarde.retenirVersionAffichee(c.Txt_CodeTournee.text(), jourDemande);

    // 2. A tournée never filled has only its waiting list. Records that make no sense are passed over:
    // the latest version is that of the first sound record, and a day holding none has no version. The
    // end is listed for that check alone.
    ResTourneeDates = data::Interroger(c.database(),
                                       "SELECT SSIADTOURNEE AVEC CodeTournee = " + codeTournee +
                                           " AND AVEC DateTournee <= " + entreGuillemets(jourDemande) +
                                           " PAR-DECR DateTournee",
                                       data::kSSIADTOURNEE, "0 1");
    std::int64_t premiere = 1;
    while (
        !ResTourneeDates(premiere).empty() &&
        !enregistrementSain(data::checkPlanned(ResTourneeDates(premiere, 1), ResTourneeDates(premiere, 2))))
        ++premiere;
    if (ResTourneeDates(premiere).empty()) {
        if (c.usage == Ctr_Zandorel::Usage::Ecran) CadreAideAvecTournee();
        return;
    }

    // 3.
    const std::string derniereVersion = data::tournee::jourInterne(ResTourneeDates(premiere, 1));
    ResTourneeJour = data::Interroger(c.database(),
                                      "SELECT SSIADTOURNEE AVEC CodeTournee = " + codeTournee +
                                          " AND AVEC DateTournee = " + entreGuillemets(derniereVersion) +
                                          " PAR HeureDebut",
                                      data::kSSIADTOURNEE, "0 1 2");
    ecarterInterventionsIncoherentes(ResTourneeJour);
    if (ResTourneeJour(1).empty()) return;
    DateTourneeInterne = data::tournee::jourInterne(ResTourneeJour(1, kCleTournee));

    // 4. Internal day numbers have five digits: text and number orders agree.
    const std::string aujourdhui = c.ObjetConversion.DateInterne(c.clock().today());
    const int depuisLaVersion = base::compareValues(jourDemande, DateTourneeInterne);
    if (depuisLaVersion == 0) {
        if (base::compareValues(DateTourneeInterne, aujourdhui) < 0) {
            copierVersion(c);
        } else {
            ajusterVersion(c, jourDemande);
        }
    } else if (depuisLaVersion > 0) {
        if (base::compareValues(jourDemande, aujourdhui) < 0) {
            c.host().MsgBox("Tournée non définie pour cette date - accès impossible.", kStyleAvertissement,
                            kTitreMessage);
        } else {
            ajusterVersion(c, jourDemande);
        }
    }
}

void Affichage::garderEnregistrement(const std::string& CleTournee, const data::RecordFault& cause) {
    Ctr_Zandorel& c = m_c;
    c.defautsLus.addKept(CleTournee, cause);
    c.m_sauvegarde.garderEnregistrement(CleTournee);
}

std::optional<data::RecordFault> Affichage::accordIncoherent(const std::string& CodeAide,
                                                             const mvdb::DynamicRecord& accordsDuJour) {
    Ctr_Zandorel& c = m_c;
    auto defautDe = [](const mvdb::DynamicRecord& accords, std::int64_t i) {
        return data::checkAccordDays(accords(i, kCleAccord), accords(i, kPremierJourAccord),
                                     accords(i, kDernierJourAccord));
    };
    if (!accordsDuJour(1).empty()) return defautDe(accordsDuJour, 1);
    const mvdb::DynamicRecord accords =
        data::Interroger(c.database(), "SELECT SSIADACCORDS AVEC CodeAide = " + entreGuillemets(CodeAide),
                         data::kSSIADACCORDS, "0 1 2");
    for (std::int64_t i = 1; i <= accords.DCount(); ++i) {
        if (auto defaut = defautDe(accords, i)) return defaut;
    }
    return std::nullopt;
}

mvdb::DynamicRecord Affichage::accordsDeLAide(const std::string& CodeAide, const std::string& jour) {
    Ctr_Zandorel& c = m_c;
    // No blank after "=" in this sentence: the server takes it as it is.
    return data::Interroger(c.database(),
                            "SELECT SSIADACCORDS AVEC CodeAide =" + entreGuillemets(CodeAide) +
                                " AND AVEC 1 <= " + entreGuillemets(jour) +
                                " AND AVEC 2 >= " + entreGuillemets(jour),
                            data::kSSIADACCORDS, "0 1 2 3");
}

void Affichage::ecarterInterventionsDependantes(mvdb::DynamicRecord& reponse) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    for (std::int64_t i = reponse.DCount(); i >= 1; --i) {
        const std::string cle = reponse(i, kCleTournee);
        const std::string cleProtocole = reponse(i, kCleProtocole);
        mvdb::DynamicRecord protocole;
        std::optional<data::RecordFault> defaut;
        if (data::LireEnregistrement(*f.SSIADPROTOCOLE, protocole, cleProtocole))
            defaut = data::checkRecord(data::kSSIADPROTOCOLE, cleProtocole, protocole);
        if (!defaut) {
            const std::string code = data::tournee::codeAide(cle);
            defaut = accordIncoherent(code, accordsDeLAide(code, data::tournee::jourInterne(cle)));
        }
        if (!defaut) continue;
        c.defautsLus.addKept(cle, *defaut);
        reponse.Delete(i);
    }
}

void Affichage::CadreDetail(const std::string& CodeAide, const std::string& CleTournee,
                            const std::string& CleElement) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    const std::string jour = c.ObjetConversion.DateInterne(c.DateAffichee);

    // 1. An aidé who has left the tournée's sectors drops out of the day.
    if (!secteurDeLaTournee(CodeAide + CleElement)) return;

    // 2.
    const mvdb::DynamicRecord accords = accordsDeLAide(CodeAide, jour);
    if (const auto defaut = accordIncoherent(CodeAide, accords))
        return garderEnregistrement(CleTournee, *defaut);
    if (accords(1).empty() || !data::PeriodeActive(c.database(), accords, 1)) return;

    // 3. The aidé's records of the half-day in the other tournées. From here a record that finds no row
    // while a protocole of its aidé was set aside as faulty may have lost its row to that fault: it is
    // kept rather than deleted by the next validation.
    RechercheProtocole(CodeAide);
    auto laisse = [&] {
        if (!ProtocolesEcartes.empty()) garderEnregistrement(CleTournee, ProtocolesEcartes.front());
    };
    if (c.TabProtocole->text().empty()) return laisse();
    RechercheInterventionsValidees(CodeAide, true, 1);
    if (!data::LireEnregistrement(*f.SSIADTOURNEE, f.EnregSSIADTOURNEE, CleTournee)) return;
    const Enregistrement planifie{data::tournee::heureDebut(CleTournee),
                                  f.EnregSSIADTOURNEE(data::tournee::kHeureFin),
                                  f.EnregSSIADTOURNEE(data::tournee::kCleProtocole)};
    // Its own protocole set aside: fitted to another one, it would be stored under that one's key.
    for (const data::RecordFault& defaut : ProtocolesEcartes) {
        if (defaut.key == planifie.cleProtocole) return garderEnregistrement(CleTournee, defaut);
    }

    // 4, 5. Nothing planned elsewhere: the record keeps its row whatever it finds.
    const std::int64_t n = lignesValidees(c.TabValidees);
    std::optional<std::int64_t> k;
    if (n == 0) {
        k = ligneDuProtocole(c.TabProtocole, planifie, Places::Indifferentes);
    } else {
        // 6. Every place taken elsewhere: the record has no room left in the day.
        const std::int64_t m = placesRequises(c.TabProtocole);
        if ((c.TabValidees(1, ColV::CleProtocole) == c.TabProtocole(1, ColP::CleProtocole) && n == m) ||
            n > m)
            return laisse();
        compterPlaces(c.TabProtocole, c.TabValidees, n);
        k = ligneDuProtocole(c.TabProtocole, planifie, Places::Libres);
        if (!k) return laisse();
    }

    // A record that fits no protocole within 999 hundredths falls on row 0, which reads as an empty row
    // with an empty key: such a row gets no label, so it is not made at all, and no anomaly comes of it.
    if (*k == 0) return laisse();

    // 7. Only records of the shown date are deleted by the commit.
    ++NbLignesDetail;
    if (data::tournee::jourInterne(CleTournee) == jour) {
        c.TabTourneeEnregistree->set(NbLignesDetail, 1, CleTournee);
        c.TabTourneeEnregistree->set(NbLignesDetail, 2, planifie.cleProtocole);
    }
    const std::int64_t r = *k;
    const std::string places =
        suffixeDePlaces(c.NbIntervenantsTournee, n > 0, c.TabProtocole(r, ColP::NbIntervenantsProtocole));
    c.Tables.insertAt(
        model::Pane::Detail, NbLignesDetail,
        {NbLignesDetail, base::toInteger(c.TabProtocole(r, ColP::HeureDebut)),
         base::toInteger(c.TabProtocole(r, ColP::HeureFin)),
         base::toInteger(c.TabProtocole(r, ColP::DureeMn)), 0, c.TabProtocole(r, ColP::CleProtocole),
         model::TypeEtq::prevu(c.TabProtocole(r, ColP::TypeEtq), places, planifie.debut).text()});
}

}  // namespace control
