#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/error.h"
#include "mvdb/sqlite_store.h"
#include "support/memory_database.h"

namespace {

namespace fs = std::filesystem;

class TempDir {
public:
    TempDir()
        : m_path(fs::temp_directory_path() /
                 ("zandorel-store-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name())) {
        fs::remove_all(m_path);
        fs::create_directories(m_path);
    }
    ~TempDir() { fs::remove_all(m_path); }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

private:
    fs::path m_path;
};

std::string openError(const std::string& path, mvdb::OpenMode mode) {
    try {
        mvdb::SqliteStore::open(path, mode);
    } catch (const base::Error& e) {
        return e.what();
    }
    return "";
}

TEST(SqliteStore, RefusesWhatIsNotItsDatabase) {
    TempDir dir;
    std::ofstream(dir.file("text.db"))
        << "these are not the pages of a database, only a line of text that is long enough";
    sqlite3* other = nullptr;
    sqlite3_open(dir.file("other.db").c_str(), &other);
    sqlite3_exec(other, "CREATE TABLE patients(id INTEGER)", nullptr, nullptr, nullptr);
    sqlite3_close(other);

    EXPECT_EQ(openError(dir.file("missing.db"), mvdb::OpenMode::ExistingOnly),
              "Base de données introuvable : " + dir.file("missing.db"));
    EXPECT_EQ(
        openError(dir.file("text.db"), mvdb::OpenMode::CreateIfMissing),
        "Le fichier " + dir.file("text.db") + " n'est pas une base de données : file is not a database");
    EXPECT_EQ(
        openError(dir.file("other.db"), mvdb::OpenMode::ExistingOnly),
        "La base " + dir.file("other.db") + " appartient à un autre programme : elle n'est pas ouverte");
    EXPECT_FALSE(fs::exists(dir.file("missing.db"))) << "a failed open creates nothing";
}

TEST(SqliteStore, KeepsRecordsExactlyAcrossReopening) {
    TempDir dir;
    const std::string path = dir.file("service.db");
    const std::string big(100000, 'x');
    const std::string marked =
        "Hélène\xFE"
        "a\xFD"
        "b\xFC"
        "c\xFE\xFE"
        "fin";
    {
        auto store = mvdb::SqliteStore::open(path, mvdb::OpenMode::CreateIfMissing);
        store->write("CIVILAIDE", "00001", marked);
        store->write("CIVILAIDE", "00002", big);
        store->write("CIVILAIDE", "00003", "");
        store->write("TPSTEMPO", "WORK", "scratch");
        store->createFile("AUTRE");
        store->write("AUTRE", "k", "v");
    }
    auto store = mvdb::SqliteStore::open(path, mvdb::OpenMode::ExistingOnly);
    EXPECT_EQ(store->read("CIVILAIDE", "00001"), marked);
    EXPECT_EQ(store->read("CIVILAIDE", "00002"), big);
    EXPECT_EQ(store->read("CIVILAIDE", "00003"), "");
    EXPECT_EQ(store->read("CIVILAIDE", "00004"), std::nullopt);
    EXPECT_EQ(store->read("TPSTEMPO", "WORK"), std::nullopt) << "work records live with the connection";
    EXPECT_EQ(store->read("AUTRE", "k"), "v");
}

// Keys, file names and rollbacks are the behaviours of every store: StoreBehaviour tries them on both.

TEST(Database, ReadsWritesAndDeletesThroughFileObjects) {
    testing_support::MemoryDatabase m;
    std::shared_ptr<mvdb::File> file = m.db->OpenFile("SSIADTOURNEE");
    try {
        file->Read("00100012215110750");
        ADD_FAILURE() << "a missing key must fail";
    } catch (const base::Error& e) {
        EXPECT_EQ(e.code(), static_cast<std::int32_t>(0x8004000B));
    }
    mvdb::DynamicRecord fresh = file->New("00100012215110750");
    EXPECT_EQ(m.db->store().read("SSIADTOURNEE", "00100012215110750"), std::nullopt) << "New writes nothing";
    fresh.set(1, "0800");
    fresh.DBWrite();
    mvdb::DynamicRecord read = file->Read("00100012215110750");
    EXPECT_EQ(read(1), "0800");
    read.DBDelete();
    EXPECT_EQ(m.db->store().read("SSIADTOURNEE", "00100012215110750"), std::nullopt);
    EXPECT_THROW(m.db->OpenFile("NOPE"), base::Error);
}

}  // namespace
