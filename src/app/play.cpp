#include "app/play.h"

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "app/commands.h"
#include "app/state_dump.h"
#include "base/clock.h"
#include "base/error.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/headless_host.h"
#include "toolkit/input.h"
#include "toolkit/recording_printer.h"

namespace app {
namespace {

// A line the runner cannot read: exit code 2 with the line's number.
class ScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failure after which nothing of the script can run (the database does not open): exit code 1.
class Fatal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Splits a line into words; a double-quoted text is one word; "#" outside quotes ends the line.
std::vector<std::string> words(const std::string& line) {
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < line.size()) {
        char c = line[i];
        if (c == ' ' || c == '\t' || c == '\r') {
            ++i;
        } else if (c == '#') {
            break;
        } else if (c == '"') {
            std::size_t end = line.find('"', i + 1);
            if (end == std::string::npos) throw ScriptError("guillemet fermant attendu");
            out.push_back(line.substr(i + 1, end - i - 1));
            i = end + 1;
        } else {
            std::size_t end = line.find_first_of(" \t\r", i);
            if (end == std::string::npos) end = line.size();
            out.push_back(line.substr(i, end - i));
            i = end;
        }
    }
    return out;
}

int number(const std::string& text, const char* what) {
    try {
        std::size_t used = 0;
        int n = std::stoi(text, &used);
        if (used == text.size()) return n;
    } catch (const std::exception&) {
    }
    throw ScriptError(std::string(what) + " : nombre attendu, « " + text + " » trouvé");
}

// The printers that a script has named, in the order it named them: recording printers, and PDF files
// for the names "pdf:PATH" when the runner can write them.
class ScriptPrinters : public toolkit::Printers {
public:
    explicit ScriptPrinters(PdfPrinterMaker pdf) : m_pdf(std::move(pdf)) {}

    std::vector<std::string> deviceNames() const override {
        std::vector<std::string> names;
        for (const auto& p : m_printers)
            names.push_back(p->deviceName());
        return names;
    }

    // A device named once is the same printer for the rest of the script.
    void add(const std::string& device) {
        for (const auto& p : m_printers)
            if (p->deviceName() == device) return;
        static const std::string kPdf = "pdf:";
        if (m_pdf && device.rfind(kPdf, 0) == 0 && device.size() > kPdf.size()) {
            m_printers.push_back(m_pdf(device, device.substr(kPdf.size())));
        } else {
            m_printers.push_back(std::make_unique<toolkit::RecordingPrinter>(device));
        }
    }

protected:
    toolkit::Printer& printer(int index) override { return *m_printers.at(static_cast<std::size_t>(index)); }

private:
    PdfPrinterMaker m_pdf;
    std::vector<std::unique_ptr<toolkit::Printer>> m_printers;
};

class Runner {
public:
    Runner(const PlayOptions& options, std::ostream& out, std::ostream& err)
        : m_options(options),
          m_out(out),
          m_err(err),
          m_printers(std::make_shared<ScriptPrinters>(options.pdfPrinter)) {
        // runPlay has refused a bad date already.
        if (!options.today.empty()) m_today = base::Date::parse(options.today);
        registerVerbs();
    }

    // Each line is played as soon as it is read, and what it printed goes out before the next is read:
    // two runners on one database can be driven line by line through their standard input.
    int run(std::istream& script) {
        m_script = &script;
        while (lineRead(m_next)) {
            const std::size_t number = m_next + 1;
            try {
                play(words(logicalLine()));
            } catch (const ScriptError& e) {
                m_err << "zandorel play : ligne " << number << " : " << e.what() << '\n';
                return 2;
            } catch (const toolkit::Unanswered& e) {
                m_err << "zandorel play : ligne " << number << " : " << e.what() << '\n';
                return 3;
            } catch (const Fatal& e) {
                m_err << "zandorel play : ligne " << number << " : " << e.what() << '\n';
                return 1;
            } catch (const std::exception& e) {
                // The host shows the failure; the screen stays as the routine left it, and the script goes
                // on.
                m_err << "zandorel play : ligne " << number << " : " << e.what() << '\n';
                m_errors.push_back(e.what());
                m_failed = true;
            }
            m_out.flush();
        }
        return m_failed ? 1 : 0;
    }

private:
    using Verb = std::function<void(const std::vector<std::string>&)>;

