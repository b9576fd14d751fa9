#include "mvdb/pg_address.h"

#include <libpq-fe.h>

#include <cctype>
#include <memory>
#include <optional>
#include <set>

#include "base/error.h"

namespace mvdb::pg {
namespace {

const char* const kSchemes[] = {"postgresql://", "postgres://"};
const std::string kPrefix = "Adresse du serveur PostgreSQL incorrecte : ";

std::size_t schemeLength(const std::string& text) {
    for (const std::string scheme : kSchemes) {
        if (text.size() < scheme.size()) continue;
        bool same = true;
        for (std::size_t i = 0; i < scheme.size() && same; ++i)
            same = std::tolower(static_cast<unsigned char>(text[i])) == scheme[i];
        if (same) return scheme.size();
    }
    return 0;
}

bool isSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

bool isHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// The parameters the client library knows, and the one more that a URI may use.
const std::set<std::string>& knownParameters() {
    static const std::set<std::string> known = [] {
        std::set<std::string> names{"ssl"};
        std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(PQconndefaults(),
                                                                             PQconninfoFree);
        for (const PQconninfoOption* o = options.get(); o && o->keyword; ++o)
            names.insert(o->keyword);
        return names;
    }();
    return known;
}

std::string decoded(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && isHex(text[i + 1]) && isHex(text[i + 2])) {
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// What is wrong with a URI that the library refused; positions count characters from 1. Values are
// never quoted: any of them may be the password.
std::optional<std::string> uriFault(const std::string& text, std::size_t start) {
    for (std::size_t i = start; i < text.size(); ++i) {
        if (text[i] != '%') continue;
        const std::string at = " (caractère " + std::to_string(i + 1) + ")";
        if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2]))
            return "« % » doit être suivi de deux chiffres hexadécimaux" + at;
        if (text[i + 1] == '0' && text[i + 2] == '0') return "« %00 » n'est pas permis" + at;
    }
    const std::size_t query = text.find('?', start);
    std::string authority = text.substr(start, std::min(query, text.find('/', start)) - start);
    authority.erase(0, authority.rfind('@') == std::string::npos ? 0 : authority.rfind('@') + 1);
    for (std::size_t open = authority.find('['); open != std::string::npos;
         open = authority.find('[', open + 1)) {
        if (authority.find(']', open) == std::string::npos)
            return std::string("« [ » sans « ] » qui le ferme autour de l'adresse IPv6 d'un serveur");
    }
    if (query == std::string::npos) return std::nullopt;
    std::size_t from = query + 1;
    while (from <= text.size()) {
        std::size_t end = std::min(text.find('&', from), text.size());
        const std::string param = text.substr(from, end - from);
        const std::size_t equals = param.find('=');
        const std::string name = decoded(param.substr(0, equals));
        if (equals == std::string::npos)
            return "le paramètre « " + name + " » n'a pas de valeur (« = » manque)";
        if (knownParameters().count(name) == 0) return "paramètre inconnu « " + name + " »";
        from = end + 1;
    }
    return std::nullopt;
}

// What is wrong with a keyword string that the library refused.
std::optional<std::string> keywordFault(const std::string& text) {
    std::size_t i = 0;
    auto skipSpaces = [&] {
        while (i < text.size() && isSpace(text[i]))
            ++i;
    };
    while (true) {
        skipSpaces();
        if (i >= text.size()) return std::nullopt;
        const std::size_t begin = i;
        while (i < text.size() && !isSpace(text[i]) && text[i] != '=')
            ++i;
        const std::string name = text.substr(begin, i - begin);
        skipSpaces();
        if (i >= text.size() || text[i] != '=') return "« = » manque après « " + name + " »";
        ++i;
        skipSpaces();
        if (i < text.size() && text[i] == '\'') {
            for (++i; i < text.size() && text[i] != '\''; ++i)
                if (text[i] == '\\') ++i;
            if (i >= text.size()) return "guillemet « ' » non fermé dans la valeur de « " + name + " »";
            ++i;
        } else {
            for (; i < text.size() && !isSpace(text[i]); ++i)
                if (text[i] == '\\') ++i;
        }
        if (knownParameters().count(name) == 0) return "paramètre inconnu « " + name + " »";
    }
}

}  // namespace

