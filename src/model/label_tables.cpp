#include "model/label_tables.h"

#include <cassert>
#include <climits>
#include <tuple>

#include "base/text.h"

namespace model {

const WorkTable& LabelTables::table(Pane pane) const {
    assert(pane != Pane::None);
    return pane == Pane::Aide ? m_aide : m_detail;
}

WorkTable& LabelTables::mutableTable(Pane pane) {
    assert(pane != Pane::None);
    return pane == Pane::Aide ? m_aide : m_detail;
}

void LabelTables::renew(Pane pane) {
    mutableTable(pane).renew();
}

void LabelTables::release(Pane pane) {
    mutableTable(pane).release();
}

std::int64_t findRow(const WorkTable& table, int column, std::string_view value) {
    const std::int64_t n = table->DCount();
    for (std::int64_t i = 1; i <= n; ++i) {
        if (base::compareValues(table->view(i, column), value) == 0) return i;
    }
    return 0;
}

LabelRow readRow(const WorkTable& t, std::int64_t r) {
    return {base::toInteger(t(r, col::NumEtq)),
            base::toInteger(t(r, col::HeureDebut)),
            base::toInteger(t(r, col::HeureFin)),
            base::toInteger(t(r, col::DureeMn)),
            base::toInteger(t(r, col::TopEtq)),
            t(r, col::CleProtocole),
            t(r, col::TypeEtq)};
}

std::int64_t LabelTables::findByLabel(Pane pane, int numEtq) const {
    return findRow(table(pane), col::NumEtq, base::numberText(numEtq));
}

std::int64_t LabelTables::findByKey(Pane pane, std::string_view cleProtocole) const {
    return findRow(table(pane), col::CleProtocole, cleProtocole);
}

LabelRow LabelTables::row(Pane pane, std::int64_t r) const {
    return readRow(table(pane), r);
}

std::optional<int> LabelTables::labelOfRow(Pane pane, std::int64_t r) const {
    const std::int64_t index = base::roundHalfEven(base::toNumber(table(pane)->view(r, col::NumEtq)));
    if (index < 1 || index > INT_MAX) return std::nullopt;
    return static_cast<int>(index);
}

void LabelTables::insertAt(Pane pane, std::int64_t r, const LabelRow& values) {
    insertLabelRow(*mutableTable(pane), r, values);
}

std::int64_t LabelTables::insertByStart(const LabelRow& values) {
    const mvdb::DynamicRecord& t = *m_aide;
    const std::int64_t n = t.DCount();
    const std::string debut = base::numberText(values.HeureDebut);
    // An empty table, or a last row that starts no later, takes the row at the end. Otherwise the row
    // goes before the first one that starts strictly later.
    std::int64_t r = n + 1;
    if (n > 0 && base::compareValues(t.view(n, col::HeureDebut), debut) > 0) {
        r = 1;
        while (base::compareValues(t.view(r, col::HeureDebut), debut) <= 0)
            ++r;
    }
    insertAt(Pane::Aide, r, values);
    return r;
}

std::int64_t LabelTables::insertByPosition(const LabelRow& values) {
    const std::int64_t r = rowForTopEtq(*m_detail, values.TopEtq);
    insertAt(Pane::Detail, r, values);
    return r;
}

void LabelTables::remove(Pane pane, std::int64_t r) {
    mutableTable(pane)->Delete(r);
}

void LabelTables::setNumEtq(Pane pane, std::int64_t r, int numEtq) {
    mutableTable(pane)->set(r, col::NumEtq, base::numberText(numEtq));
}

void LabelTables::setTopEtq(Pane pane, std::int64_t r, double topEtq) {
    mutableTable(pane)->set(r, col::TopEtq, base::numberText(topEtq));
}

void LabelTables::setTypeEtq(Pane pane, std::int64_t r, const TypeEtq& type) {
    mutableTable(pane)->set(r, col::TypeEtq, type.text());
}

std::string LabelTables::takePlannedStart(std::int64_t r) {
    const TypeEtq prevu = typeEtq(Pane::Detail, r);
    setTypeEtq(Pane::Detail, r, prevu.sansDebutPrevu());
    return prevu.debutPrevu();
}

std::int64_t LabelTables::moveInDetail(int numEtq, int topEtq) {
    const std::int64_t r = findByLabel(Pane::Detail, numEtq);
    LabelRow values = row(Pane::Detail, r);
    remove(Pane::Detail, r);
    values.NumEtq = numEtq;
    values.TopEtq = topEtq;
    return insertByPosition(values);
}

std::int64_t LabelTables::sendBack(int numEtq, const TypeEtq& type) {
    const std::int64_t detailRow = findByLabel(Pane::Detail, numEtq);
    LabelRow values = row(Pane::Detail, detailRow);
    values.NumEtq = numEtq;
    values.TypeEtq = type.text();
    const std::int64_t r = insertByStart(values);
    remove(Pane::Detail, detailRow);
    return r;
}

void LabelTables::join(std::int64_t aideRow) {
    setTypeEtq(Pane::Aide, aideRow, typeEtq(Pane::Aide, aideRow).avecFigure('2'));
}

std::int64_t LabelTables::split(std::int64_t aideRow, int numEtqMoitie) {
    setTypeEtq(Pane::Aide, aideRow, typeEtq(Pane::Aide, aideRow).avecFigure('1'));
    LabelRow moitie = row(Pane::Aide, aideRow);
    moitie.NumEtq = numEtqMoitie;
    insertAt(Pane::Aide, aideRow, moitie);
    return aideRow;
}

void LabelTables::closeLine(std::int64_t aideRow, int hauteurEtq) {
    if (typeEtq(Pane::Aide, aideRow).figure() != '2') remove(Pane::Aide, aideRow);
    for (std::int64_t i = aideRow; i <= m_aide->DCount(); ++i)
        setTopEtq(Pane::Aide, i, base::toNumber(m_aide(i, col::TopEtq)) - hauteurEtq);
}

int LabelTables::scrollMax() const {
    const std::int64_t n = m_aide->DCount();
    return n > kLignesAideVisibles ? static_cast<int>(n) : 0;
}

const std::string& LabelTables::alternatingColour(std::int64_t r, const std::string& premiere,
                                                  const std::string& seconde) {
    return r % 2 == 1 ? premiere : seconde;
}

LabelTables::Snapshot LabelTables::snapshot() const {
    Snapshot s;
    s.aideExists = m_aide.exists();
    if (s.aideExists) s.aide = m_aide->text();
    s.detailExists = m_detail.exists();
    if (s.detailExists) s.detail = m_detail->text();
    return s;
}

void LabelTables::restore(const Snapshot& s) {
    for (auto [table, exists, text] :
         {std::tuple{&m_aide, s.aideExists, &s.aide}, std::tuple{&m_detail, s.detailExists, &s.detail}}) {
        if (!exists) {
            table->release();
            continue;
        }
        table->renew();
        (*table)->setText(*text);
    }
}

}  // namespace model