    // The line to play next, with the lines it continues on: a line whose last character, blanks aside,
    // is a backslash goes on with the next one.
    std::string logicalLine() {
        std::string line = m_lines[m_next++];
        for (;;) {
            const std::size_t last = line.find_last_not_of(" \t\r");
            if (last == std::string::npos || line[last] != '\\') return line;
            line.resize(last);
            if (!lineRead(m_next)) return line;
            line += " " + m_lines[m_next++];
        }
    }

    void play(const std::vector<std::string>& w) {
        if (w.empty()) return;
        auto it = m_verbs.find(w[0]);
        if (it == m_verbs.end()) throw ScriptError("commande inconnue « " + w[0] + " »");
        it->second(w);
    }

    static void arity(const std::vector<std::string>& w, std::size_t least, std::size_t most) {
        if (w.size() - 1 < least || w.size() - 1 > most) {
            throw ScriptError(w[0] + " : " + std::to_string(least) +
                              (least == most ? "" : " à " + std::to_string(most)) +
                              " argument(s) attendu(s)");
        }
    }

    control::Ctr_Zandorel& ctl() {
        if (!m_ctl) throw ScriptError("init attendu avant cette commande");
        return *m_ctl;
    }

    mvdb::Database& database() {
        if (!m_db) {
            try {
                m_db = openDatabase(m_options.db, mvdb::OpenMode::ExistingOnly, clock());
            } catch (const base::Error& e) {
                throw Fatal(e.what());
            }
        }
        return *m_db;
    }

    const base::Clock& clock() {
        if (!m_clock)
            m_clock = m_today ? std::make_unique<base::SystemClock>(*m_today)
                              : std::make_unique<base::SystemClock>();
        return *m_clock;
    }

    // Each dump reaches the output before the next line plays: a second runner may be waiting for it,
    // and an output that cannot be written ends the script, since what it records would be lost.
    void checkOutput() {
        try {
            checkWritten(m_out, "la sortie");
        } catch (const base::Error& e) {
            throw Fatal(e.what());
        }
    }

    // A control of the screen by name, or an array element as Name(3).
    toolkit::Control& find(const std::string& ref) { return find(ctl().UserControl, ref); }

    // A control of a form by name, or an array element as Name(3).
    toolkit::Control& find(const toolkit::Form& form, const std::string& ref) {
        std::string name = ref;
        int index = -1;
        std::size_t open = ref.find('(');
        if (open != std::string::npos && ref.back() == ')') {
            name = ref.substr(0, open);
            index = number(ref.substr(open + 1, ref.size() - open - 2), "indice");
        }
        toolkit::Control* c = form.find(name, index);
        if (!c || (index >= 0 && c->index() != index)) throw ScriptError("contrôle inconnu « " + ref + " »");
        return *c;
    }

