// zandorel: the planning screen of a home-nursing service, and its command-line tools.
// Exit codes: 0 success, 1 an error of the system (message on stderr), 2 bad arguments.
#include <CLI/CLI.hpp>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

#include "app/commands.h"
#include "app/demo_data.h"
#include "app/gui.h"
#include "app/play.h"
#include "app/print_command.h"
#include "app/week_command.h"
#include "base/clock.h"
#include "base/date.h"
#include "base/error.h"
#include "data/purge.h"
#include "mvdb/database.h"
#include "mvdb/pg_address.h"
#include "mvdb/sqlite_store.h"

namespace {

struct Options {
    std::string db;
    std::string today;
    int aides = 40;
    int historyDays = 60;
    unsigned seed = 1;
    std::string file;
    std::string list;
    std::string sentence;
    std::string input;
    std::string date, tournee, out;
    std::string from, to;
    int rights = 2;
    double zoom = 0;
    bool soir = false;
    bool json = false;
};

base::SystemClock makeClock(const Options& o) {
    return o.today.empty() ? base::SystemClock() : base::SystemClock(app::parseTodayOption(o.today));
}

int runDemoData(const Options& o) {
    base::SystemClock clock = makeClock(o);
    auto db = app::openDatabase(o.db, mvdb::OpenMode::CreateIfMissing, clock);
    app::DemoOptions options{clock.today(), o.aides, o.historyDays, o.seed};
    app::DemoSummary summary = app::writeDemoService(*db, options);
    std::cerr << app::demoSummaryText(summary) << '\n';
    return 0;
}

int runLoad(const Options& o) {
    base::SystemClock clock = makeClock(o);
    const bool fromStdin = o.input.empty() || o.input == "-";
    // The input is opened first: a load that cannot read it must not have made a database.
    std::ifstream in;
    if (!fromStdin) {
        in.open(o.input, std::ios::binary);
        if (!in) throw base::Error(base::codes::kBadData, "Lecture impossible du fichier " + o.input);
    }
    const bool fresh = !mvdb::pg::isServerAddress(o.db) && !std::filesystem::exists(o.db);
    auto db = app::openDatabase(o.db, mvdb::OpenMode::CreateIfMissing, clock);
    try {
        if (fromStdin)
            app::loadRecords(*db, std::cin, "entrée standard");
        else
            app::loadRecords(*db, in, o.input);
    } catch (...) {
        // Nothing was loaded: a database made for this load goes with it, side files included.
        db.reset();
        if (fresh) mvdb::SqliteStore::removeFiles(o.db);
        throw;
    }
    return 0;
}

int runDump(const Options& o) {
    base::SystemClock clock = makeClock(o);
    auto db = app::openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    app::dumpRecords(*db, o.file.empty() ? std::nullopt : std::optional<std::string>(o.file), std::cout);
    return 0;
}

int runPlayCommand(const Options& o, int& argc, char** argv) {
    app::PlayPdfFiles pdfFiles(argc, argv);
    app::PlayOptions options{o.db, o.today, [&pdfFiles](const std::string& device, const std::string& path) {
                                 return pdfFiles.make(device, path);
                             }};
    if (o.input.empty() || o.input == "-") return app::runPlay(options, std::cin, std::cout, std::cerr);
    std::ifstream in(o.input);
    if (!in) throw base::Error(base::codes::kBadData, "Lecture impossible du scénario " + o.input);
    return app::runPlay(options, in, std::cout, std::cerr);
}

int runQuery(const Options& o) {
    base::SystemClock clock = makeClock(o);
    auto db = app::openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    app::queryRecords(*db, o.file, o.list, o.sentence, std::cout);
    return 0;
}

int runRestorePurged(const Options& o) {
    base::SystemClock clock = makeClock(o);
    auto db = app::openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    const auto day = [](const std::string& text) {
        return text.empty() ? std::nullopt : base::Date::parse(text);
    };
    const data::PurgedRestore restored = data::restorePurged(*db, day(o.from), day(o.to));
    std::cout << data::restoreSummaryText(restored) << '\n';
    return 0;
}

// A day as "dd/mm/yyyy", for the options that name one.
CLI::Validator dateOption() {
    return CLI::Validator(
        [](std::string& text) {
            return base::Date::parse(text) ? std::string()
                                           : "date jj/mm/aaaa attendue, « " + text + " » trouvé";
        },
        "JJ/MM/AAAA");
}

// --today on a command: a day of the years a service can run in. A bad one is a bad argument, refused
// before anything opens.
void addTodayOption(CLI::App* command, std::string& today) {
    command->add_option("--today", today, "Date du jour (jj/mm/aaaa)")
        ->check(CLI::Validator([](std::string& text) { return app::todayProblem(text); }, "JJ/MM/AAAA"));
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away is a failed write, told like any other, not a silent death.
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App cli{"Zandorel : gestion des tournées SSIAD"};
    Options o;
    cli.require_subcommand(0, 1);

    auto* demo = cli.add_subcommand("demo-data", "Écrit le service de démonstration");
    demo->add_option("--db", o.db, "Base de données")->required();
    addTodayOption(demo, o.today);
    demo->add_option("--aides", o.aides, "Nombre d'aidés")->check(CLI::Range(1, 99999));
    demo->add_option("--history-days", o.historyDays, "Jours d'historique")->check(CLI::Range(0, 3650));
    demo->add_option("--seed", o.seed, "Graine");

    auto* load = cli.add_subcommand("load", "Charge des enregistrements JSON Lines");
    load->add_option("--db", o.db, "Base de données")->required();
    load->add_option("file", o.input, "Fichier JSON Lines (entrée standard sans lui)");

    auto* dump = cli.add_subcommand("dump", "Écrit les enregistrements en JSON Lines");
    dump->add_option("--db", o.db, "Base de données")->required();
    dump->add_option("--file", o.file, "Un seul fichier");

    auto* query = cli.add_subcommand("query", "Exécute une phrase de sélection");
    query->add_option("--db", o.db, "Base de données")->required();
    query->add_option("--file", o.file, "Fichier à lister")->required();
    query->add_option("--list", o.list, "Attributs à rendre, par exemple \"0 1 2\"")->required();
    query->add_option("sentence", o.sentence, "Phrase SELECT")->required();

    auto* play = cli.add_subcommand("play", "Joue un scénario sur l'écran, sans fenêtre");
    play->add_option("--db", o.db, "Base de données")->required();
    addTodayOption(play, o.today);
    play->add_option("script", o.input, "Scénario (entrée standard sans lui)");

    auto* print =
        cli.add_subcommand("print", "Imprime les tournées d'une date dans un fichier PDF, sans fenêtre");
    print->add_option("--db", o.db, "Base de données")->required();
    print->add_option("--date", o.date, "Date des tournées (jj/mm/aaaa)")->required()->check(dateOption());
    print->add_option("--tournee", o.tournee, "Code d'une tournée, sur trois caractères (toutes sans lui)")
        ->check(CLI::Validator(
            [](std::string& code) {
                return code.size() == 3 ? std::string() : "code de trois caractères attendu";
            },
            "CODE"));
    print->add_option("--out", o.out, "Fichier PDF à écrire")->required();
    addTodayOption(print, o.today);

    auto* restore = cli.add_subcommand("restore-purged",
                                       "Remet dans SSIADTOURNEE les enregistrements archivés par la purge");
    restore->add_option("--db", o.db, "Base de données")->required();
    restore->add_option("--from", o.from, "Premier jour à remettre (jj/mm/aaaa)")->check(dateOption());
    restore->add_option("--to", o.to, "Dernier jour à remettre (jj/mm/aaaa)")->check(dateOption());

    auto* week = cli.add_subcommand("week", "La semaine d'un coup d'œil : tournées et aidés en attente");
    week->add_option("--db", o.db, "Base de données")->required();
    week->add_option("--date", o.date, "Un jour de la semaine (jj/mm/aaaa)")->required()->check(dateOption());
    week->add_flag("--soir", o.soir, "Aidés en attente le soir (le matin sans lui)");
    week->add_flag("--json", o.json, "Écrit la semaine en JSON");
    addTodayOption(week, o.today);

    auto* gui = cli.add_subcommand("gui", "L'écran de planification");
    for (CLI::App* screen : {static_cast<CLI::App*>(&cli), gui}) {
        screen->add_option("--db", o.db, "Base de données");
        screen->add_option("--rights", o.rights, "Niveau de droits");
        addTodayOption(screen, o.today);
        screen->add_option("--zoom", o.zoom, "Zoom de l'écran, 1 pour 100 %")->check(CLI::Range(0.5, 4.0));
    }

    const auto runCommand = [&]() {
        if (*demo) return runDemoData(o);
        if (*load) return runLoad(o);
        if (*dump) return runDump(o);
        if (*query) return runQuery(o);
        if (*play) return runPlayCommand(o, argc, argv);
        if (*restore) return runRestorePurged(o);
        if (*print) {
            app::runPrint(app::PrintOptions{o.db, o.date, o.tournee, o.out, o.today}, argc, argv);
            return 0;
        }
        if (*week) {
            app::runWeek(app::WeekOptions{o.db, o.date, o.today, o.soir, o.json}, std::cout, std::cerr);
            return 0;
        }
        return app::runGui(app::GuiOptions{o.db, o.today, o.rights, o.zoom}, argc, argv);
    };

    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        int code = cli.exit(e);
        return code == 0 ? 0 : 2;
    }
    try {
        const int code = runCommand();
        app::checkWritten(std::cout, "la sortie standard");
        return code;
    } catch (const base::Error& e) {
        std::cerr << "zandorel : " << e.what() << '\n';
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "zandorel : erreur inattendue : " << e.what() << '\n';
        return 1;
    }
}
