#include "mvdb/query.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "base/error.h"
#include "mvdb/dictionary.h"
#include "mvdb/sort_key.h"
#include "mvdb/store.h"

namespace mvdb {
namespace {

const std::string kNumbersLow(1, kNumberSegment);
const std::string kNumbersHigh(1, static_cast<char>(kNumberSegment + 1));
const std::string kTextsLow(1, kTextSegment);
const std::string kTextsHigh(1, static_cast<char>(kTextSegment + 1));

struct Resolved {
    FieldSource source;
    int index = -1;  // the field's index number, -1 when it has none
    const Condition* condition = nullptr;
    std::string valueKey;  // sort key of the condition's value
    bool numeric = false;  // the condition's value is a number
};

std::string quoteSentence(const std::string& text) {
    return text.size() > 200 ? text.substr(0, 200) + "…" : text;
}

FieldSource resolveField(const Field& field, std::size_t position, const FileDictionary& dictionary,
                         const std::string& file, const std::string& text) {
    if (field.attribute >= 0) return FieldSource::attributeNumber(field.attribute);
    if (const FieldSource* source = dictionary.find(field.name)) return *source;
    throw base::Error(base::codes::kSentence, "Phrase incorrecte à la position " + std::to_string(position) +
                                                  " : le fichier " + file + " n'a pas de champ « " +
                                                  field.name + " » dans « " + quoteSentence(text) + " »");
}

bool matchesValue(const Resolved& r, std::string_view value) {
    const Condition& c = *r.condition;
    if (c.prefix) {
        bool begins = value.substr(0, c.value.size()) == c.value;
        return c.op == CompareOp::Equal ? begins : !begins;
    }
    int order;
    std::string key = r.numeric ? sortKey(value) : std::string();
    if (r.numeric && key[0] == kNumberSegment) {
        order = key.compare(r.valueKey);
    } else {
        order = value.compare(c.value);
    }
    switch (c.op) {
        case CompareOp::Equal:
            return order == 0;
        case CompareOp::Less:
            return order < 0;
        case CompareOp::Greater:
            return order > 0;
        case CompareOp::LessOrEqual:
            return order <= 0;
        case CompareOp::GreaterOrEqual:
            return order >= 0;
        case CompareOp::NotEqual:
            return order != 0;
    }
    return false;
}

// A record's whole text read in place, as a DynamicRecord made of it reads: attribute, value, count of
// values. A selection reads thousands of records and keeps few, or needs only some of their values:
// none of them is split into a record for that.
class RecordText {
public:
    explicit RecordText(std::string_view text) : m_text(text) {}
    std::string_view view(std::int64_t attribute) const { return piece(m_text, kAttributeMark, attribute); }
    std::string_view view(std::int64_t attribute, std::int64_t value) const {
        return piece(view(attribute), kValueMark, value);
    }
    std::int64_t DCount(std::int64_t attribute) const {
        const std::string_view whole = view(attribute);
        if (whole.empty()) return 0;
        return 1 + static_cast<std::int64_t>(std::count(whole.begin(), whole.end(), kValueMark));
    }

private:
    std::string_view m_text;
};

// The first value of a field, for sorting: FieldSource::firstValue on the text in place.
std::string_view firstValue(const FieldSource& source, const std::string& key, const RecordText& record) {
    static const DynamicRecord noRecord;
    if (source.kind != FieldSource::Kind::Attribute) return source.firstValue(key, noRecord);
    return record.view(source.attribute, 1);
}

// Walks the values in place: this runs for every record a selection reads.
bool matches(const Resolved& r, const std::string& key, const RecordText& record) {
    if (r.source.kind != FieldSource::Kind::Attribute)
        return matchesValue(r, firstValue(r.source, key, record));
    const std::int64_t count = std::max<std::int64_t>(1, record.DCount(r.source.attribute));
    for (std::int64_t v = 1; v <= count; ++v) {
        if (matchesValue(r, record.view(r.source.attribute, v))) return true;
    }
    return false;
}

// How narrowly a condition's index range finds its records; lower is narrower, nullopt: not at all.
std::optional<int> narrowness(const Resolved& r) {
    const Condition& c = *r.condition;
    if (r.index < 0 || c.op == CompareOp::NotEqual) return std::nullopt;
    if (c.prefix) return couldBeginNumber(c.value) ? 4 : 1;
    if (c.op == CompareOp::Equal) return 0;
    return r.numeric ? 2 : 3;
}

// The part of one segment [low, high) that a comparison with `pivot` keeps.
KeyRange segmentRange(int index, CompareOp op, const std::string& pivot, const std::string& low,
                      const std::string& high) {
    switch (op) {
        case CompareOp::Equal:
            return {index, pivot, true, pivot, true};
        case CompareOp::Less:
            return {index, low, true, pivot, false};
        case CompareOp::LessOrEqual:
            return {index, low, true, pivot, true};
        case CompareOp::Greater:
            return {index, pivot, false, high, false};
        case CompareOp::GreaterOrEqual:
        case CompareOp::NotEqual:
            break;
    }
    return {index, pivot, true, high, false};
}

// An index range that a plan reads. `exact`: every record it holds meets the driving condition, so
// that condition need not be judged again on them. That is so where the keys of the range compare as
// the condition compares the values: a text's key is the text behind one byte, and a number's key
// orders as the number; but a text condition reading the numbers' segment compares numbers as texts.
struct PlannedRange {
    KeyRange range;
    bool exact = false;
};

// Index ranges holding every record that can meet the condition. A number compares with numbers as a
// number and with texts as a text, so both segments may have to be read.
std::vector<PlannedRange> rangesFor(const Resolved& r) {
    const Condition& c = *r.condition;
    std::string textPivot = kTextSegment + c.value;
    std::vector<PlannedRange> ranges;
    if (c.prefix) {
        ranges.push_back({{r.index, textPivot, true, prefixEnd(textPivot), false}, true});
        if (couldBeginNumber(c.value))
            ranges.push_back({{r.index, kNumbersLow, true, kNumbersHigh, false}, false});
        return ranges;
    }
    // A number equals no text: a value compared as a text equals the number's own text only if it is
    // that number. So equality with a number reads the numbers' segment alone, one range instead of two.
    if (!r.numeric || c.op != CompareOp::Equal)
        ranges.push_back({segmentRange(r.index, c.op, textPivot, kTextsLow, kTextsHigh), true});
    if (r.numeric) {
        ranges.push_back({segmentRange(r.index, c.op, r.valueKey, kNumbersLow, kNumbersHigh), true});
    } else if (c.op != CompareOp::Equal) {
        ranges.push_back({{r.index, kNumbersLow, true, kNumbersHigh, false}, false});
    }
    return ranges;
}

struct Plan {
    std::vector<Resolved> conditions;
    std::vector<PlannedRange> ranges;  // empty: the whole file is read
    std::size_t driver = 0;            // the condition that the ranges are of
    // The ranges are of a field of several values: a record can come through more than one of them.
    bool repeats = false;
    // The store holds in memory every record that can meet one of the conditions: the ranges are read
    // among those records, without a query.
    bool held = false;
    std::optional<FieldSource> sortField;
    bool descending = false;
};

// Whether the store holds every record that can meet one of the conditions: those of the day's records
// of one aidé lie among the day's records, which a store reading in bulk keeps once for many aidés.
bool holdsSomeCondition(Store& store, const std::string& file, const std::vector<Resolved>& conditions) {
    for (const Resolved& r : conditions) {
        if (!narrowness(r)) continue;
        const std::vector<PlannedRange> ranges = rangesFor(r);
        if (std::all_of(ranges.begin(), ranges.end(),
                        [&](const PlannedRange& p) { return store.holds(file, p.range); }))
            return true;
    }
    return false;
}

Plan makePlan(Store& store, const Sentence& sentence, const std::string& text) {
    if (!store.hasFile(sentence.file)) {
        throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + sentence.file);
    }
    const FileDictionary& dictionary = dictionaryFor(sentence.file);
    Plan plan;
    std::optional<std::size_t> driver;
    int best = 99;
    for (const Condition& c : sentence.conditions) {
        Resolved r;
        r.source = resolveField(c.field, c.position, dictionary, sentence.file, text);
        r.index = dictionary.indexOf(r.source);
        r.condition = &c;
        r.valueKey = sortKey(c.value);
        r.numeric = r.valueKey[0] == kNumberSegment;
        plan.conditions.push_back(std::move(r));
    }
    for (std::size_t i = 0; i < plan.conditions.size(); ++i) {
        std::optional<int> rank = narrowness(plan.conditions[i]);
        if (rank && *rank < best) {
            best = *rank;
            driver = i;
        }
    }
    if (driver) {
        const Resolved& r = plan.conditions[*driver];
        plan.driver = *driver;
        plan.ranges = rangesFor(r);
        plan.repeats = r.source.kind == FieldSource::Kind::Attribute;
    }
    plan.held = !plan.ranges.empty() && holdsSomeCondition(store, sentence.file, plan.conditions);
    if (sentence.sort) {
        plan.sortField =
            resolveField(sentence.sort->field, sentence.sort->position, dictionary, sentence.file, text);
        plan.descending = sentence.sort->order == SortOrder::Descending;
    }
    return plan;
}

// Whether a record read by a plan's scan meets every condition but `known`, which its range already
// guarantees (nullptr: none). Conditions on the key are judged before the record's text is walked: most
// records a range reads fail on one of them.
bool meetsAll(const Plan& plan, const Resolved* known, const std::string& key, const RecordText& record) {
    for (const Resolved& r : plan.conditions) {
        if (&r != known && r.source.kind != FieldSource::Kind::Attribute && !matches(r, key, record))
            return false;
    }
    for (const Resolved& r : plan.conditions) {
        if (&r != known && r.source.kind == FieldSource::Kind::Attribute && !matches(r, key, record))
            return false;
    }
    return true;
}

// Called with each record a plan's scan reads and the condition its range guarantees, if any.
using PlanVisitor =
    std::function<void(const std::string& key, const std::string& text, const Resolved* known)>;

void scan(Store& store, const Sentence& sentence, const Plan& plan, const PlanVisitor& visit) {
    if (plan.ranges.empty()) {
        store.scanAll(sentence.file, [&](const std::string& key, const std::string& text) {
            visit(key, text, nullptr);
            return true;
        });
        return;
    }
    for (const PlannedRange& planned : plan.ranges) {
        const Resolved* known = planned.exact ? &plan.conditions[plan.driver] : nullptr;
        const RecordVisitor each = [&](const std::string& key, const std::string& text) {
            visit(key, text, known);
            return true;
        };
        if (plan.held) {
            store.scanHeld(sentence.file, planned.range, each);
        } else {
            store.scanRange(sentence.file, planned.range, each);
        }
    }
}

// The records of a sentence, each once, in its order: `keep` is called with each record that meets the
// conditions (its key, its text), and the positions of those calls are given back in the sentence's
// order. What a caller makes of a record stays with the caller: a selection keeps thousands of records
// and each copy made here would cost an allocation.
template <class Keep>
std::vector<std::size_t> selectOrdered(Store& store, const Sentence& sentence,
                                       const std::string& sentenceText, Keep keep) {
    Plan plan = makePlan(store, sentence, sentenceText);
    struct Candidate {
        std::string order;     // sort key of the sort field's first value
        std::string keyOrder;  // sort key of the key, made only where the order ties
        std::size_t keyAt = 0;
        std::size_t keySize = 0;
    };
    std::vector<Candidate> found;
    std::string keys;  // every kept record's key, one after the other
    scan(store, sentence, plan, [&](const std::string& key, const std::string& text, const Resolved* known) {
        const RecordText record(text);
        if (!meetsAll(plan, known, key, record)) return;
        std::string order =
            plan.sortField ? sortKey(firstValue(*plan.sortField, key, record)) : std::string();
        found.push_back({std::move(order), {}, keys.size(), key.size()});
        keys += key;
        keep(key, text, record);
    });
    const auto keyOf = [&](std::size_t i) {
        return std::string_view(keys).substr(found[i].keyAt, found[i].keySize);
    };
    // By the sort field's value first, then, only among records that share a value, by key. The key's
    // sort key is made for those alone.
    std::vector<std::size_t> rank(found.size());
    for (std::size_t i = 0; i < rank.size(); ++i)
        rank[i] = i;
    const bool descending = plan.descending;
    std::sort(rank.begin(), rank.end(), [&found, descending](std::size_t i, std::size_t j) {
        const int order = found[i].order.compare(found[j].order);
        return descending ? order > 0 : order < 0;
    });
    for (auto first = rank.begin(); first != rank.end();) {
        const std::string& value = found[*first].order;
        auto last =
            std::find_if(first + 1, rank.end(), [&](std::size_t k) { return found[k].order != value; });
        if (last - first > 1) {
            for (auto it = first; it != last; ++it)
                found[*it].keyOrder = sortKey(keyOf(*it));
            std::sort(first, last, [&](std::size_t i, std::size_t j) {
                const int byKey = found[i].keyOrder.compare(found[j].keyOrder);
                return byKey < 0 || (byKey == 0 && keyOf(i) < keyOf(j));
            });
        }
        first = last;
    }
    // A record found through several of its values comes once.
    std::vector<std::size_t> out;
    out.reserve(rank.size());
    for (std::size_t i : rank) {
        if (!out.empty() && keyOf(out.back()) == keyOf(i)) continue;
        out.push_back(i);
    }
    return out;
}

}  // namespace

