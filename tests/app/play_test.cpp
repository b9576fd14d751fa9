#include "app/play.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "app/commands.h"
#include "app/demo_data.h"
#include "base/clock.h"
#include "toolkit/recording_printer.h"

namespace {

namespace fs = std::filesystem;

// The demo service of Monday 23/11/2026 in a file of its own, for the runner to open.
class DemoFile {
public:
    DemoFile() : m_path(fs::temp_directory_path() / ("zandorel_play_" + std::to_string(::getpid()) + ".db")) {
        fs::remove(m_path);
        base::SystemClock clock;
        auto db = app::openDatabase(m_path.string(), mvdb::OpenMode::CreateIfMissing, clock);
        app::writeDemoService(*db, app::DemoOptions{app::parseTodayOption("23/11/2026"), 12, 7, 1});
    }
    ~DemoFile() {
        for (const char* suffix : {"", "-wal", "-shm"})
            fs::remove(m_path.string() + suffix);
    }
    std::string path() const { return m_path.string(); }

private:
    fs::path m_path;
};

struct Played {
    int code;
    std::string out, err;
};

Played play(const app::PlayOptions& options, const std::string& script) {
    std::istringstream in(script);
    std::ostringstream out, err;
    const int code = app::runPlay(options, in, out, err);
    return {code, out.str(), err.str()};
}

TEST(Play, RefusesScrollLinesItCannotRead) {
    DemoFile demo;
    struct Cas {
        const char *nom, *ligne, *message;
    } const cas[] = {
        {"not a scroll bar", "scroll Txt_Date 3",
         "zandorel play : ligne 3 : Txt_Date n'est pas une barre de défilement\n"},
        {"no number", "scroll VScroll haut",
         "zandorel play : ligne 3 : scroll : nombre attendu, « haut » trouvé\n"},
        {"no value", "scroll VScroll", "zandorel play : ligne 3 : scroll : 2 argument(s) attendu(s)\n"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        const Played p =
            play({demo.path(), "23/11/2026"}, std::string("today 23/11/2026\ninit\n") + k.ligne + "\n");
        EXPECT_EQ(p.code, 2);
        EXPECT_EQ(p.err, k.message);
    }
}

TEST(Play, RefusesServiceAndDialogLinesItCannotRead) {
    DemoFile demo;
    struct Cas {
        const char *nom, *lignes, *message;
    } const cas[] = {
        {"unknown screen", "service patients",
         "zandorel play : ligne 3 : service : écran inconnu « patients » (aides, accords, protocoles, soins, "
         "elements, tournees)\n"},
        {"a step without its text", "dialog Frm_Soins type Txt_Libelle",
         "zandorel play : ligne 3 : dialog : type attend 2 argument(s)\n"},
        {"a list index that is no number", "dialog Frm_Soins selectin Lst_Elements premier Cmd_Fermer",
         "zandorel play : ligne 3 : selectin : nombre attendu, « premier » trouvé\n"},
        {"a continued line ends where the script ends", "dialog Frm_Soins type \\",
         "zandorel play : ligne 3 : dialog : type attend 2 argument(s)\n"},
        {"check on what is no check box", "dialog Frm_Soins check Txt_Libelle Cmd_Fermer\nservice soins",
         "zandorel play : ligne 4 : Txt_Libelle n'est pas une case à cocher\n"},
        {"a row beyond the list", "dialog Frm_Soins \\\n  selectin Lst_Elements 99 Cmd_Fermer\nservice soins",
         "zandorel play : ligne 5 : select 99 : Lst_Elements a 15 élément(s)\n"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        const Played p =
            play({demo.path(), "23/11/2026"}, std::string("today 23/11/2026\ninit\n") + k.lignes + "\n");
        EXPECT_EQ(p.code, 2);
        EXPECT_EQ(p.err, k.message);
    }
}

// A recording printer whose document outlives it: the runner owns its printers till the script ends.
class Capture : public toolkit::RecordingPrinter {
public:
    Capture(const std::string& device, std::string& document)
        : RecordingPrinter(device), m_document(document) {}

protected:
    void finishDocument() override {
        RecordingPrinter::finishDocument();
        m_document = output();
    }

private:
    std::string& m_document;
};

// The runner makes one printer per device a script names; "pdf:PATH" is made by the maker it is given,
// once, however often the script names it, and the screen's print reaches it.
TEST(Play, APdfPrinterIsMadeOnceForItsPathAndReceivesThePrint) {
    DemoFile demo;
    std::vector<std::pair<std::string, std::string>> faits;
    std::string document;
    app::PlayOptions options{demo.path(), "23/11/2026",
                             [&](const std::string& device, const std::string& path) {
                                 faits.emplace_back(device, path);
                                 return std::make_unique<Capture>(device, document);
                             }};
    const Played p =
        play(options,
             "today 23/11/2026\ninit\ntype Txt_CodeTournee 002\ndialog Frm_Anomalies Cmd_Annuler\n"
             "click Cmd_Affichage\nprinter pdf:/tmp/jour.pdf\nprinter \"Laser du bureau\"\n"
             "printer pdf:/tmp/jour.pdf\nclick Cmd_Imprimer\nterminate\n");
    EXPECT_EQ(p.code, 0) << p.err;
    EXPECT_EQ(faits,
              (std::vector<std::pair<std::string, std::string>>{{"pdf:/tmp/jour.pdf", "/tmp/jour.pdf"}}));
    EXPECT_NE(document.find("TOURNEE : 002"), std::string::npos) << document;
}

}  // namespace
