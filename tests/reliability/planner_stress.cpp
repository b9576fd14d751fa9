// Planners under faults: a planner killed at random moments while it validates tournées, and two
// planners validating on one database at once. Each planner is the real control, headless, on its
// own connection: it shows a tournée, moves every label of pane "DETAIL" and presses "OK".
//
//   planner_stress crash WHERE KILLS [SEED]     one planner killed KILLS times with SIGKILL
//   planner_stress planners WHERE COMMITS SAME  two planners: COMMITS each on their own tournée, then
//                                               SAME each on one tournée
//
// WHERE is a folder, for a database file of SQLite, or the address of a PostgreSQL server
// (postgresql://...), where the run makes a schema of its own and drops it at the end.
//
// Exit 0 when every check held; otherwise the first broken check on stderr and exit 1.
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "base/error.h"
#include "base/text.h"
#include "model/labels.h"
#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/open_store.h"
#include "mvdb/pg_store.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "support/pg_service.h"
#include "toolkit/headless_host.h"

namespace {

constexpr const char* kJour = "21512";  // Monday 23/11/2026, the day shown; today is the Sunday before
constexpr std::array<const char*, 2> kTournees = {"001", "002"};
constexpr int kAides = 3;
constexpr int kVersions = 20;

const base::FixedClock& horloge() {
    static const base::FixedClock clock{*base::Date::fromDmy(22, 11, 2026), 8 * 3600};
    return clock;
}

std::string codeAide(int tournee, int i) {
    return "000" + std::to_string(tournee + 1) + std::to_string(i + 1);
}
std::string cleProtocole(const std::string& code) {
    return code + "210000000011" + "0600";
}
// Version v of a tournée puts aidé i at 7h00 + 2h i + 5 hundredths v: every version has keys of its
// own, so a record tells which version wrote it.
int debut(int i, int v) {
    return 700 + 200 * i + 5 * v;
}
std::string quatre(int n) {
    return base::padZeros(std::to_string(n), 4);
}

void put(mvdb::Store& store, const std::string& file, const std::string& key,
         std::initializer_list<std::string> attributes) {
    mvdb::DynamicRecord r;
    std::int64_t a = 0;
    for (const std::string& attribute : attributes)
        r.set(++a, attribute);
    store.write(file, key, r.text());
}

bool surServeur(const std::string& where) {
    return where.starts_with("postgresql://") || where.starts_with("postgres://");
}

// The database of one run, under WHERE: its address for the stores, made empty, removed at the end.
class Base {
public:
    Base(const std::string& where, const std::string& nom) : m_serveur(surServeur(where) ? where : "") {
        if (m_serveur.empty()) {
            m_adresse = where + "/" + nom + ".db";
            for (const char* suffixe : {"", "-wal", "-shm"})
                std::filesystem::remove(m_adresse + suffixe);
        } else {
            m_schema = testing_support::pgSchemaName("zr_" + nom + "_" + std::to_string(::getpid()));
            mvdb::PgStore::dropSchema(m_serveur, m_schema);
            m_adresse = testing_support::pgServiceAddress(m_serveur, m_schema);
        }
    }
    ~Base() {
        if (!m_serveur.empty()) mvdb::PgStore::dropSchema(m_serveur, m_schema);
    }
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;
    const std::string& adresse() const { return m_adresse; }
    std::unique_ptr<mvdb::Store> ouvrir(mvdb::OpenMode mode = mvdb::OpenMode::ExistingOnly) const {
        return mvdb::openStore(m_adresse, mode);
    }
    // SQLite's own check of the file; a server keeps its files itself.
    bool integre(std::string& detail) const;

private:
    std::string m_serveur, m_schema, m_adresse;
};

// Two Monday-morning tournées of sector N1, three aidés each, all planned at version 0.
void creerService(const Base& base) {
    auto store = base.ouvrir(mvdb::OpenMode::CreateIfMissing);
    put(*store, "SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
    for (int t = 0; t < 2; ++t) {
        put(*store, "SSIADCARACTTOURNEE", kTournees[t],
            {"LUNDI MATIN", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
        for (int i = 0; i < kAides; ++i) {
            const std::string code = codeAide(t, i);
            put(*store, "CIVILAIDE", code, {"", "AIDE" + code, "Marie"});
            put(*store, "SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
            mvdb::DynamicRecord gestion;
            gestion.set(23, "N1");
            store->write("SSIADELEMGEST", code + "000001", gestion.text());
            put(*store, "SSIADPROTOCOLE", cleProtocole(code), {"", "1400", "S01", "20", "1", "21000", ""});
            put(*store, "SSIADTOURNEE", kTournees[t] + code + kJour + quatre(debut(i, 0)),
                {quatre(debut(i, 0) + 33), cleProtocole(code)});
        }
    }
}

// The version of tournée t stored for the day, or -1 when the records are not one whole version.
int versionStockee(mvdb::Store& store, int t, std::string& detail) {
    std::vector<std::pair<std::string, std::string>> records;
    store.scanAll("SSIADTOURNEE", [&](const std::string& key, const std::string& text) {
        if (key.starts_with(kTournees[t]) && key.substr(8, 5) == kJour) records.emplace_back(key, text);
        return true;
    });
    detail = std::to_string(records.size()) + " enregistrements";
    if (records.size() != kAides) return -1;
    const int v = (std::stoi(records[0].first.substr(13, 4)) - 700) / 5;
    for (int i = 0; i < kAides; ++i) {
        const std::string code = codeAide(t, i);
        const auto& [key, text] = records[static_cast<std::size_t>(i)];
        mvdb::DynamicRecord r(text);
        if (v < 0 || v >= kVersions || key != kTournees[t] + code + kJour + quatre(debut(i, v)) ||
            r(1) != quatre(debut(i, v) + 33) || r(2) != cleProtocole(code)) {
            detail += ", " + key + " hors de la version " + std::to_string(v);
            return -1;
        }
    }
    return v;
}

// The host of a planner who, told that the other workstation validated the same tournée since the
// display, keeps their own version: the last validation must still land whole.
struct HoteDuPlanificateur : toolkit::HeadlessHost {
    int questions = 0;
    int MsgBox(const std::string& prompt, int buttons, const std::string& title) override {
        if (prompt.rfind("Cette tournée a été modifiée sur un autre poste", 0) != 0)
            return HeadlessHost::MsgBox(prompt, buttons, title);
        ++questions;
        return toolkit::msgbox::kYes;
    }
};

// One planner's station: its own connection to the file, its own control.
struct Poste {
    std::shared_ptr<mvdb::Database> db;
    HoteDuPlanificateur host;
    control::Ctr_Zandorel c{host, horloge()};

    explicit Poste(const Base& base) : db(std::make_shared<mvdb::Database>(base.ouvrir(), horloge())) {
        c.setTheClient(nullptr);
        c.setTheDatabase(db);
        c.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        c.Init();
    }

    // Shows tournée t, puts every label of pane "DETAIL" at version v and validates. Whatever a
    // user would have seen otherwise (a message, a screen left full, a tournée shown partly old and
    // partly new while the other planner validates it) is a failure.
    void valider(int t, int v) {
        c.Txt_CodeTournee.setText(kTournees[t]);
        c.Cbo_Date.setText("23/11/2026");
        c.Cmd_Affichage.fireClick();
        const std::int64_t lignes = c.TabTempoDetail.exists() ? c.TabTempoDetail->DCount() : 0;
        if (lignes != kAides) throw base::Error(0, std::to_string(lignes) + " lignes dans le détail");
        for (std::int64_t l = 1; l <= lignes; ++l) {
            const int i = c.TabTempoDetail(l, model::col::CleProtocole)[4] - '1';
            c.Etq_Aide(std::stoi(c.TabTempoDetail(l, model::col::NumEtq)))
                .setLinkItem(std::to_string(debut(i, v)));
        }
        c.Cmd_Ok.fireClick();
        for (const auto& shown : host.takeShown())
            throw base::Error(0, "message montré : " + shown.text);
        if (c.Etq_Aide.Count() != 1) throw base::Error(0, "l'écran n'a pas été vidé");
    }
};

bool Base::integre(std::string& detail) const {
    if (!m_serveur.empty()) return true;
    sqlite3* db = nullptr;
    bool ok = false;
    if (sqlite3_open_v2(m_adresse.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* s = nullptr;
        if (sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &s, nullptr) == SQLITE_OK &&
            sqlite3_step(s) == SQLITE_ROW) {
            detail = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
            ok = detail == "ok";
        }
        sqlite3_finalize(s);
    }
    sqlite3_close(db);
    return ok;
}

// The killed planner: validates the two tournées in turn from the versions it is given, and after each
// validation tells the parent (tournée, version) on `pipe`: a version told is a version the user saw saved.
[[noreturn]] void plannerTue(const Base& base, std::array<int, 2> versions, int pipe) {
    try {
        Poste poste(base);
        for (int n = 0;; ++n) {
            const int t = n % 2;
            versions[t] = (versions[t] + 1) % kVersions;
            poste.valider(t, versions[t]);
            const std::array<char, 2> said = {static_cast<char>(t), static_cast<char>(versions[t])};
            if (write(pipe, said.data(), 2) != 2) _exit(1);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "planner : %s\n", e.what());
    }
    _exit(1);
}

int crash(const std::string& where, int kills, unsigned seed) {
    const Base base(where, "crash");
    creerService(base);
    std::mt19937 random(seed);
    std::array<int, 2> vues = {0, 0};  // the versions the user saw saved
    int validations = 0, enVol = 0;
    for (int k = 1; k <= kills; ++k) {
        int fds[2];
        if (pipe(fds) != 0) return 1;
        const pid_t child = fork();
        if (child == 0) {
            close(fds[0]);
            plannerTue(base, vues, fds[1]);
        }
        close(fds[1]);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 150000));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        std::array<char, 2> said{};
        while (read(fds[0], said.data(), 2) == 2) {
            vues[static_cast<std::size_t>(said[0])] = said[1];
            ++validations;
        }
        close(fds[0]);
        if (WIFEXITED(status)) {
            std::fprintf(stderr, "kill %d : le planner s'est arrêté seul (%d)\n", k, WEXITSTATUS(status));
            return 1;
        }
        std::string detail;
        if (!base.integre(detail)) {
            std::fprintf(stderr, "kill %d : integrity_check : %s\n", k, detail.c_str());
            return 1;
        }
        auto store = base.ouvrir();
        for (int t = 0; t < 2; ++t) {
            const int v = versionStockee(*store, t, detail);
            // The stored version is the last one seen saved, or the one being validated at the kill.
            if (v == (vues[t] + 1) % kVersions) {
                ++enVol;
                vues[t] = v;
            } else if (v != vues[t]) {
                std::fprintf(stderr, "kill %d, tournée %s : version %d stockée, %d vue (%s)\n", k,
                             kTournees[t], v, vues[t], detail.c_str());
                return 1;
            }
        }
    }
    std::printf(
        "crash: %d kills, %d validations acknowledged, %d kills after an unacknowledged commit, "
        "integrity ok, every tournée whole\n",
        kills, validations, enVol);
    return 0;
}

// A planner of the concurrent runs: validates tournée t `count` times, version `base` + n % 10.
pid_t planner(const Base& base, int t, int count, int premiere) {
    const pid_t child = fork();
    if (child != 0) return child;
    try {
        Poste poste(base);
        for (int n = 1; n <= count; ++n)
            poste.valider(t, premiere + n % 10);
        std::printf("planner tournée %s : %d question(s) sur l'autre poste\n", kTournees[t],
                    poste.host.questions);
        std::fflush(stdout);
        _exit(0);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "planner tournée %s : %s\n", kTournees[t], e.what());
    }
    _exit(1);
}

bool attendre(std::initializer_list<pid_t> children) {
    bool ok = true;
    for (pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0) continue;
        std::fprintf(stderr, "planner %d : statut %d\n", static_cast<int>(child), status);
        ok = false;
    }
    return ok;
}

int planners(const std::string& where, int commits, int same) {
    const Base base(where, "planners");
    creerService(base);
    std::string detail;
    if (!attendre({planner(base, 0, commits, 0), planner(base, 1, commits, 10)})) return 1;
    auto store = base.ouvrir();
    for (int t = 0; t < 2; ++t) {
        const int v = versionStockee(*store, t, detail);
        if (v != 10 * t + commits % 10) {
            std::fprintf(stderr, "tournée %s : version %d après %d validations (%s)\n", kTournees[t], v,
                         commits, detail.c_str());
            return 1;
        }
    }
    store.reset();
    if (!attendre({planner(base, 0, same, 0), planner(base, 0, same, 10)})) return 1;
    store = base.ouvrir();
    const int v = versionStockee(*store, 0, detail);
    if (v != same % 10 && v != 10 + same % 10) {
        std::fprintf(stderr, "même tournée : version %d, pas celle d'une dernière validation (%s)\n", v,
                     detail.c_str());
        return 1;
    }
    if (!base.integre(detail)) return 1;
    std::printf(
        "planners: %d + %d validations on two tournées, %d + %d on one; no message, nothing lost, "
        "the last validation whole\n",
        commits, commits, same, same);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() >= 3 && args[0] == "crash")
        return crash(args[1], std::stoi(args[2]),
                     args.size() > 3 ? std::stoul(args[3]) : std::random_device{}());
    if (args.size() == 4 && args[0] == "planners")
        return planners(args[1], std::stoi(args[2]), std::stoi(args[3]));
    std::fprintf(stderr, "usage: planner_stress crash WHERE KILLS [SEED] | planners WHERE COMMITS SAME\n");
    return 2;
}
