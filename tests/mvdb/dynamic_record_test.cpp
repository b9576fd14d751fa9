#include "mvdb/dynamic_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "base/error.h"

namespace mvdb {
namespace {

// The reference model: a record is its whole text, and every operation cuts and glues that text.
constexpr char kMarks[] = {kAttributeMark, kValueMark, kSubValueMark};
using Address = std::vector<std::int64_t>;

// The empty text has no attribute, but an empty attribute has one empty value.
std::vector<std::string> cut(const std::string& text, std::size_t level) {
    if (level == 0 && text.empty()) return {};
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == kMarks[level]) pieces.emplace_back();
        if (c != kMarks[level]) pieces.back().push_back(c);
    }
    return pieces;
}

std::string glue(const std::vector<std::string>& pieces, std::size_t level) {
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i)
        text += (i > 0 ? std::string(1, kMarks[level]) : "") + pieces[i];
    return text;
}

std::string modelRead(std::string text, const Address& address) {
    for (std::size_t level = 0; level < address.size(); ++level) {
        const std::vector<std::string> pieces = cut(text, level);
        if (address[level] < 1 || static_cast<std::size_t>(address[level]) > pieces.size()) return "";
        text = pieces[address[level] - 1];
    }
    return text;
}

std::string modelWrite(const std::string& text, const Address& address, const std::string& value,
                       std::size_t level = 0) {
    if (std::any_of(address.begin(), address.end(), [](std::int64_t index) { return index < 1; }))
        return text;
    std::vector<std::string> pieces = cut(text, level);
    pieces.resize(std::max<std::size_t>(pieces.size(), address[level]));
    std::string& piece = pieces[address[level] - 1];
    piece = level + 1 == address.size() ? value : modelWrite(piece, address, value, level + 1);
    return glue(pieces, level);
}

// Insert and Delete as changes to the list of attribute texts; `value` is glued in unsplit.
std::string modelInsertOrDelete(const std::string& text, std::int64_t row, const std::string* value) {
    std::vector<std::string> attributes = cut(text, 0);
    const auto at = static_cast<std::size_t>(row - 1);
    if (row >= 1 && value) {
        attributes.resize(std::max(attributes.size(), at));
        attributes.insert(attributes.begin() + at, *value);
    } else if (row >= 1 && at < attributes.size()) {
        attributes.erase(attributes.begin() + at);
    }
    return glue(attributes, 0);
}

std::int64_t modelCount(const std::string& text, char mark) {
    return text.empty() ? 0 : std::count(text.begin(), text.end(), mark) + 1;
}

void expectSameAsModel(const DynamicRecord& record, const std::string& model, const std::string& step) {
    ASSERT_EQ(record.text(), model) << step;
    ASSERT_EQ(record.DCount(), modelCount(model, kAttributeMark)) << step;
    ASSERT_TRUE(record == DynamicRecord(model)) << step;
    for (std::int64_t a = -1; a <= 6; ++a) {
        ASSERT_EQ(record(a), modelRead(model, {a})) << step << " at " << a;
        ASSERT_EQ(record.DCount(a), modelCount(modelRead(model, {a}), kValueMark)) << step << " at " << a;
        for (std::int64_t v = -1; v <= 4; ++v) {
            ASSERT_EQ(record.view(a, v), modelRead(model, {a, v})) << step << " at " << a << "," << v;
            for (std::int64_t s = -1; s <= 3; ++s) {
                ASSERT_EQ(record(a, v, s), modelRead(model, {a, v, s}))
                    << step << " at " << a << "," << v << "," << s;
            }
        }
    }
}

TEST(DynamicRecord, BehavesLikeItsWholeTextUnderRandomOperations) {
    const std::string tokens[] = {"", "a", "bc", "é", "\xFE", "\xFD", "\xFC"};
    std::mt19937 random(7);
    const auto someText = [&] {
        std::string text;
        for (auto n = random() % 4; n > 0; --n)
            text += tokens[random() % std::size(tokens)];
        return text;
    };
    const auto someIndex = [&] { return static_cast<std::int64_t>(random() % 7) - 1; };
    for (int round = 0; round < 60; ++round) {
        std::string model = someText();
        DynamicRecord record(model);
        for (int step = 0; step < 25 && !HasFatalFailure(); ++step) {
            const std::string value = someText();
            const std::int64_t row = someIndex();
            const Address address = {row, someIndex(), someIndex()};
            switch (random() % 7) {
                case 0:
                    record.set(row, value);
                    model = modelWrite(model, {row}, value);
                    break;
                case 1:
                    record.set(row, address[1], value);
                    model = modelWrite(model, {row, address[1]}, value);
                    break;
                case 2:
                    record.set(row, address[1], address[2], value);
                    model = modelWrite(model, address, value);
                    break;
                case 3:
                    record.Insert(row, value);
                    model = modelInsertOrDelete(model, row, &value);
                    break;
                case 4:
                    record.Delete(row);
                    model = modelInsertOrDelete(model, row, nullptr);
                    break;
                case 5: {
                    // A record's own attribute written back elsewhere in it.
                    const std::string own = modelRead(model, {address[1]});
                    record.set(row, record.view(address[1]));
                    model = modelWrite(model, {row}, own);
                    break;
                }
                default:
                    record.setText(value);
                    model = value;
            }
            expectSameAsModel(record, model, std::to_string(round) + "." + std::to_string(step));
        }
    }
}

