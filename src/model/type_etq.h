#pragma once

#include <string>
#include <string_view>

// The column TypeEtq of a label row: the kind of the intervention, the figure of an act for two people,
// and, while a detail row is being built, its planned start.
namespace model {

// Held as its text, which the tables and `dump` show byte for byte ("I", "A|2", "M|1|0850"). The pieces
// are read from the text as the screen always read them, by position: the kind is the first character,
// the figure the last character of a text longer than one, the planned start the last four characters.
// In pane "AIDE" the figure counts the free places of an act for two, in pane "DETAIL" the intervenants
// placed.
class TypeEtq {
public:
    TypeEtq() = default;
    explicit TypeEtq(std::string text) : m_text(std::move(text)) {}

    // An act for one: the kind alone.
    static TypeEtq pourUn(std::string_view kind) { return TypeEtq(std::string(kind)); }
    // An act for two: the kind, "|" and the figure.
    static TypeEtq pourDeux(std::string_view kind, char figure);
    // A detail row as the pane builder makes it: the kind, the places ("|", "|1|" or "|2|") and the
    // planned start, four digits of hundredths.
    static TypeEtq prevu(std::string_view kind, std::string_view places, std::string_view debutPrevu);

    const std::string& text() const { return m_text; }
    // The first character: "I", "A", "M"; empty for a kind that was never read.
    std::string kind() const;
    // The figure of an act for two; '\0' for an act for one.
    char figure() const;
    bool pourDeuxPersonnes() const { return figure() != '\0'; }

    // The same act with another figure: the first two characters kept, then the figure. On an act for one
    // this gives the kind and the figure without a bar ("I2"), which reads as an act for two: kept on
    // purpose, as a return to the waiting list from a tournée of two makes it.
    TypeEtq avecFigure(char figure) const;
    // The same text with its last character replaced by the figure: how the display marks a waiting act
    // for two whose first place a detail row of the shown tournée takes.
    TypeEtq avecDerniereFigure(char figure) const;
    // The text with "|1" behind: how the return marks an act whose other half waits in pane "AIDE", before
    // it reads the figure.
    TypeEtq avecMoitieEnAttente() const { return TypeEtq(m_text + "|1"); }

    // A detail row being built carries its planned start as the last four characters after a "|": the
    // start, and the type without those five characters.
    std::string debutPrevu() const;
    TypeEtq sansDebutPrevu() const;

    friend bool operator==(const TypeEtq&, const TypeEtq&) = default;

private:
    std::string m_text;
};

}  // namespace model
