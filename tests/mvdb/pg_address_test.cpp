#include "mvdb/pg_address.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/error.h"
#include "mvdb/open_store.h"

namespace {

std::string openError(const std::string& text) {
    try {
        mvdb::openStore(text, mvdb::OpenMode::CreateIfMissing);
    } catch (const base::Error& e) {
        return e.what();
    }
    return "no error";
}

const std::string kBad = "Adresse du serveur PostgreSQL incorrecte : ";

// Each is refused before any connection, so no server is needed; none may repeat the password.
TEST(PgAddress, AMalformedAddressSaysWhatIsWrong) {
    struct Case {
        const char* name;
        std::string text;
        std::string message;
    } cases[] = {
        {"unknown parameter", "postgresql://h/base?bogus=1", kBad + "paramètre inconnu « bogus »"},
        {"unknown parameter after a good one", "postgresql://h/base?connect_timeout=2&Bo%67us=1",
         kBad + "paramètre inconnu « Bogus »"},
        {"parameter without a value", "postgresql://h/base?port",
         kBad + "le paramètre « port » n'a pas de "
                "valeur (« = » manque)"},
        {"bad percent escape", "postgresql://h/base?application_name=a%zz",
         kBad + "« % » doit être suivi de deux chiffres hexadécimaux (caractère 39)"},
        {"percent escape cut short", "postgresql://h/ba%4",
         kBad + "« % » doit être suivi de deux chiffres "
                "hexadécimaux (caractère 18)"},
        {"bad percent escape in the password", "postgresql://u:se%zzcret@h/base",
         kBad + "« % » doit être suivi de deux chiffres hexadécimaux (caractère 18)"},
        {"nul byte", "postgresql://h/ba%00se", kBad + "« %00 » n'est pas permis (caractère 18)"},
        {"unclosed IPv6 bracket", "postgresql://[::1",
         kBad + "« [ » sans « ] » qui le ferme autour de l'adresse IPv6 d'un serveur"},
        {"unclosed IPv6 bracket after a password", "postgresql://u:secret@[::1/base",
         kBad + "« [ » sans « ] » qui le ferme autour de l'adresse IPv6 d'un serveur"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string message = openError(c.text);
        EXPECT_EQ(message, c.message);
        EXPECT_EQ(message.find("secret"), std::string::npos);
        EXPECT_EQ(message.find("cret"), std::string::npos);
    }
}

TEST(PgAddress, BothFormsOfAddressNameAServerWhateverTheCaseOfTheScheme) {
    struct Case {
        const char* name;
        std::string text;
        bool server;
    } cases[] = {
        {"path with an equals sign", "/tmp/a=b.db", false},
        {"file name", "service.db", false},
        {"memory", ":memory:", false},
        {"word beginning with a digit", "2=b.db", false},
        {"one slash after the scheme", "postgresql:/h/b", false},
        {"URI", "postgresql://h/b", true},
        {"URI in capitals", "POSTGRESQL://h/b", true},
        {"short scheme in mixed case", "Postgres://h", true},
        {"keywords", "host=/x dbname=b", true},
        {"keywords with blanks", "  dbname = b", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(mvdb::pg::isServerAddress(c.text), c.server);
    }
}

// No server answers at /nonexistent: every open fails, and its message must name the server without
// ever showing the password, nor leave a file of that name behind.
TEST(PgAddress, NoMessageShowsThePassword) {
    const std::string unreachable =
        "Connexion impossible au serveur PostgreSQL base sur /nonexistent:5432 : connection to server on "
        "socket "
        "\"/nonexistent/.s.PGSQL.5432\" failed: No such file or directory";
    struct Case {
        const char* name;
        std::string text;
        std::string message;
    } cases[] = {
        {"unknown keyword", "host=/nonexistent password=secret typo=1", kBad + "paramètre inconnu « typo »"},
        {"keyword without its equals sign", "host=/nonexistent password secret",
         kBad + "« = » manque après « password »"},
        {"unclosed quote", "host=/nonexistent password='secret",
         kBad + "guillemet « ' » non fermé dans la valeur de « password »"},
        {"URI in capitals", "POSTGRESQL://u:secret@/base?host=/nonexistent", unreachable},
        {"keywords", "host=/nonexistent dbname=base password=secret", unreachable},
        {"quoted keywords", "host = '/nonexistent' dbname=base password = 'se cret'", unreachable},
        {"password that is also the base's name", "postgresql://u:secret@/secret?host=/nonexistent",
         "Connexion impossible au serveur PostgreSQL **** sur /nonexistent:5432 : "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string message = openError(c.text);
        const bool reasonFollows = c.message.size() > 2 && c.message.substr(c.message.size() - 2) == ": ";
        EXPECT_EQ(reasonFollows ? message.substr(0, c.message.size()) : message, c.message);
        EXPECT_EQ(message.find("secret"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(c.text));
    }
}

// The library reads a port that is no number, and refuses it only when it connects.
TEST(PgAddress, AValueRefusedAtConnectionNamesTheServerItWasFor) {
    EXPECT_EQ(openError("postgresql://u:secret@/base?host=/nonexistent&port=8x"),
              "Connexion impossible au serveur PostgreSQL base sur /nonexistent:8x : invalid integer value "
              "\"8x\" for connection option \"port\"");
}

}  // namespace
