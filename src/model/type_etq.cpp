#include "model/type_etq.h"

#include <cstdint>

#include "base/text.h"

namespace model {

TypeEtq TypeEtq::pourDeux(std::string_view kind, char figure) {
    std::string text(kind);
    text += '|';
    text += figure;
    return TypeEtq(std::move(text));
}

TypeEtq TypeEtq::prevu(std::string_view kind, std::string_view places, std::string_view debutPrevu) {
    std::string text(kind);
    text += places;
    text += debutPrevu;
    return TypeEtq(std::move(text));
}

std::string TypeEtq::kind() const {
    return base::Left(m_text, 1);
}

char TypeEtq::figure() const {
    if (base::Len(m_text) <= 1) return '\0';
    const std::string last = base::Right(m_text, 1);
    // A last character of several bytes is no figure the screen writes; its first byte stands for it.
    return last.empty() ? '\0' : last[0];
}

TypeEtq TypeEtq::avecFigure(char figure) const {
    return TypeEtq(base::Left(m_text, 2) + figure);
}

TypeEtq TypeEtq::avecDerniereFigure(char figure) const {
    return TypeEtq(base::Left(m_text, static_cast<std::int64_t>(base::Len(m_text)) - 1) + figure);
}

std::string TypeEtq::debutPrevu() const {
    return base::Right(m_text, 4);
}

TypeEtq TypeEtq::sansDebutPrevu() const {
    return TypeEtq(base::Left(m_text, static_cast<std::int64_t>(base::Len(m_text)) - 5));
}

}  // namespace model
