#include "mvdb/pg_address.h"

#include <gtest/gtest.h>

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

// The library reads a port that is no number, and refuses it only when it connects.
TEST(PgAddress, AValueRefusedAtConnectionNamesTheServerItWasFor) {
    EXPECT_EQ(openError("postgresql://u:secret@/base?host=/nonexistent&port=8x"),
              "Connexion impossible au serveur PostgreSQL base sur /nonexistent:8x : invalid integer value "
              "\"8x\" for connection option \"port\"");
}

}  // namespace