    void registerVerbs() {
        m_verbs["today"] = [this](const auto& w) {
            arity(w, 1, 1);
            if (m_ctl) throw ScriptError("today se donne avant init");
            const std::string problem = todayProblem(w[1]);
            if (!problem.empty()) throw ScriptError(problem);
            m_today = *base::Date::parse(w[1]);
        };
        m_verbs["rights"] = [this](const auto& w) {
            arity(w, 1, 1);
            m_rights = number(w[1], "rights");
        };
        m_verbs["init"] = [this](const auto& w) {
            arity(w, 0, 0);
            if (m_ctl) throw ScriptError("init déjà fait");
            try {
                m_db = openDatabase(m_options.db, mvdb::OpenMode::ExistingOnly, clock());
            } catch (const base::Error& e) {
                throw Fatal(e.what());
            }
            m_ctl = std::make_unique<control::Ctr_Zandorel>(m_host, clock());
            m_ctl->setTheClient(nullptr);
            m_ctl->setTheDatabase(m_db);
            m_ctl->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(m_rights));
            m_ctl->setPrinters(m_printers);
            m_ctl->Init();
        };
        m_verbs["terminate"] = [this](const auto& w) {
            arity(w, 0, 0);
            ctl().UserControl_Terminate();
        };
        m_verbs["type"] = [this](const auto& w) {
            arity(w, 2, 2);
            toolkit::input::type(find(w[1]), w[2]);
        };
        m_verbs["clear"] = [this](const auto& w) {
            arity(w, 1, 1);
            toolkit::input::clear(find(w[1]));
        };
        m_verbs["key"] = [this](const auto& w) {
            arity(w, 2, 2);
            static const std::map<std::string, toolkit::Key> keys = {{"Enter", toolkit::Key::Enter},
                                                                     {"Tab", toolkit::Key::Tab},
                                                                     {"Backspace", toolkit::Key::Backspace},
                                                                     {"Delete", toolkit::Key::Delete},
                                                                     {"Escape", toolkit::Key::Escape}};
            auto k = keys.find(w[2]);
            if (k == keys.end())
                throw ScriptError("touche inconnue « " + w[2] + " » (Enter, Tab, Backspace, Delete, Escape)");
            toolkit::input::key(find(w[1]), k->second);
        };
        m_verbs["focus"] = [this](const auto& w) {
            arity(w, 1, 1);
            toolkit::input::focus(find(w[1]));
        };
        m_verbs["click"] = [this](const auto& w) {
            arity(w, 1, 1);
            toolkit::input::click(find(w[1]));
        };
        m_verbs["choose"] = [this](const auto& w) {
            arity(w, 2, 2);
            toolkit::Control& c = find(w[1]);
            if (c.kind() != toolkit::Kind::ComboBox)
                throw ScriptError(w[1] + " n'est pas une liste déroulante");
            toolkit::input::choose(static_cast<toolkit::ComboBox&>(c), w[2]);
        };
        m_verbs["scroll"] = [this](const auto& w) {
            arity(w, 2, 2);
            toolkit::Control& c = find(w[1]);
            if (c.kind() != toolkit::Kind::VScrollBar)
                throw ScriptError(w[1] + " n'est pas une barre de défilement");
            toolkit::input::scroll(static_cast<toolkit::VScrollBar&>(c), number(w[2], "scroll"));
        };
        m_verbs["answer"] = [this](const auto& w) {
            if (w.size() < 2) throw ScriptError("answer : au moins une réponse attendue");
            for (std::size_t i = 1; i < w.size(); ++i) {
                int a = number(w[i], "answer");
                if (a != 1 && a != 2 && a != 6 && a != 7)
                    throw ScriptError("réponse inconnue " + w[i] + " (1, 2, 6 ou 7)");
                m_host.queueAnswer(a);
            }
        };
        // The host's undo and redo of moves; nothing to undo or redo is no error, as in the window.
        m_verbs["undo"] = [this](const auto& w) {
            arity(w, 0, 0);
            ctl().Annuler();
        };
        m_verbs["redo"] = [this](const auto& w) {
            arity(w, 0, 0);
            ctl().Retablir();
        };
        registerDialogVerbs();
        m_verbs["service"] = [this](const auto& w) {
            arity(w, 1, 1);
            static const std::map<std::string, control::EcranServiceType> ecrans = {
                {"aides", control::EcranServiceType::Aides},
                {"accords", control::EcranServiceType::Accords},
                {"protocoles", control::EcranServiceType::Protocoles},
                {"soins", control::EcranServiceType::Soins},
                {"elements", control::EcranServiceType::ElementsGestion},
                {"tournees", control::EcranServiceType::Tournees}};
            auto e = ecrans.find(w[1]);
            if (e == ecrans.end())
                throw ScriptError("service : écran inconnu « " + w[1] +
                                  " » (aides, accords, protocoles, soins, elements, tournees)");
            ctl().ouvrirEcranService(e->second);
        };
        m_verbs["dump"] = [this](const auto& w) {
            arity(w, 0, 0);
            m_out << dumpState(ctl(), m_host.takeShown(), m_errors) << '\n';
            m_errors.clear();
            checkOutput();
        };
        m_verbs["db"] = [this](const auto& w) {
            arity(w, 1, 1);
            dumpRecords(database(), w[1], m_out);
            checkOutput();
        };
    }

