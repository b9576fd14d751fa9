// What the Qt host brings of its own: the help page, which ships inside the program, and Qt's dialogs
// in French. The help cases also run from a copy of this program outside the build tree (CMake test
// help_outside_the_build_tree): nothing may be looked for beside the program.
#include "toolkit/host.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
#include <functional>
#include <set>

#include "qtui/qt_host.h"
#include "qtui/traductions.h"

namespace {

// What a modal window showed when it opened, before it was closed.
struct Vu {
    QString boite;  // the text of a message box, if one came instead
    QMessageBox::Icon icone = QMessageBox::NoIcon;
    QString texte;  // the help browser's text
    QUrl source;
    std::set<QString> ancres, liens;
};

// Runs `ouvrir`, which opens a modal window, and reads that window as soon as it shows, then closes it.
Vu lireFenetreModale(const std::function<void()>& ouvrir) {
    Vu vu;
    // A timer of this frame: should no window open, it goes with the frame instead of firing later.
    QTimer minuteur;
    minuteur.setSingleShot(true);
    QObject::connect(&minuteur, &QTimer::timeout, [&vu] {
        QWidget* fenetre = QApplication::activeModalWidget();
        if (!fenetre) return;
        if (auto* boite = qobject_cast<QMessageBox*>(fenetre)) {
            vu.boite = boite->text();
            vu.icone = boite->icon();
        } else if (auto* navigateur = fenetre->findChild<QTextBrowser*>()) {
            vu.texte = navigateur->toPlainText();
            vu.source = navigateur->source();
            for (QTextBlock b = navigateur->document()->begin(); b.isValid(); b = b.next()) {
                for (auto f = b.begin(); !f.atEnd(); ++f) {
                    const QTextCharFormat format = f.fragment().charFormat();
                    for (const QString& nom : format.anchorNames())
                        vu.ancres.insert(nom);
                    if (!format.anchorHref().isEmpty()) vu.liens.insert(format.anchorHref());
                }
            }
        }
        fenetre->close();
    });
    minuteur.start(0);
    ouvrir();
    return vu;
}

TEST(Help, ThePageOpensFromInsideTheProgramWithEverythingItLinksTo) {
    qtui::QtHost host(qtui::Zoom(1.0));
    const Vu vu = lireFenetreModale([&] { host.ShowHelp("SSIADTournee.htm", "Gestion des tournées SSIAD"); });
    ASSERT_EQ(vu.boite, "") << "a message box came instead of the page";
    EXPECT_TRUE(vu.texte.startsWith("Gestion des tournées SSIAD")) << vu.texte.left(80).toStdString();
    EXPECT_EQ(vu.source.scheme(), "qrc");
    ASSERT_FALSE(vu.liens.empty());
    for (const QString& lien : vu.liens) {
        SCOPED_TRACE(lien.toStdString());
        const QUrl cible = vu.source.resolved(QUrl(lien));
        if (cible.scheme() != "qrc") continue;  // a page of the web opens in the user's browser
        if (lien.startsWith('#')) {
            EXPECT_TRUE(vu.ancres.count(cible.fragment()));
        } else {
            EXPECT_TRUE(QFileInfo(":" + cible.path()).isFile());
        }
    }
}

TEST(Help, APageThatIsNotShippedIsToldInABox) {
    qtui::QtHost host(qtui::Zoom(1.0));
    const Vu vu = lireFenetreModale([&] { host.ShowHelp("Absente.htm", "Aide"); });
    EXPECT_EQ(vu.boite, "La page d'aide Absente.htm est introuvable.");
}

TEST(MessageBoxes, ShowTheIconOfTheirStyle) {
    qtui::QtHost host(qtui::Zoom(1.0));
    const std::pair<int, QMessageBox::Icon> cas[] = {
        {toolkit::msgbox::kOkOnly, QMessageBox::NoIcon},
        {toolkit::msgbox::kYesNo | toolkit::msgbox::kQuestion, QMessageBox::Question},
        {toolkit::msgbox::kYesNo | toolkit::msgbox::kExclamation, QMessageBox::Warning},
        {toolkit::msgbox::kExclamation, QMessageBox::Warning},
    };
    for (const auto& [style, icone] : cas) {
        SCOPED_TRACE(style);
        const Vu vu = lireFenetreModale([&] { host.MsgBox("Supprimer le soin S01 ?", style, "Soins"); });
        EXPECT_EQ(vu.boite, "Supprimer le soin S01 ?");
        EXPECT_EQ(vu.icone, icone);
    }
}

TEST(Translations, QtsOwnDialogsSpeakFrench) {
    ASSERT_TRUE(qtui::installerTraductionsQt(*QCoreApplication::instance()))
        << "qtbase_fr missing: install qt6-translations-l10n (scripts/deps.sh)";
    QMessageBox boite;
    boite.setStandardButtons(QMessageBox::Cancel | QMessageBox::Save | QMessageBox::Open);
    EXPECT_EQ(boite.button(QMessageBox::Cancel)->text(), "Annuler");
    EXPECT_EQ(boite.button(QMessageBox::Save)->text(), "Enregistrer");
    EXPECT_EQ(boite.button(QMessageBox::Open)->text(), "Ouvrir");
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "File &name:"), "&Nom de fichier :");
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
