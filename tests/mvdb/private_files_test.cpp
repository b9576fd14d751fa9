#include "mvdb/private_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/clock.h"
#include "base/error.h"
#include "mvdb/database.h"
#include "mvdb/sqlite_store.h"

namespace {

namespace fs = std::filesystem;

// A folder of the test's own, and the umask of the test while it lives.
class Sandbox {
public:
    explicit Sandbox(mode_t umask)
        : m_path(fs::temp_directory_path() /
                 ("zandorel-private-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
        m_umask = ::umask(umask);
    }
    ~Sandbox() {
        ::umask(m_umask);
        fs::remove_all(m_path);
    }
    std::string path(const std::string& name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
    mode_t m_umask = 022;
};

unsigned modeOf(const std::string& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return 0;
    return st.st_mode & 07777;
}

std::string errorOf(void (*create)(const std::string&), const std::string& path) {
    try {
        create(path);
    } catch (const base::Error& e) {
        return e.what();
    }
    return "";
}

TEST(PrivateFiles, RefusesWhatCannotBeCreated) {
    Sandbox box(022);
    std::ofstream(box.path("file")) << "x";
    EXPECT_EQ(errorOf(mvdb::createPrivateFile, box.path("none/a.db")),
              "Création impossible du fichier " + box.path("none/a.db") + " : No such file or directory");
    EXPECT_EQ(errorOf(mvdb::createPrivateFolders, box.path("file/sub")),
              "Création impossible du dossier " + box.path("file") + " : File exists");
}

// Whatever the umask lets through or takes away, the owner alone reads and writes.
TEST(PrivateFiles, DatabaseAndItsSideFilesAreTheOwnersAlone) {
    for (mode_t umask : {0000, 0022, 0277}) {
        SCOPED_TRACE(umask);
        Sandbox box(umask);
        const std::string db = box.path("service.db");
        {
            base::FixedClock clock(*base::Date::fromDmy(22, 11, 2026), 0);
            mvdb::Database database(mvdb::SqliteStore::open(db, mvdb::OpenMode::CreateIfMissing), clock);
            database.store().createFile("CIVILAIDE");
            database.store().write("CIVILAIDE", "00001", "DURAND");
            for (const char* suffix : {"", "-wal", "-shm"})
                EXPECT_EQ(modeOf(db + suffix), 0600u) << suffix;
        }
        mvdb::createPrivateFolders(box.path("a/b/c"));
        for (const char* folder : {"a", "a/b", "a/b/c"})
            EXPECT_EQ(modeOf(box.path(folder)), 0700u) << folder;
    }
}

TEST(PrivateFiles, TheOwnFolderIsMadeOwnerOnlyAndWhatIsAboveItIsLeft) {
    Sandbox box(022);
    std::ofstream(box.path("file")) << "x";
    EXPECT_EQ(errorOf(mvdb::makeOwnFolderPrivate, box.path("file/zandorel")),
              "Création impossible du dossier " + box.path("file") + " : File exists");
    fs::create_directories(box.path("share/zandorel"));
    ::chmod(box.path("share").c_str(), 0755);
    ::chmod(box.path("share/zandorel").c_str(), 0755);
    mvdb::makeOwnFolderPrivate(box.path("share/zandorel"));
    EXPECT_EQ(modeOf(box.path("share/zandorel")), 0700u);
    EXPECT_EQ(modeOf(box.path("share")), 0755u);
    mvdb::makeOwnFolderPrivate(box.path("new/zandorel"));
    EXPECT_EQ(modeOf(box.path("new/zandorel")), 0700u);
}

TEST(PrivateFiles, LeavesWhatExistsAsItIs) {
    Sandbox box(022);
    std::ofstream(box.path("kept.db")) << "contenu";
    ::chmod(box.path("kept.db").c_str(), 0640);
    fs::create_directories(box.path("shared"));
    ::chmod(box.path("shared").c_str(), 0750);
    mvdb::createPrivateFile(box.path("kept.db"));
    mvdb::createPrivateFolders(box.path("shared/own"));
    EXPECT_EQ(modeOf(box.path("kept.db")), 0640u);
    EXPECT_EQ(std::ifstream(box.path("kept.db")).rdbuf()->sgetc(), 'c');
    EXPECT_EQ(modeOf(box.path("shared")), 0750u);
    EXPECT_EQ(modeOf(box.path("shared/own")), 0700u);
}

}  // namespace
