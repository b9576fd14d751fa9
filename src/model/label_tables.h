#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/labels.h"
#include "model/panes.h"
#include "model/type_etq.h"
#include "model/working_table.h"

namespace model {

// The first row of a label table whose column equals the value as the tables compare values (numbers
// as numbers); 0 when none does.
std::int64_t findRow(const WorkTable& table, int column, std::string_view value);
// Row r with its numbers rounded to integers, halves to even; an empty row reads as zeros.
LabelRow readRow(const WorkTable& table, std::int64_t r);

// The owner of the two label tables, TabTempoAide (pane "AIDE") and TabTempoDetail (pane "DETAIL"):
// every change the display, the drop, the push, the return, the chaining, the removal and the commit
// make to them goes through here. It knows rows only; the labels that show them are the control's.
// Using a table that does not exist is the failure of WorkTable, which names it.
class LabelTables {
public:
    const WorkTable& aide() const { return m_aide; }
    const WorkTable& detail() const { return m_detail; }
    const WorkTable& table(Pane pane) const;

    bool exists(Pane pane) const { return table(pane).exists(); }
    // A new, empty table; the rows it held are gone.
    void renew(Pane pane);
    // No table at all, as after leaving the day.
    void release(Pane pane);

    // ---- Reading.
    // The first row whose NumEtq, or whose CleProtocole, equals the value as the tables compare values
    // (numbers as numbers); 0 when none does.
    std::int64_t findByLabel(Pane pane, int numEtq) const;
    std::int64_t findByKey(Pane pane, std::string_view cleProtocole) const;
    LabelRow row(Pane pane, std::int64_t r) const;
    TypeEtq typeEtq(Pane pane, std::int64_t r) const { return TypeEtq(table(pane)(r, col::TypeEtq)); }
    // The index in Etq_Aide that row r names, when it is one an item can have (1 and up).
    std::optional<int> labelOfRow(Pane pane, std::int64_t r) const;

    // ---- Inserting and removing. Each gives the row where the new one went.
    // At row r, the rows from r on moving down; the order of the table is the caller's business.
    void insertAt(Pane pane, std::int64_t r, const LabelRow& values);
    // Pane "AIDE" in rising HeureDebut. A tie goes after the rows of equal start: arrivals keep their order.
    std::int64_t insertByStart(const LabelRow& values);
    // Pane "DETAIL" in rising TopEtq. A tie goes before the rows of equal TopEtq, deliberately unlike the
    // waiting list: the newcomer comes first and takes the other colour of the pair.
    std::int64_t insertByPosition(const LabelRow& values);
    void remove(Pane pane, std::int64_t r);

    // ---- Writing one cell.
    void setNumEtq(Pane pane, std::int64_t r, int numEtq);
    void setTopEtq(Pane pane, std::int64_t r, double topEtq);
    void setTypeEtq(Pane pane, std::int64_t r, const TypeEtq& type);
    // Detail row r as built carries its planned start at the end of TypeEtq: cuts it off and gives it.
    std::string takePlannedStart(std::int64_t r);

    // ---- What the moves do to the rows.
    // The row of label `numEtq` in pane "DETAIL" leaves its place and comes back at TopEtq `topEtq`, by
    // insertByPosition. Gives its new row. When no row names the label, one with empty cells is made
    // for it: a move never loses the label from the table.
    std::int64_t moveInDetail(int numEtq, int topEtq);
    // The row of label `numEtq` goes back from pane "DETAIL" to pane "AIDE" as `type`, by insertByStart.
    // Gives its row in pane "AIDE". As moveInDetail, a label without a row gets one with empty cells.
    std::int64_t sendBack(int numEtq, const TypeEtq& type);
    // The half of an act for two that waits on row r of pane "AIDE" takes both places again ("|2").
    void join(std::int64_t aideRow);
    // The act for two of row r of pane "AIDE" splits as one half goes to the tournée: row r becomes "|1",
    // and a copy of it for label `numEtqMoitie`, the half that waits, goes in before it. The row of the
    // label that went stays, right behind. Gives the waiting half's row, r.
    std::int64_t split(std::int64_t aideRow, int numEtqMoitie);
    // The line of pane "AIDE" that a label left closes: row r goes unless it still waits for its second
    // intervenant ("|2"), and the rows from r on move up a line of `hauteurEtq` all the same.
    void closeLine(std::int64_t aideRow, int hauteurEtq);

    // ---- What the screen shows of them.
    // Max of the scroll bar of pane "AIDE": the row count beyond seven rows, else 0 (no bar).
    int scrollMax() const;
    // The colour of detail row r: the first of the two for rows 1, 3, 5 ..., the second for the others.
    static const std::string& alternatingColour(std::int64_t r, const std::string& premiere,
                                                const std::string& seconde);

    // ---- The two tables as a whole, for putting them back exactly.
    struct Snapshot {
        bool aideExists = false;
        std::string aide;
        bool detailExists = false;
        std::string detail;
        friend bool operator==(const Snapshot&, const Snapshot&) = default;
    };
    Snapshot snapshot() const;
    void restore(const Snapshot& snapshot);

private:
    WorkTable& mutableTable(Pane pane);

    WorkTable m_aide{"TabTempoAide"};
    WorkTable m_detail{"TabTempoDetail"};
};

}  // namespace model
