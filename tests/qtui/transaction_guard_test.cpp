// The guard against store transactions left open while the screen waits: each kind of open work is
// reported with where it was seen, and nothing is reported once it is closed.
#include <QProcess>
#include <QTest>
#include <csignal>

#include "journey.h"
#include "mvdb/store.h"

namespace journey {
namespace {

class JourneyGuard : public Journey {};

TEST_F(JourneyGuard, JourneyWorkLeftOpenIsReportedWhenABoxOpensAndWhenTheLoopWaits) {
    struct Row {
        const char* name;
        std::function<void(mvdb::Store&)> open, close;
        std::string what;
    } const rows[] = {
        {"a write transaction", [](mvdb::Store& s) { s.begin(); }, [](mvdb::Store& s) { s.rollback(); },
         "une transaction d'écriture"},
        {"grouped reads", [](mvdb::Store& s) { s.beginRead(); }, [](mvdb::Store& s) { s.endRead(); },
         "1 lecture(s) cohérente(s) non terminée(s)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.open(m_db->store());
        // A refused code shows its box while the work is open.
        answerBox("OK");
        typeInto(m_ctl->Txt_CodeTournee, "999");
        ASSERT_TRUE(waitFor([&] { return answersUsed(); }));
        QTest::qWait(30);
        ASSERT_GE(m_breaches.size(), 2u);
        EXPECT_EQ(m_breaches.front(), "fenêtre modale : " + row.what);
        EXPECT_EQ(m_breaches.back(), "boucle d'événements au repos : " + row.what);
        row.close(m_db->store());
        m_breaches.clear();
        QTest::qWait(30);
        EXPECT_TRUE(m_breaches.empty());
    }
}

}  // namespace
}  // namespace journey

namespace journey {
namespace {

// The program, stopped by a signal while the planner works, closes its database as leaving does: its
// journal is folded in and removed, and it ends as a program that was asked to.
TEST_F(JourneyGuard, JourneyASignalClosesTheDatabaseCleanly) {
    struct Row {
        const char* name;
        int signal;
    } const rows[] = {{"SIGTERM", SIGTERM}, {"SIGINT", SIGINT}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::filesystem::path alone = m_folder / (std::string(row.name) + ".db");
        std::filesystem::copy_file(templatePath(), alone);
        QProcess gui;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        gui.setProcessEnvironment(environment);
        gui.start(ZANDOREL_EXECUTABLE,
                  {"gui", "--db", QString::fromStdString(alone.string()), "--today", "23/11/2026"});
        ASSERT_TRUE(gui.waitForStarted(30000));
        const std::filesystem::path journal = alone.string() + "-wal";
        ASSERT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(journal); }, 60000));
        QTest::qWait(500);
        ::kill(static_cast<pid_t>(gui.processId()), row.signal);
        ASSERT_TRUE(gui.waitForFinished(60000));
        EXPECT_EQ(gui.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(gui.exitCode(), 0) << gui.readAllStandardError().toStdString();
        EXPECT_FALSE(std::filesystem::exists(journal));
    }
}

}  // namespace
}  // namespace journey
