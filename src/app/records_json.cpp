#include "app/records_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/error.h"
#include "mvdb/dictionary.h"
#include "mvdb/dynamic_record.h"

namespace app {
namespace {

// Field order as written: file, key, attrs.
using json = nlohmann::ordered_json;

json valueToJson(const mvdb::DynamicRecord& r, std::int64_t a, std::int64_t v) {
    std::string_view value = r.view(a, v);
    auto subValues = std::count(value.begin(), value.end(), mvdb::kSubValueMark) + 1;
    if (subValues == 1) return std::string(value);
    json subs = json::array();
    for (std::int64_t s = 1; s <= subValues; ++s)
        subs.push_back(r(a, v, s));
    return subs;
}

[[noreturn]] void bad(const std::string& what) {
    throw base::Error(base::codes::kBadData, what);
}

std::string text(const json& j, const char* what) {
    if (!j.is_string()) bad(std::string(what) + " doit être un texte");
    std::string s = j.get<std::string>();
    if (s.find_first_of("\xFC\xFD\xFE") != std::string::npos)
        bad(std::string(what) + " contient un séparateur");
    return s;
}

std::string valueFromJson(const json& j) {
    if (!j.is_array()) return text(j, "une valeur");
    std::string value;
    for (std::size_t s = 0; s < j.size(); ++s) {
        if (s > 0) value += mvdb::kSubValueMark;
        value += text(j[s], "une sous-valeur");
    }
    return value;
}

}  // namespace

std::string recordToJson(const RecordLine& record) {
    mvdb::DynamicRecord r(record.text);
    json attrs = json::array();
    for (std::int64_t a = 1; a <= r.DCount(); ++a) {
        std::int64_t values = r.DCount(a);
        json first = valueToJson(r, a, 1);
        if (values <= 1 && first.is_string()) {
            attrs.push_back(first);
            continue;
        }
        json list = json::array();
        for (std::int64_t v = 1; v <= values; ++v)
            list.push_back(valueToJson(r, a, v));
        attrs.push_back(list);
    }
    json line = {{"file", record.file}, {"key", record.key}, {"attrs", attrs}};
    return line.dump(-1, ' ', false, json::error_handler_t::replace);
}

RecordLine recordFromJson(std::string_view line) {
    json j;
    try {
        j = json::parse(line);
    } catch (const json::exception& e) {
        // Not only syntax: a number too large for a double ("1e999") fails the parse as out_of_range.
        bad(std::string("JSON incorrect (") + e.what() + ")");
    }
    if (!j.is_object()) bad("un objet JSON est attendu");
    for (const char* field : {"file", "key", "attrs"}) {
        if (!j.contains(field)) bad(std::string("le champ \"") + field + "\" manque");
    }
    RecordLine record{text(j["file"], "\"file\""), text(j["key"], "\"key\""), {}};
    if (!mvdb::isValidFileName(record.file)) bad("nom de fichier incorrect : « " + record.file + " »");
    if (record.key.empty()) bad("la clé est vide");
    const json& attrs = j["attrs"];
    if (!attrs.is_array()) bad("\"attrs\" doit être une liste");
    mvdb::DynamicRecord r;
    for (std::size_t a = 0; a < attrs.size(); ++a) {
        const json& attr = attrs[a];
        if (!attr.is_array()) {
            r.set(static_cast<std::int64_t>(a + 1), 1, text(attr, "un attribut"));
            continue;
        }
        for (std::size_t v = 0; v < attr.size(); ++v) {
            r.set(static_cast<std::int64_t>(a + 1), static_cast<std::int64_t>(v + 1), valueFromJson(attr[v]));
        }
    }
    record.text = r.text();
    return record;
}

}  // namespace app