bool isServerAddress(const std::string& text) {
    if (schemeLength(text) > 0) return true;
    std::size_t i = 0;
    while (i < text.size() && isSpace(text[i]))
        ++i;
    const std::size_t word = i;
    while (i < text.size() && (std::isalnum(static_cast<unsigned char>(text[i])) || text[i] == '_'))
        ++i;
    if (i == word || std::isdigit(static_cast<unsigned char>(text[word]))) return false;
    while (i < text.size() && isSpace(text[i]))
        ++i;
    return i < text.size() && text[i] == '=';
}

std::string canonicalAddress(const std::string& text) {
    std::string out = text;
    for (std::size_t i = 0; i < schemeLength(text); ++i)
        out[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(out[i])));
    return out;
}

std::vector<std::string> checkAddress(const std::string& text) {
    const std::string address = canonicalAddress(text);
    char* refusal = nullptr;
    std::unique_ptr<PQconninfoOption, decltype(&PQconninfoFree)> options(
        PQconninfoParse(address.c_str(), &refusal), PQconninfoFree);
    PQfreemem(refusal);
    if (!options) {
        const std::size_t scheme = schemeLength(address);
        std::optional<std::string> fault = scheme > 0 ? uriFault(address, scheme) : keywordFault(address);
        throw base::Error(
            base::codes::kStorage,
            kPrefix + fault.value_or(scheme > 0 ? "elle ne suit pas la forme postgresql://"
                                                  "utilisateur@serveur:port/base?paramètre=valeur"
                                                : "elle ne suit pas la forme mot-clé=valeur"));
    }
    std::vector<std::string> passwords;
    for (const PQconninfoOption* o = options.get(); o->keyword; ++o) {
        if (o->val && *o->val && std::string(o->keyword) == "password") passwords.emplace_back(o->val);
    }
    return passwords;
}

std::vector<std::string> searchPathSchemas(const std::string& setting) {
    // The server cuts names to 63 bytes, never inside a character.
    constexpr std::size_t kMaxName = 63;
    auto cut = [](std::string name) {
        if (name.size() <= kMaxName) return name;
        std::size_t end = kMaxName;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
            --end;
        return name.substr(0, end);
    };
    std::vector<std::string> names;
    std::size_t i = 0;
    while (i < setting.size()) {
        while (i < setting.size() && isSpace(setting[i]))
            ++i;
        std::string name;
        if (i < setting.size() && setting[i] == '"') {
            for (++i; i < setting.size(); ++i) {
                if (setting[i] == '"' && (i + 1 >= setting.size() || setting[i + 1] != '"')) break;
                if (setting[i] == '"') ++i;
                name += setting[i];
            }
            ++i;
        } else {
            for (; i < setting.size() && setting[i] != ',' && !isSpace(setting[i]); ++i)
                name += static_cast<char>(setting[i] >= 'A' && setting[i] <= 'Z' ? setting[i] - 'A' + 'a'
                                                                                 : setting[i]);
        }
        while (i < setting.size() && setting[i] != ',')
            ++i;
        ++i;
        if (!name.empty()) names.push_back(cut(name));
    }
    return names;
}

std::string masked(std::string message, const std::vector<std::string>& secrets) {
    for (const std::string& secret : secrets) {
        if (secret.empty()) continue;
        for (std::size_t at = message.find(secret); at != std::string::npos;
             at = message.find(secret, at + 4))
            message.replace(at, secret.size(), "****");
    }
    return message;
}

}  // namespace mvdb::pg