    void registerDialogVerbs() {
        m_verbs["dialog"] = [this](const auto& w) {
            if (w.size() < 3) throw ScriptError("dialog : un formulaire et ses actions attendus");
            std::vector<std::string> steps(w.begin() + 2, w.end());
            checkDialogSteps(steps);
            m_host.queueDialog(w[1], [this, steps](toolkit::Form& form) { playDialog(form, steps); });
        };
        m_verbs["drag"] = [this](const auto& w) {
            if (w.size() != 7 || w[4] != "to") throw ScriptError("drag : « contrôle x y to x y » attendu");
            drag(find(w[1]), number(w[2], "x"), number(w[3], "y"), number(w[5], "x"), number(w[6], "y"));
        };
        m_verbs["rclick"] = [this](const auto& w) {
            arity(w, 1, 1);
            toolkit::Control& c = find(w[1]);
            std::optional<std::string> entry = takeMenuClick();
            m_host.queueMenuChoice(entry.value_or(""));
            rightClick(c);
            if (m_host.menuChoicesQueued() == 0) return;
            m_host.dropMenuChoices();
            if (entry) throw ScriptError("rclick " + w[1] + " n'a ouvert aucun menu pour " + *entry);
        };
        m_verbs["printer"] = [this](const auto& w) {
            if (w.size() == 2 && w[1] == "cancel") {
                m_host.queuePrinterCancel();
                return;
            }
            if (w.size() != 2 && (w.size() != 4 || w[2] != "copies"))
                throw ScriptError("printer : « cancel » ou une imprimante et « copies N » attendus");
            int copies = w.size() == 4 ? number(w[3], "copies") : 1;
            if (copies < 1) throw ScriptError("printer : au moins une copie attendue");
            m_printers->add(w[1]);
            m_host.queuePrinter(w[1], copies);
        };
    }

    // Steps of a dialog, as a user plays them on the form: "type CTRL TEXT", "clear CTRL", "choose CTRL
    // TEXT" (an item of a combo or list box), "check CTRL" (toggles a check box), "selectin CTRL N" (the
    // index N, from 0, of that list box), "select N" (the same on the form's first list box), "dump" for
    // the form as it stands, and names of controls to click. Their syntax is checked when queued; the
    // controls, once the form shows.
    static std::size_t dialogStepArity(const std::string& step) {
        static const std::map<std::string, std::size_t> arities = {
            {"select", 1}, {"selectin", 2}, {"type", 2}, {"clear", 1},
            {"choose", 2}, {"check", 1},    {"dump", 0}};
        auto a = arities.find(step);
        return a == arities.end() ? 0 : a->second;
    }

