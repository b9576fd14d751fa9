#include "app/records_json.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "base/error.h"
#include "mvdb/dictionary.h"
#include "mvdb/dynamic_record.h"

namespace app {
namespace {

// Field order as written: file, key, attrs.
using json = nlohmann::ordered_json;

// A value as written: a string, or the list of its sub-values when it has several.
json valueToJson(std::string_view value, std::vector<std::string_view>& subs) {
    mvdb::splitPieces(value, mvdb::kSubValueMark, subs);
    if (subs.size() == 1) return std::string(value);
    json list = json::array();
    for (std::string_view sub : subs)
        list.push_back(std::string(sub));
    return list;
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

// Every attribute, value and sub-value is cut once, left to right: a list of 80,000 values costs as
// much as 80,000 attributes, not the square.
std::string recordToJson(const RecordLine& record) {
    json attrs = json::array();
    std::vector<std::string_view> attributes, values, subs;
    if (!record.text.empty()) mvdb::splitPieces(record.text, mvdb::kAttributeMark, attributes);
    for (std::string_view attribute : attributes) {
        mvdb::splitPieces(attribute, mvdb::kValueMark, values);
        json first = valueToJson(values.front(), subs);
        if (values.size() == 1 && first.is_string()) {
            attrs.push_back(std::move(first));
            continue;
        }
        json list = json::array();
        list.push_back(std::move(first));
        for (std::size_t v = 1; v < values.size(); ++v)
            list.push_back(valueToJson(values[v], subs));
        attrs.push_back(std::move(list));
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
    // The text is joined in one pass. An empty list writes no value, so empty lists at the end add no
    // attribute; one that comes before a written attribute is an empty attribute, as any gap is.
    std::string whole;
    std::size_t written = 0;  // length of `whole` up to the last attribute that holds a value
    for (std::size_t a = 0; a < attrs.size(); ++a) {
        if (a > 0) whole += mvdb::kAttributeMark;
        const json& attr = attrs[a];
        if (!attr.is_array()) {
            whole += text(attr, "un attribut");
            written = whole.size();
            continue;
        }
        for (std::size_t v = 0; v < attr.size(); ++v) {
            if (v > 0) whole += mvdb::kValueMark;
            whole += valueFromJson(attr[v]);
        }
        if (!attr.empty()) written = whole.size();
    }
    whole.resize(written);
    record.text = std::move(whole);
    return record;
}

}  // namespace app
