#include "model/labels.h"

#include <limits>
#include <optional>

#include "base/error.h"
#include "base/text.h"
#include "model/clock.h"
#include "model/scales.h"

namespace model {

namespace {

constexpr const char* kCrlf = "\r\n";

double perHour(const ScaleRef& scale) {
    return 4.0 * scale.pasQuartHeure;
}

// A text read as a whole number of the 32-bit range, halves to even; nullopt when it is none.
std::optional<std::int32_t> wholeNumber(std::string_view text) {
    const std::optional<double> value = base::parseNumber(text);
    if (!value) return std::nullopt;
    const std::int64_t rounded = base::roundHalfEven(*value);
    if (rounded < std::numeric_limits<std::int32_t>::min() ||
        rounded > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(rounded);
}

std::string tail(const std::string& suffixe) {
    return base::Right(suffixe, 3);
}

// The figure after the kind of a two-person intervention, or nothing.
char placesFigure(std::string_view typeEtq) {
    const std::string last = base::Right(typeEtq, 1);
    return last == "1" || last == "2" ? last[0] : '\0';
}

}  // namespace

void insertLabelRow(mvdb::DynamicRecord& table, std::int64_t row, const LabelRow& values) {
    table.Insert(row, base::numberText(values.NumEtq));
    table.set(row, col::HeureDebut, base::numberText(values.HeureDebut));
    table.set(row, col::HeureFin, base::numberText(values.HeureFin));
    table.set(row, col::DureeMn, base::numberText(values.DureeMn));
    table.set(row, col::TopEtq, base::numberText(values.TopEtq));
    table.set(row, col::CleProtocole, values.CleProtocole);
    table.set(row, col::TypeEtq, values.TypeEtq);
}

std::int64_t rowForTopEtq(const mvdb::DynamicRecord& table, int topEtq) {
    if (table.text().empty()) return 1;
    const std::string newTop = base::numberText(topEtq);
    const std::int64_t n = table.DCount();
    if (base::compareValues(table(n, col::TopEtq), newTop) < 0) return n + 1;
    // Row n is not lower, so the search ends at n at the latest.
    for (std::int64_t i = 1; i < n; ++i) {
        if (base::compareValues(table(i, col::TopEtq), newTop) >= 0) return i;
    }
    return n;
}

std::string makeTag(std::string_view cleProtocole, std::string_view dureeMn) {
    std::string tag(cleProtocole);
    tag += '|';
    tag += dureeMn;
    return tag;
}

int dureeMnFromTag(std::string_view tag) {
    // Right(Tag, Len(Tag) - InStr(Tag, "|")): everything after the first "|", the whole Tag without one.
    const std::size_t bar = tag.find('|');
    const std::int64_t position = bar == std::string_view::npos ? 0 : base::Len(tag.substr(0, bar)) + 1;
    const std::string duree = base::Right(tag, static_cast<std::int64_t>(base::Len(tag)) - position);
    const std::optional<std::int32_t> minutes = wholeNumber(duree);
    if (!minutes)
        throw base::Error(base::codes::kBadData,
                          "Durée illisible dans l'étiquette « " + std::string(tag) + " »");
    return *minutes;
}

std::string codeAideOf(std::string_view cleOrTag) {
    return base::Left(cleOrTag, 5);
}

std::string suffixeAide(std::string_view typeEtq) {
    switch (placesFigure(typeEtq)) {
        case '2':
            return "- 0/2";
        case '1':
            return "- 1/2";
        default:
            return "";
    }
}

std::string suffixeDetail(std::string_view typeEtq, int nbIntervenantsTournee) {
    if (placesFigure(typeEtq) == '\0') return "";
    return nbIntervenantsTournee == 2 ? "- 2/2" : "- 1/2";
}

std::string texteHeure(double centiemes) {
    const std::string hours = base::Left(base::zeroPad(base::roundHalfEven(centiemes), 4), 2);
    const double clock = CentiemesVersHeure(centiemes / 100);
    const std::string minutes = base::Right(base::zeroPad(base::roundHalfEven(100 * clock), 4), 2);
    return hours + "h" + minutes;
}

std::string finDetail(double linkItem, double dureeMn) {
    // Cut to four characters on purpose: a start that ends off the hundredths keeps its comma ("883,"),
    // and the anomaly test compares that text read as a number.
    return base::Left(base::numberText(linkItem + dureeMn * 10 / 6), 4);
}

std::string captionAide(const LabelFacts& f) {
    return f.nom + kCrlf + f.prenom + kCrlf + f.dureeMn + "mn" + kCrlf + tail(f.suffixe);
}

std::string toolTipAide(const LabelFacts& f) {
    return f.codeAide + " - " + f.nom + " " + f.prenom + " - " + f.debut + " à " + f.fin + " - " + f.dureeMn +
           "mn" + " " + f.suffixe;
}

std::string captionDetail(const LabelFacts& f) {
    return f.nom + " " + f.prenom + " " + f.dureeMn + "mn" + " " + tail(f.suffixe);
}

std::string toolTipDetail(const LabelFacts& f) {
    return f.codeAide + " - " + f.nom + " " + f.prenom + " - " + f.debut + " à " + f.fin + " = " + f.dureeMn +
           "mn" + " " + f.suffixe;
}

const std::string& couleurParType(std::string_view typeEtq, const std::string& couleurInfirmier,
                                  const std::string& couleurSoignant, const std::string& couleurMixte) {
    const std::string kind = base::Left(typeEtq, 1);
    if (kind == "I") return couleurInfirmier;
    if (kind == "A") return couleurSoignant;
    return couleurMixte;
}

toolkit::Colour colourNumber(std::string_view decimal) {
    const std::optional<std::int32_t> colour = wholeNumber(decimal);
    if (!colour)
        throw base::Error(base::codes::kBadData, "Couleur incorrecte : « " + std::string(decimal) + " »");
    return *colour;
}

LabelFont fontDetail(double heuresAffichees, double dureeMn) {
    const bool tooShort = (heuresAffichees > 6.0 && dureeMn < 20) || (heuresAffichees == 6.0 && dureeMn < 15);
    return tooShort ? LabelFont{6, true} : LabelFont{8, false};
}

Geometry geometryAide(double heureDebut, double heureFin, std::int64_t row, int hauteurEtq,
                      const ScaleRef& scale) {
    Geometry g;
    g.left = kGaucheEchelleAide + (heureDebut / 100 - scale.start) * perHour(scale);
    g.top = static_cast<double>(hauteurEtq) * static_cast<double>(row) + kHautLignesAide;
    g.width = (heureFin - heureDebut) / 100 * perHour(scale);
    g.height = hauteurEtq;
    return g;
}

Geometry clipAide(Geometry g) {
    if (g.left + g.width > kDroiteEchelleAide) g.width -= g.left + g.width - kDroiteEchelleAide;
    if (g.left <= kGaucheEchelleAide) {
        g.width -= kGaucheEchelleAide - g.left;
        g.left = kGaucheEchelleAide;
    }
    return g;
}

Geometry geometryDetail(double linkItem, double dureeMn, const ScaleRef& scale) {
    Geometry g;
    g.left = kLeftDetail;
    g.top = (linkItem / 100 - scale.start) * perHour(scale) + kOrigineDetail;
    g.width = kLargeurDetail;
    g.height = dureeMn * perHour(scale) / 60;
    return g;
}

Pane paneAt(double left, double top) {
    const Zone& z = kZonePanneauAide;
    const bool inAide = top > z.haut && top < z.bas && left >= z.gauche && left < z.droite;
    return inAide ? Pane::Aide : Pane::Detail;
}

void applyLook(toolkit::Label& label, const LabelLook& look) {
    label.setGeometry(look.geometry.left, look.geometry.top, look.geometry.width, look.geometry.height);
    label.setTag(look.tag);
    label.setFontSize(look.font.size);
    label.setFontBold(look.font.bold);
    label.setCaption(look.caption);
    label.setToolTipText(look.toolTip);
    label.setBackColor(look.backColor);
}

LabelLook lookAide(const mvdb::DynamicRecord& table, std::int64_t row, const std::string& nom,
                   const std::string& prenom, const ScaleRef& scale, int hauteurEtq,
                   const KindColours& colours) {
    const std::string cle = table(row, col::CleProtocole);
    const std::string duree = table(row, col::DureeMn);
    const std::string type = table(row, col::TypeEtq);
    const double debut = base::toNumber(table(row, col::HeureDebut));
    const double fin = base::toNumber(table(row, col::HeureFin));
    const LabelFacts facts{codeAideOf(cle),  nom, prenom, duree, texteHeure(debut), texteHeure(fin),
                           suffixeAide(type)};
    LabelLook look;
    look.geometry = clipAide(geometryAide(debut, fin, row, hauteurEtq, scale));
    look.tag = makeTag(cle, duree);
    look.caption = captionAide(facts);
    look.toolTip = toolTipAide(facts);
    look.backColor = colourNumber(couleurParType(type, colours.infirmier, colours.soignant, colours.mixte));
    return look;
}

LabelLook lookDetail(const mvdb::DynamicRecord& table, std::int64_t row, const std::string& linkItem,
                     const std::string& nom, const std::string& prenom, const DetailContext& context,
                     const KindColours& colours) {
    const std::string cle = table(row, col::CleProtocole);
    const std::string duree = table(row, col::DureeMn);
    const std::string type = table(row, col::TypeEtq);
    const double start = base::toNumber(linkItem);
    const double minutes = base::toNumber(duree);
    const std::string end = finDetail(start, minutes);
    const LabelFacts facts{codeAideOf(cle),
                           nom,
                           prenom,
                           duree,
                           texteHeure(start),
                           texteHeure(base::toNumber(end)),
                           suffixeDetail(type, context.nbIntervenantsTournee)};
    LabelLook look;
    look.geometry = geometryDetail(start, minutes, context.scale);
    look.tag = makeTag(cle, duree);
    look.caption = captionDetail(facts);
    look.toolTip = toolTipDetail(facts);
    look.backColor = colourNumber(couleurParType(type, colours.infirmier, colours.soignant, colours.mixte));
    look.font = fontDetail(context.heuresAffichees, minutes);
    return look;
}

}  // namespace model