    static void checkDialogSteps(const std::vector<std::string>& steps) {
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const std::size_t n = dialogStepArity(steps[i]);
            if (steps.size() - i - 1 < n)
                throw ScriptError("dialog : " + steps[i] + " attend " + std::to_string(n) + " argument(s)");
            if (steps[i] == "select") number(steps[i + 1], "select");
            if (steps[i] == "selectin") number(steps[i + 2], "selectin");
            i += n;
        }
    }

    void playDialog(toolkit::Form& form, const std::vector<std::string>& steps) {
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const std::string& step = steps[i];
            const std::vector<std::string> args(
                steps.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                steps.begin() + static_cast<std::ptrdiff_t>(i + 1 + dialogStepArity(step)));
            i += args.size();
            if (step == "select") {
                selectIn(firstList(form), number(args[0], "select"));
            } else if (step == "selectin") {
                selectIn(find(form, args[0]), number(args[1], "selectin"));
            } else if (step == "type") {
                toolkit::input::type(find(form, args[0]), args[1]);
            } else if (step == "clear") {
                toolkit::input::clear(find(form, args[0]));
            } else if (step == "choose") {
                chooseIn(find(form, args[0]), args[1]);
            } else if (step == "check") {
                toolkit::Control& c = find(form, args[0]);
                if (c.kind() != toolkit::Kind::CheckBox)
                    throw ScriptError(args[0] + " n'est pas une case à cocher");
                toolkit::input::click(c);
            } else if (step == "dump") {
                m_out << dumpForm(form, m_host.takeShown()) << '\n';
            } else {
                toolkit::input::click(find(form, step));
            }
        }
    }

    static toolkit::Control& firstList(toolkit::Form& form) {
        for (toolkit::Control* c : form.controls())
            if (c->kind() == toolkit::Kind::ListBox) return *c;
        throw ScriptError("dialog : " + form.name() + " n'a pas de liste");
    }

    static void selectIn(toolkit::Control& c, int index) {
        if (c.kind() != toolkit::Kind::ListBox && c.kind() != toolkit::Kind::ComboBox)
            throw ScriptError(c.name() + " n'est pas une liste");
        auto& list = static_cast<toolkit::ListControl&>(c);
        if (index < 0 || index >= list.listCount())
            throw ScriptError("select " + std::to_string(index) + " : " + list.name() + " a " +
                              std::to_string(list.listCount()) + " élément(s)");
        toolkit::input::focus(list);
        list.setListIndex(index);
    }

    static void chooseIn(toolkit::Control& c, const std::string& item) {
        if (c.kind() == toolkit::Kind::ComboBox)
            return toolkit::input::choose(static_cast<toolkit::ComboBox&>(c), item);
        if (c.kind() != toolkit::Kind::ListBox) throw ScriptError(c.name() + " n'est pas une liste");
        auto& list = static_cast<toolkit::ListBox&>(c);
        const int index = list.find(item);
        if (index < 0)
            throw base::Error(base::codes::kBadData, "Choix impossible : « " + item +
                                                         " » n'est pas dans la liste de " + list.name());
        selectIn(list, index);
    }

    // The menu entry that the next line clicks, which a right click's pop-up takes: that line is then
    // played here and skipped by the runner.
    std::optional<std::string> takeMenuClick() {
        if (!lineRead(m_next)) return std::nullopt;
        std::vector<std::string> next = words(m_lines[m_next]);
        if (next.size() != 2 || next[0] != "click" || next[1].rfind("Mnu_", 0) != 0) return std::nullopt;
        ++m_next;
        return next[1];
    }

    // The right button pressed and released at the control's centre.
    static void rightClick(toolkit::Control& c) {
        if (!c.effectivelyVisible() || !c.effectivelyEnabled()) {
            throw base::Error(base::codes::kBadData,
                              "Clic droit impossible : " + c.name() + " est " +
                                  (c.effectivelyVisible() ? "désactivé" : "invisible"));
        }
        constexpr int kRightButton = 2;
        const double x = c.width() / 2, y = c.height() / 2;
        if (c.MouseDown) c.MouseDown(kRightButton, 0, x, y);
        if (c.MouseUp) c.MouseUp(kRightButton, 0, x, y);
    }

    // A drag as the mouse makes it: the pointer moves onto the control, so that a label takes its move
    // pointer, and the left button goes down at (x, y) inside it. If that began a drag, the pointer
    // enters the target, a point of the screen's own coordinates, and drops there; the toolkit finds
    // the control under it.
    static void drag(toolkit::Control& c, double x, double y, double cibleX, double cibleY) {
        if (!c.effectivelyVisible() || !c.effectivelyEnabled()) {
            throw base::Error(base::codes::kBadData,
                              "Glissement impossible : " + c.name() + " est " +
                                  (c.effectivelyVisible() ? "désactivé" : "invisible"));
        }
        constexpr int kLeftButton = 1, kEnter = 0;
        if (c.MouseMove) c.MouseMove(0, 0, x, y);
        if (c.MouseDown) c.MouseDown(kLeftButton, 0, x, y);
        toolkit::Form* form = c.form();
        if (!form || !form->dragSource()) return;
        toolkit::input::dragOver(*form, cibleX, cibleY, kEnter);
        toolkit::input::dragDrop(*form, cibleX, cibleY);
    }

    PlayOptions m_options;
    std::ostream& m_out;
    std::ostream& m_err;
    std::optional<base::Date> m_today;
    int m_rights = 2;
    std::unique_ptr<base::SystemClock> m_clock;
    toolkit::HeadlessHost m_host;
    std::shared_ptr<mvdb::Database> m_db;
    std::unique_ptr<control::Ctr_Zandorel> m_ctl;
    std::map<std::string, Verb> m_verbs;
    std::vector<std::string> m_errors;
    bool m_failed = false;
    // Reads the script up to line `index` (from 0); false when it ends before.
    bool lineRead(std::size_t index) {
        for (std::string line; m_lines.size() <= index && m_script && std::getline(*m_script, line);)
            m_lines.push_back(line);
        return index < m_lines.size();
    }

    std::istream* m_script = nullptr;
    std::vector<std::string> m_lines;
    std::size_t m_next = 0;  // the line to play next
    std::shared_ptr<ScriptPrinters> m_printers;
};

}  // namespace

int runPlay(const PlayOptions& options, std::istream& script, std::ostream& out, std::ostream& err) {
    if (!options.today.empty()) {
        const std::string problem = todayProblem(options.today);
        if (!problem.empty()) {
            err << "zandorel play : --today : " << problem << '\n';
            return 2;
        }
    }
    try {
        Runner runner(options, out, err);
        return runner.run(script);
    } catch (const base::Error& e) {
        err << "zandorel play : " << e.what() << '\n';
        return 1;
    }
}

}  // namespace app
