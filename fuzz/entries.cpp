#include "entries.h"

#include <cstdlib>
#include <sstream>
#include <string>

#include "app/play.h"
#include "app/records_json.h"
#include "base/error.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/sentence.h"

namespace fuzz {
namespace {

// A broken promise is a crash, so that the fuzzer keeps the input.
void require(bool held) {
    if (!held) std::abort();
}

// Small indexes, zero and negative ones included: the record must refuse nothing and break on nothing.
std::int64_t position(unsigned char byte) {
    return static_cast<std::int64_t>(byte % 12) - 2;
}

}  // namespace

void sentence(std::string_view bytes) {
    try {
        mvdb::parseSentence(bytes);
    } catch (const base::Error&) {
    }
    try {
        mvdb::parseAttributeList(bytes);
    } catch (const base::Error&) {
    }
}

void record(std::string_view bytes) {
    mvdb::DynamicRecord r(bytes);
    require(mvdb::DynamicRecord(r.text()) == r);
    for (std::size_t i = 0; i + 3 < bytes.size() && i < 256; i += 4) {
        const auto op = static_cast<unsigned char>(bytes[i]);
        const std::int64_t a = position(static_cast<unsigned char>(bytes[i + 1]));
        const std::int64_t v = position(static_cast<unsigned char>(bytes[i + 2]));
        const std::int64_t s = position(static_cast<unsigned char>(bytes[i + 3]));
        const std::string_view piece = bytes.substr(i, 4);
        switch (op % 9) {
            case 0:
                r.set(a, v, s, piece);
                break;
            case 1:
                r.set(a, v, piece);
                break;
            case 2:
                r.set(a, piece);
                break;
            case 3:
                r.Insert(a, piece);
                break;
            case 4:
                r.Delete(a);
                break;
            // The record's own pieces written back into it, and the record packed again from its text.
            case 5:
                r.set(a, r.view(v));
                break;
            case 6:
                r.Insert(a, r.view(v, s));
                break;
            case 7:
                r.setText(r.text());
                break;
            default:
                require(r(a, v, s).size() <= r.text().size());
                break;
        }
        r.DCount();
        r.DCount(a);
    }
    require(mvdb::DynamicRecord(r.text()) == r);
}

void loadLine(std::string_view bytes) {
    try {
        const app::RecordLine line = app::recordFromJson(bytes);
        app::recordToJson(line);
    } catch (const base::Error&) {
    }
}

void playLines(std::string_view bytes) {
    // Printers could write anywhere the bytes name: the runner's own tests cover them.
    if (bytes.find("printer") != std::string_view::npos) return;
    std::istringstream script("init\n" + std::string(bytes) + "\nterminate\n");
    std::ostringstream out, err;
    app::runPlay({":memory:", "23/11/2026"}, script, out, err);
}

}  // namespace fuzz
