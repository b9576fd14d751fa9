#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "mvdb/dynamic_record.h"
#include "mvdb/sentence.h"

namespace mvdb {

class Store;

struct SelectedRecord {
    std::string key;
    DynamicRecord record;
};

// Runs a sentence: the records of its file that meet every condition, in the order of its PAR or
// PAR-DECR field (equal values in key order), or in key order without one. One condition on an
// indexed field drives the search through the index; every condition is then checked on each record,
// so the reply is exact whatever the index could narrow, except the driving one where the index range
// already holds exactly the records that meet it. Fails with base::Error for an unknown file
// (kUnknownFile) or an unknown dictionary name (kSentence, with its position).
std::vector<SelectedRecord> select(Store& store, const Sentence& sentence, const std::string& sentenceText);

// Called with each record a selection keeps.
using SelectedVisitor = std::function<void(const std::string& key, const DynamicRecord& record)>;

// The records `select` gives, each handed over as it is read, in no set order (PAR and PAR-DECR are
// not applied) and each once: for a caller that takes them one at a time and need not hold them all.
void selectEach(Store& store, const Sentence& sentence, const std::string& sentenceText,
                const SelectedVisitor& visit);

// The reply of a query: one attribute per record, one value per listed attribute (0 is the key; of a
// multi-valued attribute, its first value). No record gives the empty record.
DynamicRecord listing(const std::vector<SelectedRecord>& records,
                      const std::vector<std::int32_t>& attributes);

// A query's reply straight from the store: listing(select(...), attributes), without a record made of
// each record read.
DynamicRecord query(Store& store, const Sentence& sentence, const std::string& sentenceText,
                    const std::vector<std::int32_t>& attributes);

// The storage engine's plan for the reads a sentence makes, one line per step.
std::vector<std::string> explainSelection(Store& store, const Sentence& sentence,
                                          const std::string& sentenceText);

}  // namespace mvdb