TEST(DynamicRecord, WritesInsertsAndDeletesLikeSplicingTheText) {
    using Change = std::function<void(DynamicRecord&)>;
    const struct {
        const char* name;
        std::string before;
        Change change;
        std::string after;
        std::int64_t count;
    } rows[] = {
        {"index 0 ignored", "a", [](DynamicRecord& r) { r.set(0, "x"); }, "a", 1},
        {"Insert at 0 ignored", "a", [](DynamicRecord& r) { r.Insert(0, "x"); }, "a", 1},
        {"Delete past the end",
         "a\xFE"
         "b",
         [](DynamicRecord& r) { r.Delete(3); },
         "a\xFE"
         "b",
         2},
        {"attribute 3 on empty", "", [](DynamicRecord& r) { r.set(3, "x"); }, "\xFE\xFEx", 3},
        {"value 3 of attribute 2 on empty", "", [](DynamicRecord& r) { r.set(2, 3, "v"); }, "\xFE\xFD\xFDv",
         2},
        {"emptying the only attribute", "x", [](DynamicRecord& r) { r.set(1, ""); }, "", 0},
        {"emptying the last of two keeps two", "x\xFEy", [](DynamicRecord& r) { r.set(2, ""); }, "x\xFE", 2},
        {"attribute mark splices", "x\xFEy",
         [](DynamicRecord& r) {
             r.set(1,
                   "a\xFE"
                   "b");
         },
         "a\xFE"
         "b\xFEy",
         3},
        {"attribute mark in a value", "p\xFDq",
         [](DynamicRecord& r) {
             r.set(1, 1,
                   "a\xFE"
                   "b");
         },
         "a\xFE"
         "b\xFDq",
         2},
        {"Insert on empty", "", [](DynamicRecord& r) { r.Insert(1, "x"); }, "x", 1},
        {"Insert past the end", "a", [](DynamicRecord& r) { r.Insert(3, "c"); },
         "a\xFE\xFE"
         "c",
         3},
        {"Delete moves later rows up",
         "a\xFE"
         "b\xFE"
         "c",
         [](DynamicRecord& r) { r.Delete(2); },
         "a\xFE"
         "c",
         2},
        {"Delete down to one empty row",
         "\xFE"
         "a",
         [](DynamicRecord& r) { r.Delete(2); }, "", 0},
    };
    for (const auto& row : rows) {
        DynamicRecord record(row.before);
        row.change(record);
        EXPECT_EQ(record.text(), row.after) << row.name;
        EXPECT_EQ(record.DCount(), row.count) << row.name;
    }
}

TEST(DynamicRecord, RefusesAnAddressTooLargeToPadAndStaysUnchanged) {
    DynamicRecord record("a");
    const std::function<void()> writes[] = {
        [&] { record.set(1'000'001, "x"); },
        [&] { record.set(1, INT64_MAX, "x"); },
        [&] { record.set(1, 1, 1'000'001, "x"); },
        [&] { record.Insert(INT64_MAX, "x"); },
    };
    for (const auto& write : writes) {
        try {
            write();
            ADD_FAILURE() << "no error";
        } catch (const base::Error& error) {
            EXPECT_EQ(error.code(), base::codes::kBadData);
            EXPECT_EQ(std::string(error.what()).rfind("Adresse trop grande dans un enregistrement : ", 0),
                      0u);
        }
        EXPECT_EQ(record.text(), "a");
    }
    EXPECT_EQ(record(1, INT64_MAX), "");
}

// If writing or reading a cell walked the rows before it, this test would take hours, not milliseconds.
TEST(DynamicRecord, ReadsAndWritesAnyRowOfALargeTableWithoutWalkingTheOthers) {
    constexpr std::int64_t kRows = 100'000;
    DynamicRecord table;
    for (std::int64_t row = kRows; row >= 1; --row)
        table.set(row, 2, std::to_string(row));
    ASSERT_EQ(table.DCount(), kRows);
    for (std::int64_t row = 1; row <= kRows; ++row)
        ASSERT_EQ(table.view(row, 2), std::to_string(row));
}

class RecordingSink : public RecordSink {
public:
    void writeRecord(const std::string& key, const std::string& text) override {
        calls.push_back(key + " " + text);
    }
    void deleteRecord(const std::string& key) override { calls.push_back("delete " + key); }
    std::vector<std::string> calls;
};

TEST(DynamicRecord, WritesAndDeletesOnlyThroughItsFile) {
    DynamicRecord record("a");
    const struct {
        const char* name;
        std::function<void()> call;
        std::string message;
    } unbound[] = {
        {"DBWrite", [&] { record.DBWrite(); }, "Enregistrement sans fichier : écriture impossible"},
        {"DBDelete", [&] { record.DBDelete(); }, "Enregistrement sans fichier : suppression impossible"},
    };
    for (const auto& row : unbound) {
        try {
            row.call();
            ADD_FAILURE() << row.name << ": no error";
        } catch (const base::Error& error) {
            EXPECT_EQ(error.code(), base::codes::kNotBound) << row.name;
            EXPECT_EQ(error.what(), row.message) << row.name;
        }
    }
    auto sink = std::make_shared<RecordingSink>();
    record.bind(sink, "K1");
    DynamicRecord copy = record;
    copy.set(2, "b");
    record.DBWrite();
    copy.DBWrite();
    copy.DBDelete();
    EXPECT_EQ(sink->calls, (std::vector<std::string>{"K1 a",
                                                     "K1 a\xFE"
                                                     "b",
                                                     "delete K1"}));
}

}  // namespace
}  // namespace mvdb