std::vector<SelectedRecord> select(Store& store, const Sentence& sentence, const std::string& sentenceText) {
    std::vector<SelectedRecord> kept;
    const std::vector<std::size_t> order =
        selectOrdered(store, sentence, sentenceText,
                      [&](const std::string& key, const std::string& text, const RecordText&) {
                          kept.push_back({key, DynamicRecord(text)});
                      });
    std::vector<SelectedRecord> out;
    out.reserve(order.size());
    for (std::size_t i : order)
        out.push_back(std::move(kept[i]));
    return out;
}

void selectEach(Store& store, const Sentence& sentence, const std::string& sentenceText,
                const SelectedVisitor& visit) {
    Plan plan = makePlan(store, sentence, sentenceText);
    std::unordered_set<std::string> seen;
    scan(store, sentence, plan, [&](const std::string& key, const std::string& text, const Resolved* known) {
        if (plan.repeats && !seen.insert(key).second) return;
        if (meetsAll(plan, known, key, RecordText(text))) visit(key, DynamicRecord(text));
    });
}

DynamicRecord query(Store& store, const Sentence& sentence, const std::string& sentenceText,
                    const std::vector<std::int32_t>& attributes) {
    // Each record's line of the reply is made as the record is read, from its text in place, into one
    // buffer; the reply is then those lines in order, one attribute each.
    // The record is cut once, up to the last attribute listed, however many are: finding each from
    // the start would make a list of a thousand attributes cost a thousand walks of the record.
    const std::size_t last =
        attributes.empty()
            ? 0
            : static_cast<std::size_t>(*std::max_element(attributes.begin(), attributes.end()));
    std::vector<std::string_view> cut;
    std::string lines;
    std::vector<std::size_t> ends;
    const std::vector<std::size_t> order =
        selectOrdered(store, sentence, sentenceText,
                      [&](const std::string& key, const std::string& text, const RecordText&) {
                          splitPieces(text, kAttributeMark, cut, last);
                          for (std::size_t i = 0; i < attributes.size(); ++i) {
                              if (i > 0) lines += kValueMark;
                              const auto a = static_cast<std::size_t>(attributes[i]);
                              if (a == 0) {
                                  lines += key;
                              } else if (a <= cut.size()) {
                                  lines += piece(cut[a - 1], kValueMark, 1);
                              }
                          }
                          ends.push_back(lines.size());
                      });
    std::string text;
    text.reserve(lines.size() + order.size());
    for (std::size_t n = 0; n < order.size(); ++n) {
        const std::size_t i = order[n];
        if (n > 0) text += kAttributeMark;
        const std::size_t begin = i == 0 ? 0 : ends[i - 1];
        text.append(lines, begin, ends[i] - begin);
    }
    DynamicRecord reply;
    reply.takeText(std::move(text));
    return reply;
}

DynamicRecord listing(const std::vector<SelectedRecord>& records,
                      const std::vector<std::int32_t>& attributes) {
    DynamicRecord reply;
    std::int64_t row = 0;
    std::string line;
    for (const SelectedRecord& r : records) {
        line.clear();
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            if (i > 0) line += kValueMark;
            line += attributes[i] == 0 ? std::string_view(r.key) : r.record.view(attributes[i], 1);
        }
        reply.set(++row, line);
    }
    return reply;
}

std::vector<std::string> explainSelection(Store& store, const Sentence& sentence,
                                          const std::string& sentenceText) {
    Plan plan = makePlan(store, sentence, sentenceText);
    if (plan.ranges.empty()) return store.explainScan(sentence.file, std::nullopt);
    std::vector<std::string> lines;
    for (const PlannedRange& planned : plan.ranges) {
        for (std::string& line : store.explainScan(sentence.file, planned.range))
            lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace mvdb
