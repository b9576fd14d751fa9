#include "data/layouts.h"

#include "base/text.h"

namespace data::tournee {

std::string cle(std::string_view codeTournee, std::string_view codeAide, std::string_view jourInterne,
                std::string_view debut) {
    std::string key;
    key.reserve(kLongueurCle);
    key.append(codeTournee).append(codeAide).append(jourInterne);
    // The start is cut to its last four characters after padding, as the keys have always been written.
    key += base::Right(std::string("0000").append(debut), 4);
    return key;
}

std::string codeTournee(std::string_view cle) {
    return base::Mid(cle, 1, 3);
}
std::string codeAide(std::string_view cle) {
    return base::Mid(cle, 4, 5);
}
std::string jourInterne(std::string_view cle) {
    return base::Mid(cle, 9, 5);
}
std::string heureDebut(std::string_view cle) {
    return base::Mid(cle, 14, 4);
}

}  // namespace data::tournee

namespace data::elemgest {

std::string cleSecteurAffectation(std::string_view cleProtocole) {
    return base::Left(cleProtocole, 5) + base::Mid(cleProtocole, 1, 5) + base::Mid(cleProtocole, 9, 6);
}

}  // namespace data::elemgest
