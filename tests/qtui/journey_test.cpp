// A planner's day in the real window: each journey drives the widgets as a user would and checks, after
// every step that writes, what another workstation sees of it.
#include "journey.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>
#include <algorithm>

#include "companions/companions.h"
#include "companions/frm_accords.h"
#include "companions/frm_dossier_aide.h"
#include "companions/frm_elem_gest_ssiad.h"
#include "companions/frm_protocole_ssiad.h"
#include "companions/frm_soins.h"
#include "companions/frm_ssiad_caract_tournee.h"
#include "mvdb/store.h"
#include "qtui/week_window.h"

namespace journey {
namespace {

// The first waiting label of the screen.
const toolkit::Label& firstLabel(const control::Ctr_Zandorel& c) {
    for (toolkit::Control* label : c.Etq_Aide.elements()) {
        if (label->index() > 0) return static_cast<const toolkit::Label&>(*label);
    }
    return c.Etq_Aide(0);
}

class JourneyDay : public Journey {
protected:
    // The printer choice and then the file: a PDF in the journey's folder.
    void answerPrinterWithPdf(const std::string& file) {
        whenModal([](QWidget* choice) {
            for (QPushButton* b : choice->findChildren<QPushButton*>()) {
                if (b->text() == "OK") return QTest::mouseClick(b, Qt::LeftButton);
            }
            FAIL() << "no OK in the printer choice";
        });
        whenModal([file](QWidget* window) {
            auto* files = qobject_cast<QFileDialog*>(window);
            ASSERT_NE(files, nullptr) << "the file choice was expected";
            // The folder is listed as a user would see it before the name is typed.
            QTest::qWait(300);
            auto* name = files->findChild<QLineEdit*>("fileNameEdit");
            ASSERT_NE(name, nullptr);
            name->setText(QString::fromStdString(file));
            QMetaObject::invokeMethod(files, "accept");
        });
    }
    // "..." then Nouveau, the code proposed replaced by `code`, the fields of the tournée, Enregistrer and
    // Fermer.
    void createTournee(const QString& code) {
        inDialog([this, code](qtui::FormView& view) {
            auto& form = static_cast<control::Frm_SsiadCaractTournee&>(view.form());
            clickOn(form.Cmd_Nouveau);
            typeInto(form.Txt_Code, "\b\b\b" + code);
            typeInto(form.Txt_Libelle, "ESSAI " + code);
            chooseIn(form.Cbo_Jour, "Lundi");
            typeInto(form.Txt_Debut, "8h00");
            typeInto(form.Txt_Fin, "12h00");
            chooseIn(form.Cbo_Type, "I infirmier");
            clickOn(form.Cmd_Enregistrer);
            clickOn(form.Cmd_Fermer);
        });
        clickOn(m_ctl->Cmd_Tournee);
    }
};

TEST_F(JourneyDay, JourneyATourneeSavedAfterPrintingAndCompanionScreensIsSeenElsewhereAtOnce) {
    typeInto(m_ctl->Txt_CodeTournee, "001");
    ASSERT_EQ(m_ctl->Txt_CodeTournee.text(), "001");
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_TRUE(waitFor([&] { return m_ctl->Etq_Aide.Count() > 1 && answersUsed(); }));

    const std::string pdf = (m_folder / "001.pdf").string();
    answerPrinterWithPdf(pdf);
    clickOn(m_ctl->Cmd_Imprimer);
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    ASSERT_TRUE(std::filesystem::exists(pdf));
    EXPECT_GT(std::filesystem::file_size(pdf), 0u);
    // Another workstation reads meanwhile.
    EXPECT_EQ(elsewhere("SSIADCARACTTOURNEE", "0", "SELECT SSIADCARACTTOURNEE AVEC 0 = \"001\""), "001\n");

    // "Annuler" leaves the tournée, then the day without one.
    clickOn(m_ctl->Cmd_Sortir);
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_GT(m_ctl->Etq_Aide.Count(), 1);

    const toolkit::Label& label = firstLabel(*m_ctl);
    popupEntry(label, "Eléments de gestion SSIAD", [this](qtui::FormView& view) {
        clickOn(static_cast<control::Frm_ElemGestSSIAD&>(view.form()).Cmd_Fermer);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    popupEntry(label, "Dossier Aide", [this](qtui::FormView& view) {
        clickOn(static_cast<control::Frm_DossierAide&>(view.form()).Cmd_Fermer);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));

    createTournee("091");
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    EXPECT_EQ(elsewhere("SSIADCARACTTOURNEE", "0 1", "SELECT SSIADCARACTTOURNEE AVEC 0 = \"091\""),
              "091\tESSAI 091\n");
}

TEST_F(JourneyDay, JourneyAValidationThroughTheAnomalyListIsSeenElsewhereAtOnce) {
    typeInto(m_ctl->Txt_CodeTournee, "001");
    chooseIn(m_ctl->Cbo_Date, "30/11/2026");
    ASSERT_EQ(m_ctl->Cbo_Date.text(), "30/11/2026");
    QTest::qWait(50);
    clickOn(m_ctl->Cmd_Affichage);
    QTest::qWait(50);
    ASSERT_GT(m_ctl->Etq_Aide.Count(), 1);
    // A waiting label dropped at 11h00 in the detail pane.
    const int index = std::stoi(m_ctl->TabTempoAide(1, 1));
    const toolkit::Label& label = m_ctl->Etq_Aide(index);
    const std::string aide = label.tag().substr(0, 5);
    const qtui::Zoom z(1.0);
    dragLabel(label, QPoint(10, 10), QPoint(150, z.px(760 + 5 * 4 * m_ctl->PasQuartHeure)));
    QTest::qWait(50);
    ASSERT_EQ(label.left(), 760);
    inDialog([this](qtui::FormView& view) {
        ASSERT_EQ(view.form().name(), "Frm_Anomalies");
        clickOn(*view.form().find("Cmd_Ok"));
    });
    clickOn(m_ctl->Cmd_Ok);
    QTest::qWait(50);
    // 30/11/2026 is internal day 21519.
    const std::string seen =
        elsewhere("SSIADTOURNEE", "0",
                  "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee = \"21519\"");
    EXPECT_NE(seen.find("001" + aide), std::string::npos) << seen;
}

// Each screen that opens over the planning screen, closed: the code typed next lands whole in its box.
TEST_F(JourneyDay, JourneyNoKeystrokeIsLostAfterADialogCloses) {
    struct Row {
        const char* name;
        std::function<void()> openAndClose;
    } const rows[] = {
        {"tournée characteristics",
         [this] {
             inDialog([this](qtui::FormView& view) {
                 clickOn(static_cast<control::Frm_SsiadCaractTournee&>(view.form()).Cmd_Fermer);
             });
             clickOn(m_ctl->Cmd_Tournee);
         }},
        {"management elements",
         [this] {
             clickOn(m_ctl->Cmd_Affichage);
             popupEntry(firstLabel(*m_ctl), "Eléments de gestion SSIAD", [this](qtui::FormView& view) {
                 clickOn(static_cast<control::Frm_ElemGestSSIAD&>(view.form()).Cmd_Fermer);
             });
         }},
        {"a message box",
         [this] {
             answerBox("OK");
             typeInto(m_ctl->Txt_CodeTournee, "999");
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.openAndClose();
        ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
        QTest::qWait(50);
        QWidget* box = widgetOf(m_ctl->Txt_CodeTournee);
        typeInto(m_ctl->Txt_CodeTournee, "001");
        EXPECT_EQ(m_ctl->Txt_CodeTournee.text(), "001");
        EXPECT_EQ(QApplication::focusWidget(), box);
        // Back to a screen without a tournée for the next row.
        QTest::keyClick(box, Qt::Key_Backspace);
        QTest::keyClick(box, Qt::Key_Backspace);
        QTest::keyClick(box, Qt::Key_Backspace);
        ASSERT_EQ(m_ctl->Txt_CodeTournee.text(), "");
    }
}

// The controls of the screen from bottom to top, parent by parent.
std::string stacking(const qtui::FormView& view, const QWidget* parent) {
    std::string out;
    for (const QObject* child : parent->children()) {
        const auto* w = qobject_cast<const QWidget*>(child);
        const toolkit::Control* c = w ? view.controlFor(w) : nullptr;
        if (!c || view.widgetFor(c) != w) continue;
        out += c->name() + (c->index() >= 0 ? "(" + std::to_string(c->index()) + ")" : "") + " ";
        const std::string inside = stacking(view, w);
        if (!inside.empty()) out += "[ " + inside + "] ";
    }
    return out;
}

// The legend and every other control stay on top of what they stood on, whatever the zoom.
TEST_F(JourneyDay, JourneyAZoomChangeKeepsTheLegendOfActs) {
    const std::string before = stacking(m_window->view(), &m_window->view());
    for (const char* zoom : {"Zoom 150 %", "Zoom 100 %", "Zoom 200 %"}) {
        SCOPED_TRACE(zoom);
        QAction* entry = menuAction("Affichage", zoom);
        ASSERT_NE(entry, nullptr);
        entry->trigger();
        QTest::qWait(20);
        EXPECT_EQ(stacking(m_window->view(), &m_window->view()), before);
        const std::vector<const toolkit::Control*> legend = {
            &m_ctl->Etq_Infirmier, &m_ctl->Lst_Infirmier, &m_ctl->Etq_Soignant, &m_ctl->Lst_Soignant,
            &m_ctl->Etq_Mixte,     &m_ctl->Lst_Mixte,     &m_ctl->Frame1};
        for (const toolkit::Control* c : legend) {
            QWidget* w = widgetOf(*c);
            ASSERT_NE(w, nullptr);
            const QPoint centre = w->mapTo(&m_window->view(), QPoint(w->width() / 2, w->height() * 3 / 4));
            QWidget* shown = m_window->view().childAt(centre);
            EXPECT_TRUE(shown == w || w->isAncestorOf(shown))
                << c->name() << " is hidden under "
                << (m_window->view().controlFor(shown) ? m_window->view().controlFor(shown)->name() : "?");
        }
    }
}

// The window is made larger by hand, then given a zoom from the menu: the screen scales as a whole.
TEST_F(JourneyDay, JourneyTheZoomFollowsTheSizeOfTheWindow) {
    typeInto(m_ctl->Txt_CodeTournee, "001");
    clickOn(m_ctl->Cmd_Affichage);
    qtui::FormView& view = m_window->view();
    struct Row {
        const char* name;
        std::function<void()> act;
        double zoom;
    } const rows[] = {
        {"enlarged by hand to 150 %",
         [&] { m_window->resize(m_window->size() - view.size() + QSize(1136, 711)); }, 1136 * 15.0 / 11355},
        {"wider than high", [&] { m_window->resize(m_window->size() - view.size() + QSize(1800, 711)); },
         711 * 15.0 / 7110},
        {"the menu's 125 %", [&] { menuAction("Affichage", "Zoom 125 %")->trigger(); }, 1.25},
        {"the menu's 200 %", [&] { menuAction("Affichage", "Zoom 200 %")->trigger(); }, 2.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.act();
        QTest::qWait(50);
        EXPECT_NEAR(view.zoom().factor(), row.zoom, 0.002);
        const qtui::Zoom z(view.zoom().factor());
        for (const toolkit::Control* c : std::vector<const toolkit::Control*>{
                 &m_ctl->Cmd_Affichage, &m_ctl->Frame1, &m_ctl->Etq_Infirmier, &m_ctl->Cbo_Date,
                 &m_ctl->Etq_Aide(std::stoi(m_ctl->TabTempoDetail(1, 1)))}) {
            EXPECT_EQ(widgetOf(*c)->geometry(), z.rect(*c)) << c->name();
            // The font follows the zoom; a caption too wide for its box is drawn a little smaller.
            EXPECT_LE(widgetOf(*c)->font().pixelSize(), z.font(*c).pixelSize()) << c->name();
            EXPECT_GE(widgetOf(*c)->font().pixelSize(), z.font(*c).pixelSize() * 3 / 4) << c->name();
        }
        EXPECT_GE(view.width(), z.px(m_ctl->UserControl.width()));
        EXPECT_GE(view.height(), z.px(m_ctl->UserControl.height()));
    }
    EXPECT_TRUE(menuAction("Affichage", "Zoom 200 %")->isChecked());
    EXPECT_FALSE(menuAction("Affichage", "Zoom 125 %")->isChecked());
}

// What a caption needs beyond the room of its widget, in pixels; empty when it shows whole.
std::string overflow(const qtui::FormView& view) {
    std::string out;
    for (const toolkit::Control* c : view.form().controls()) {
        QWidget* w = view.widgetFor(c);
        if (!w || !w->isVisible() || c->caption().empty()) continue;
        const QFontMetrics metrics(w->font());
        const QString text = QString::fromStdString(c->caption()).replace("\r\n", "\n");
        QSize need, room;
        if (auto* label = qobject_cast<QLabel*>(w)) {
            room = label->contentsRect().size();
            need = metrics.boundingRect(QRect(QPoint(), QSize(room.width(), 1 << 20)), Qt::TextWordWrap, text)
                       .size();
        } else if (auto* option = qobject_cast<QAbstractButton*>(w);
                   option && (qobject_cast<QRadioButton*>(w) || qobject_cast<QCheckBox*>(w))) {
            // The style's indicator sets the button's height, whatever the font.
            need = QSize(option->sizeHint().width(), metrics.height());
            room = option->size();
        } else if (qobject_cast<QPushButton*>(w)) {
            need = QSize(metrics.horizontalAdvance(text) + 4, metrics.height());
            room = w->size();
        } else {
            continue;
        }
        if (need.width() > room.width() || need.height() > room.height())
            out += c->name() + " « " + c->caption() + " » " + std::to_string(need.width()) + "x" +
                   std::to_string(need.height()) + " in " + std::to_string(room.width()) + "x" +
                   std::to_string(room.height()) + " ";
    }
    return out;
}

// At every zoom of the menu, every caption of the screen and of the tournée characteristics shows whole.
TEST_F(JourneyDay, JourneyEveryCaptionFitsItsControlAtEveryZoom) {
    for (const char* zoom :
         {"Zoom 100 %", "Zoom 125 %", "Zoom 150 %", "Zoom 175 %", "Zoom 200 %", "Zoom 250 %"}) {
        SCOPED_TRACE(zoom);
        menuAction("Affichage", zoom)->trigger();
        QTest::qWait(20);
        EXPECT_EQ(overflow(m_window->view()), "");
        inDialog([this](qtui::FormView& view) {
            EXPECT_EQ(overflow(view), "");
            clickOn(static_cast<control::Frm_SsiadCaractTournee&>(view.form()).Cmd_Fermer);
        });
        clickOn(m_ctl->Cmd_Tournee);
        ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    }
}

// The aidé's file and management elements, changed and saved from the pop-up menu of a label: each save is
// seen at once by another workstation.
TEST_F(JourneyDay, JourneyCompanionScreensEditedAndSavedAreSeenElsewhere) {
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_GT(m_ctl->Etq_Aide.Count(), 1);
    const toolkit::Label& label = firstLabel(*m_ctl);
    const std::string aide = label.tag().substr(0, 5);
    std::string telephone;
    popupEntry(label, "Dossier Aide", [&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_DossierAide&>(view.form());
        typeInto(form.Txt_Telephone, " 99");
        telephone = form.Txt_Telephone.text();
        clickOn(form.Cmd_Enregistrer);
        clickOn(form.Cmd_Fermer);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    EXPECT_EQ(elsewhere("CIVILAIDE", "14", "SELECT CIVILAIDE AVEC 0 = \"" + aide + "\""), telephone + "\n");

    // Another sector of the tournées, chosen in the list.
    std::string secteur;
    popupEntry(label, "Eléments de gestion SSIAD", [&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_ElemGestSSIAD&>(view.form());
        for (const std::string& s : form.Cbo_Secteur.items())
            if (s != form.Cbo_Secteur.text()) secteur = s;
        ASSERT_FALSE(secteur.empty());
        chooseIn(form.Cbo_Secteur, QString::fromStdString(secteur));
        clickOn(form.Cmd_Enregistrer);
        clickOn(form.Cmd_Fermer);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    EXPECT_NE(elsewhere("SSIADELEMGEST", "23", "SELECT SSIADELEMGEST AVEC 0 = \"" + aide + "]\"")
                  .find(secteur + "\n"),
              std::string::npos);

    // The care plan's windows as the planner reads them: each row opens with its window in hours and
    // minutes (a bound of 1150 hundredths of an hour is 11h30), as the stored protocoles have it.
    const auto hhmm = [](const std::string& centiemes) {
        const int c = std::stoi(centiemes);
        const int minutes = (c % 100 * 60 + 50) / 100;
        return QString("%1h%2").arg(c / 100, 2, 10, QChar('0')).arg(minutes, 2, 10, QChar('0'));
    };
    QStringList windows;
    const QStringList stored =
        QString::fromStdString(
            elsewhere("SSIADPROTOCOLE", "0 2", "SELECT SSIADPROTOCOLE AVEC CodeAide = \"" + aide + "\""))
            .split('\n', Qt::SkipEmptyParts);
    for (const QString& line : stored) {
        const QStringList cells = line.split('\t');
        windows << hhmm(cells[0].right(4).toStdString()) + " - " + hhmm(cells[1].toStdString());
    }
    popupEntry(label, "Protocole de traitement", [&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_ProtocoleSsiad&>(view.form());
        auto* list = dynamic_cast<QListWidget*>(view.widgetFor(&form.Lst_Elements));
        ASSERT_NE(list, nullptr);
        ASSERT_GT(list->count(), 0);
        for (int i = 0; i < list->count(); ++i) {
            const QString row = list->item(i)->text();
            const QString window = QRegularExpression("\\d\\dh\\d\\d - \\d\\dh\\d\\d").match(row).captured();
            EXPECT_TRUE(windows.contains(window)) << row.toStdString() << " is no stored window";
        }
        clickOn(form.Cmd_Fermer);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
}

// The menu Service in the real window: a soin typed, made an infirmier's act with its box and saved, then
// found by a search, chosen in the list and deleted after the question; an accord made for an aidé chosen
// from the list. Each save is seen at once by another workstation.
TEST_F(JourneyDay, JourneyServiceScreensFromTheMenuSaveAndAsk) {
    QString question;
    inDialog([&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_Soins&>(view.form());
        EXPECT_EQ(overflow(view), "");
        typeInto(form.Txt_Libelle, "Soin de nuit");
        clickOn(form.Chk_ActeInfirmier);
        EXPECT_TRUE(widget<QCheckBox>(form.Chk_ActeInfirmier)->isChecked());
        clickOn(form.Cmd_Enregistrer);
        EXPECT_EQ(elsewhere("SSIADSOINS", "1 5", "SELECT SSIADSOINS AVEC 0 = \"S16\""), "Soin de nuit\tO\n");

        typeInto(form.Txt_Recherche, "nuit");
        auto* list = widget<QListWidget>(form.Lst_Elements);
        ASSERT_EQ(list->count(), 1);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        EXPECT_EQ(form.cleCourante(), "S16");
        answerBox("Oui", &question);
        clickOn(form.Cmd_Supprimer);
        clickOn(form.Cmd_Fermer);
    });
    menuAction("Service", "Soins")->trigger();
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    EXPECT_EQ(question, "Supprimer le soin S16 « Soin de nuit » ?");
    EXPECT_EQ(elsewhere("SSIADSOINS", "1", "SELECT SSIADSOINS AVEC 0 = \"S16\""), "");

    std::string aide;
    inDialog([&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_Accords&>(view.form());
        EXPECT_EQ(overflow(view), "");
        ASSERT_GT(form.Cbo_Aide.listCount(), 0);
        aide = form.Cbo_Aide.list(0).substr(0, 5);
        chooseIn(form.Cbo_Aide, QString::fromStdString(form.Cbo_Aide.list(0)));
        if (form.Cbo_Element.listIndex() < 0)
            chooseIn(form.Cbo_Element, QString::fromStdString(form.Cbo_Element.list(0)));
        typeInto(form.Txt_PremierJour, "01/01/2027");
        typeInto(form.Txt_DernierJour, "31/01/2027");
        clickOn(form.Cmd_Enregistrer);
        EXPECT_FALSE(widget<QComboBox>(form.Cbo_Aide)->isEnabled());
        clickOn(form.Cmd_Fermer);
    });
    menuAction("Service", "Accords")->trigger();
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    EXPECT_NE(elsewhere("SSIADACCORDS", "1 2", "SELECT SSIADACCORDS AVEC CodeAide = \"" + aide + "\"")
                  .find("21551\t21581\n"),
              std::string::npos);
}

// A day of tournée 001: a waiting label placed, a placed one moved down, the gaps chained, the day
// validated, and the same day shown again as another workstation now has it.
TEST_F(JourneyDay, JourneyAPlannersDayOnTourneeOneFromDisplayToValidation) {
    typeInto(m_ctl->Txt_CodeTournee, "001");
    chooseIn(m_ctl->Cbo_Date, "30/11/2026");
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_TRUE(m_ctl->JourneeAffichee);
    const qtui::Zoom z(1.0);
    const auto detailAt = [&](double hour) {
        return z.px(760 + (hour - m_ctl->HeureDebutEchelle) * 4 * m_ctl->PasQuartHeure);
    };

    const toolkit::Label& waiting = m_ctl->Etq_Aide(std::stoi(m_ctl->TabTempoAide(1, 1)));
    const std::string aide = waiting.tag().substr(0, 5);
    dragLabel(waiting, QPoint(10, 10), QPoint(150, detailAt(11)));
    ASSERT_EQ(waiting.left(), 760);

    const toolkit::Label& placed = m_ctl->Etq_Aide(std::stoi(m_ctl->TabTempoDetail(1, 1)));
    const double before = placed.top();
    dragLabel(placed, QPoint(10, 5), QPoint(150, detailAt(12) + 5));
    EXPECT_GT(placed.top(), before);
    EXPECT_EQ(placed.left(), 760);

    clickOn(m_ctl->Cmd_Enchainement);
    const std::string planned = m_ctl->TabTempoDetail->text();

    // The anomaly list asks when a label stands outside its window.
    inDialog([this](qtui::FormView& view) { clickOn(*view.form().find("Cmd_Ok")); });
    clickOn(m_ctl->Cmd_Ok);
    forgetAnswers();
    const std::string saved =
        elsewhere("SSIADTOURNEE", "0",
                  "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee = \"21519\"");
    EXPECT_EQ(static_cast<std::int64_t>(std::count(saved.begin(), saved.end(), '\n')),
              static_cast<std::int64_t>(std::count(planned.begin(), planned.end(), '\xFE')) + 1)
        << saved;
    EXPECT_NE(saved.find("001" + aide), std::string::npos) << saved;
}

// A waiting label sent to a tournée from its pop-up menu: the tournée opens on that day with the label to
// place; placed and validated, it is seen elsewhere. A label that no tournée can take is told so, and
// stays where it was.
TEST_F(JourneyDay, JourneyTheAssignmentFromThePopUpMenu) {
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_GT(m_ctl->Etq_Aide.Count(), 1);
    const toolkit::Label& label = firstLabel(*m_ctl);
    const std::string aide = label.tag().substr(0, 5);
    QString warning;
    popupEntryAnswered(label, "Affectation tournée", [&](QWidget* window) {
        if (auto* box = qobject_cast<QMessageBox*>(window)) {
            warning = box->text();
            return QTest::mouseClick(box->buttons().front(), Qt::LeftButton);
        }
        auto* view = window->findChild<qtui::FormView*>();
        ASSERT_NE(view, nullptr);
        auto* list = dynamic_cast<QListWidget*>(view->widgetFor(view->form().find("Lst_Tournee")));
        ASSERT_NE(list, nullptr);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        clickOn(*view->form().find("Cmd_Ok"));
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    // The demo service offers some labels no tournée: the warning is the other way this ends.
    if (!warning.isEmpty()) {
        EXPECT_EQ(warning, "Pas de tournée définie sur ce jour");
        EXPECT_FALSE(m_ctl->Mod.FlagAffectationEnCours);
        EXPECT_NE(label.left(), 760);
        return;
    }
    ASSERT_TRUE(m_ctl->Mod.FlagAffectationEnCours);
    const std::string code = m_ctl->Txt_CodeTournee.text();
    EXPECT_EQ(m_ctl->Cmd_Sortir.caption(), "Annuler");
    const qtui::Zoom z(1.0);
    dragLabel(label, QPoint(10, 10), QPoint(150, z.px(760 + 4 * 4 * m_ctl->PasQuartHeure)));
    ASSERT_EQ(label.left(), 760);
    clickOn(m_ctl->Cmd_Ok);
    EXPECT_FALSE(m_ctl->Mod.FlagAffectationEnCours);
    EXPECT_NE(elsewhere("SSIADTOURNEE", "0", "SELECT SSIADTOURNEE AVEC CodeTournee = \"" + code + "\"")
                  .find(code + aide),
              std::string::npos);
}

// The dialog answered from the keyboard, as planners do: Down picks the second tournée offered and Return
// validates. The key that closes the dialog must end there: the planning screen behind it, disabled
// while the tournée opens, never receives it.
TEST_F(JourneyDay, JourneyTheAssignmentDialogAnsweredFromTheKeyboard) {
    clickOn(m_ctl->Cmd_Affichage);
    const toolkit::Label* lemaire = nullptr;
    for (toolkit::Control* c : m_ctl->Etq_Aide.elements()) {
        auto* label = static_cast<toolkit::Label*>(c);
        if (c->index() > 0 && label->caption().rfind("LEMAIRE\r\nMonique", 0) == 0) lemaire = label;
    }
    ASSERT_NE(lemaire, nullptr) << "the demo service waits for LEMAIRE Monique on Monday";
    QStringList offered;
    popupEntryAnswered(*lemaire, "Affectation tournée", [&](QWidget* window) {
        auto* view = window->findChild<qtui::FormView*>();
        ASSERT_NE(view, nullptr);
        auto* list = dynamic_cast<QListWidget*>(view->widgetFor(view->form().find("Lst_Tournee")));
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < list->count(); ++i)
            offered << list->item(i)->text();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
    });
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
    ASSERT_EQ(offered.size(), 2);
    EXPECT_TRUE(offered[0].startsWith("002 ")) << offered[0].toStdString();
    EXPECT_TRUE(offered[1].startsWith("006 ")) << offered[1].toStdString();
    QTest::qWait(200);
    EXPECT_TRUE(m_ctl->Mod.FlagAffectationEnCours);
    EXPECT_EQ(m_ctl->Txt_CodeTournee.text(), "006");
}

// A move taken back with Ctrl+Z and made again with Ctrl+Y, the focus in the code's box, which keeps its
// text: the keys are the window's while a move can be undone or redone.
TEST_F(JourneyDay, JourneyAMoveUndoneAndRedoneFromTheKeyboard) {
    QAction* undo = menuAction("Édition", "Annuler le déplacement");
    QAction* redo = menuAction("Édition", "Rétablir le déplacement");
    ASSERT_NE(undo, nullptr);
    ASSERT_NE(redo, nullptr);
    EXPECT_EQ(undo->shortcut(), QKeySequence("Ctrl+Z"));
    EXPECT_EQ(redo->shortcut(), QKeySequence("Ctrl+Y"));
    typeInto(m_ctl->Txt_CodeTournee, "001");
    chooseIn(m_ctl->Cbo_Date, "30/11/2026");
    clickOn(m_ctl->Cmd_Affichage);
    QTest::qWait(50);
    ASSERT_GT(m_ctl->Etq_Aide.Count(), 1);
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_FALSE(redo->isEnabled());

    const toolkit::Label& label = m_ctl->Etq_Aide(std::stoi(m_ctl->TabTempoAide(1, 1)));
    const double left = label.left(), top = label.top();
    const qtui::Zoom z(1.0);
    dragLabel(label, QPoint(10, 10), QPoint(150, z.px(760 + 5 * 4 * m_ctl->PasQuartHeure)));
    QTest::qWait(50);
    ASSERT_EQ(label.left(), 760);
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_FALSE(redo->isEnabled());

    clickOn(m_ctl->Txt_CodeTournee);
    QWidget* box = QApplication::focusWidget();
    ASSERT_EQ(box, widgetOf(m_ctl->Txt_CodeTournee));
    QTest::keyClick(box, Qt::Key_Z, Qt::ControlModifier);
    QTest::qWait(50);
    EXPECT_EQ(label.left(), left);
    EXPECT_EQ(label.top(), top);
    EXPECT_EQ(widgetOf(label)->x(), z.px(left));
    EXPECT_EQ(m_ctl->Txt_CodeTournee.text(), "001");
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_TRUE(redo->isEnabled());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Y, Qt::ControlModifier);
    QTest::qWait(50);
    EXPECT_EQ(label.left(), 760);
    EXPECT_EQ(widgetOf(label)->x(), z.px(760));
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_FALSE(redo->isEnabled());
    EXPECT_TRUE(answersUsed());
}

// The menus of the bar by their Alt keys, typed into a box of the screens.
class JourneyAltKeys : public JourneyDay {
protected:
    // The title of the menu that the next pop-up is, kept once it has come; it is closed with Escape.
    std::shared_ptr<QString> nextMenu() {
        auto title = std::make_shared<QString>();
        whenModal([title](QWidget* popup) {
            auto* menu = qobject_cast<QMenu*>(popup);
            ASSERT_NE(menu, nullptr) << "a menu was expected, not " << popup->metaObject()->className();
            *title = menu->title().remove('&');
            QTest::keyClick(menu, Qt::Key_Escape);
            // The same menu comes again on another row.
            menu->setProperty("journeyAnswered", false);
        });
        return title;
    }
};

// With the focus in the tournée's code box, the window active or not (a desktop without a window
// manager never makes it active): each menu opens by its underlined letter, the accent of "É" aside, and
// no key with Alt or Ctrl held leaves its letter in the box.
TEST_F(JourneyAltKeys, JourneyEachMenuOpensByItsAltKeyAndTheBoxTakesNoLetter) {
    struct Row {
        const char* name;
        int key;
        Qt::KeyboardModifiers modifiers;
        QString menu;  // empty: no menu opens
    } const rows[] = {
        {"Alt and a letter no menu underlines", Qt::Key_Z, Qt::AltModifier, ""},
        {"Ctrl and a menu's letter", Qt::Key_S, Qt::ControlModifier, ""},
        {"Ctrl, Alt and a menu's letter", Qt::Key_S, Qt::ControlModifier | Qt::AltModifier, ""},
        {"Alt+S", Qt::Key_S, Qt::AltModifier, "Service"},
        {"Alt+É", Qt::Key_Eacute, Qt::AltModifier, "Édition"},
        {"Alt+E, the É without its accent", Qt::Key_E, Qt::AltModifier, "Édition"},
        {"Alt+A", Qt::Key_A, Qt::AltModifier, "Affichage"},
        {"Alt+I", Qt::Key_I, Qt::AltModifier, "Aide"},
    };
    auto* box = widget<QLineEdit>(m_ctl->Txt_CodeTournee);
    ASSERT_NE(box, nullptr);
    for (const bool active : {true, false}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(row.name) + (active ? ", window active" : ", window not active"));
            clickOn(m_ctl->Txt_CodeTournee);
            ASSERT_EQ(QApplication::focusWidget(), box);
            if (!active) QApplication::setActiveWindow(nullptr);
            std::shared_ptr<QString> opened = row.menu.isEmpty() ? nullptr : nextMenu();
            QTest::keyClick(box, static_cast<Qt::Key>(row.key), row.modifiers);
            if (opened) {
                ASSERT_TRUE(
                    waitFor([&] { return !opened->isEmpty() && !QApplication::activePopupWidget(); }));
                EXPECT_EQ(opened->toStdString(), row.menu.toStdString());
                // A second Escape leaves the bar: the keys go to the box again. (Qt's offscreen platform
                // does not hand the focus back to a window it never made active, as X does.)
                if (active) {
                    ASSERT_NE(QApplication::focusWidget(), nullptr);
                    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
                    EXPECT_EQ(QApplication::focusWidget(), box);
                }
            }
            QTest::qWait(20);
            EXPECT_EQ(box->text().toStdString(), "");
            EXPECT_EQ(m_ctl->Txt_CodeTournee.text(), "");
        }
    }
}

// The week window has no menu of its own: the bar of the screen's window answers its Alt keys.
TEST_F(JourneyAltKeys, JourneyTheWeekWindowOpensTheMenusOfTheScreen) {
    menuAction("Affichage", "Semaine")->trigger();
    qtui::WeekWindow* week = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (!week) week = dynamic_cast<qtui::WeekWindow*>(w);
    }
    ASSERT_NE(week, nullptr);
    QApplication::setActiveWindow(week);
    auto* date = week->findChild<QDateEdit*>();
    ASSERT_NE(date, nullptr);
    const QString shown = date->text();
    std::shared_ptr<QString> opened = nextMenu();
    QTest::keyClick(date, Qt::Key_S, Qt::AltModifier);
    ASSERT_TRUE(waitFor([&] { return !opened->isEmpty(); }));
    EXPECT_EQ(opened->toStdString(), "Service");
    EXPECT_EQ(date->text().toStdString(), shown.toStdString());
}

// A service screen is modal: the menus behind it stay closed, and its boxes take no letter held with Alt.
TEST_F(JourneyAltKeys, JourneyAServiceScreenTakesNoLetterWithAlt) {
    inDialog([&](qtui::FormView& view) {
        auto& form = static_cast<control::Frm_Soins&>(view.form());
        typeInto(form.Txt_Libelle, "Soin");
        auto* box = widget<QLineEdit>(form.Txt_Libelle);
        ASSERT_NE(box, nullptr);
        for (const Qt::Key key : {Qt::Key_S, Qt::Key_Z}) {
            QTest::keyClick(box, key, Qt::AltModifier);
            QTest::qWait(20);
            EXPECT_EQ(box->text().toStdString(), "Soin");
            EXPECT_EQ(form.Txt_Libelle.text(), "Soin");
        }
        clickOn(form.Cmd_Fermer);
    });
    menuAction("Service", "Soins")->trigger();
    ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
}

}  // namespace
}  // namespace journey

namespace journey {
namespace {

// A service set up from nothing in the real window, through the menu Service: two soins, three aidés, a
// Monday morning tournée of type M in sector N1, an element of that sector, an accord and a Monday
// protocole for each aidé, with a refusal answered on the way; the tournée then shows the three aidés'
// interventions waiting on Monday 30/11/2026.
class JourneyFromEmpty : public Journey {
protected:
    bool startsEmpty() const override { return true; }

    // Text typed into the edit line of a combo box, as the keyboard sends it.
    void typeIntoCombo(const toolkit::Control& combo, const QString& text) {
        auto* w = widget<QComboBox>(combo);
        ASSERT_TRUE(w && w->lineEdit()) << combo.name();
        QTest::mouseClick(w->lineEdit(), Qt::LeftButton);
        for (QChar c : text) {
            QTest::keyClick(w->lineEdit(), c.toLatin1());
            QTest::qWait(20);
        }
    }
    // The screen of the menu Service's entry: `act` plays in it, then Fermer.
    template <typename Ecran>
    void service(const QString& entry, std::function<void(Ecran&)> act) {
        inDialog([this, act](qtui::FormView& view) {
            auto& form = static_cast<Ecran&>(view.form());
            EXPECT_EQ(overflow(view), "") << form.name();
            act(form);
            clickOn(form.Cmd_Fermer);
        });
        QAction* action = menuAction("Service", entry);
        ASSERT_NE(action, nullptr) << entry.toStdString();
        action->trigger();
        ASSERT_TRUE(waitFor([&] { return answersUsed(); })) << entry.toStdString();
    }
    // Each aidé as its lists show it.
    const QStringList m_aides = {"00001 DUPONT Marie", "00002 MARTIN Paul", "00003 PETIT Lucie"};
};

TEST_F(JourneyFromEmpty, JourneyAServiceSetUpFromNothingThroughTheMenuService) {
    QString refus;
    service<control::Frm_Soins>("Soins", [&](control::Frm_Soins& form) {
        answerBox("OK", &refus);
        clickOn(form.Cmd_Enregistrer);
        typeInto(form.Txt_Libelle, "Toilette");
        clickOn(form.Cmd_Enregistrer);
        clickOn(form.Cmd_Nouveau);
        typeInto(form.Txt_Libelle, "Pansement");
        clickOn(form.Chk_ActeInfirmier);
        clickOn(form.Cmd_Enregistrer);
    });
    EXPECT_EQ(refus.toStdString(), "« Libellé » : à remplir.");
    EXPECT_EQ(elsewhere("SSIADSOINS", "0 1 5", "SELECT SSIADSOINS PAR 0"),
              "01\tToilette\t\n02\tPansement\tO\n");

    service<control::Frm_DossierAide>("Aidés", [&](control::Frm_DossierAide& form) {
        for (const QString& aide : m_aides) {
            clickOn(form.Cmd_Nouveau);
            typeInto(form.Txt_Nom, aide.section(' ', 1, 1));
            typeInto(form.Txt_Prenom, aide.section(' ', 2, 2));
            clickOn(form.Cmd_Enregistrer);
        }
    });

    service<control::Frm_SsiadCaractTournee>("Tournées", [&](control::Frm_SsiadCaractTournee& form) {
        EXPECT_EQ(form.Txt_Code.text(), "001");
        typeInto(form.Txt_Libelle, "Matin nord");
        chooseIn(form.Cbo_Jour, "Lundi");
        typeInto(form.Txt_Debut, "7h00");
        typeInto(form.Txt_Fin, "12h00");
        chooseIn(form.Cbo_Type, "M mixte");
        typeIntoCombo(form.Cbo_Secteur, "N1");
        clickOn(form.Cmd_AjouterSecteur);
        clickOn(form.Cmd_Enregistrer);
    });
    EXPECT_EQ(elsewhere("SSIADCARACTTOURNEE", "0 1 2 7 8", "SELECT SSIADCARACTTOURNEE PAR 0"),
              "001\tMATIN NORD\t0\tM\tN1\n");

    service<control::Frm_ElemGestSSIAD>("Éléments de gestion", [&](control::Frm_ElemGestSSIAD& form) {
        for (const QString& aide : m_aides) {
            clickOn(form.Cmd_Nouveau);
            chooseIn(form.Cbo_Aide, aide);
            chooseIn(form.Cbo_Secteur, "N1");
            clickOn(form.Cmd_Enregistrer);
        }
    });

    service<control::Frm_Accords>("Accords", [&](control::Frm_Accords& form) {
        for (const QString& aide : m_aides) {
            clickOn(form.Cmd_Nouveau);
            chooseIn(form.Cbo_Aide, aide);
            typeInto(form.Txt_PremierJour, "01/11/2026");
            typeInto(form.Txt_DernierJour, "31/12/2027");
            clickOn(form.Cmd_Enregistrer);
        }
    });
    EXPECT_EQ(elsewhere("SSIADACCORDS", "0 1 2", "SELECT SSIADACCORDS PAR 0"),
              "00001001000001\t21490\t21915\n00002001000001\t21490\t21915\n00003001000001\t21490\t21915\n");

    service<control::Frm_ProtocoleSsiad>("Protocoles", [&](control::Frm_ProtocoleSsiad& form) {
        const char* const fenetres[][4] = {{"8h00", "9h00", "30", "01 Toilette"},
                                           {"9h00", "10h30", "45", "02 Pansement"},
                                           {"10h00", "11h30", "60", "01 Toilette"}};
        for (int i = 0; i < 3; ++i) {
            clickOn(form.Cmd_Nouveau);
            chooseIn(form.Cbo_Aide, m_aides[i]);
            clickOn(form.Chk_Lundi);
            typeInto(form.Txt_Debut, fenetres[i][0]);
            typeInto(form.Txt_Fin, fenetres[i][1]);
            typeInto(form.Txt_DureeMn, fenetres[i][2]);
            chooseIn(form.Cbo_Soin, fenetres[i][3]);
            clickOn(form.Cmd_AjouterSoin);
            typeInto(form.Txt_PremierJour, "01/11/2026");
            clickOn(form.Cmd_Enregistrer);
        }
        // The last one found again by a search and its row.
        typeInto(form.Txt_Recherche, "petit");
        auto* list = widget<QListWidget>(form.Lst_Elements);
        ASSERT_EQ(list->count(), 1);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        EXPECT_EQ(form.cleCourante(), "000032149000000111000");
        EXPECT_TRUE(widget<QCheckBox>(form.Chk_Lundi)->isChecked());
        EXPECT_FALSE(widget<QCheckBox>(form.Chk_Mardi)->isChecked());
    });
    EXPECT_EQ(elsewhere("SSIADPROTOCOLE", "0", "SELECT SSIADPROTOCOLE PAR 0"),
              "000012149000000110800\n000022149000000110900\n000032149000000111000\n");

    // The only tournée is the planning screen's at once.
    EXPECT_EQ(m_ctl->Txt_CodeTournee.text(), "001");
    chooseIn(m_ctl->Cbo_Date, "30/11/2026");
    clickOn(m_ctl->Cmd_Affichage);
    ASSERT_TRUE(m_ctl->JourneeAffichee);
    std::vector<std::string> attente;
    for (std::int64_t i = 1; i <= m_ctl->TabTempoAide->DCount(); ++i) {
        const toolkit::Label& etiquette = m_ctl->Etq_Aide(std::stoi(m_ctl->TabTempoAide(i, 1)));
        EXPECT_TRUE(widgetOf(etiquette) && widgetOf(etiquette)->isVisible()) << etiquette.caption();
        attente.push_back(etiquette.tag().substr(0, 5) + " " + m_ctl->TabTempoAide(i, 7));
    }
    EXPECT_EQ(attente, (std::vector<std::string>{"00001 A", "00002 I", "00003 A"}));
}

}  // namespace
}  // namespace journey
