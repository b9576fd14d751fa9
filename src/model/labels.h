#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "model/panes.h"
#include "mvdb/dynamic_record.h"
#include "toolkit/controls.h"

// The label (étiquette): one intervention, held as a row of TabTempoAide or TabTempoDetail and shown
// by one item of Etq_Aide. What a label reads and where it stands follow from its row, the scale and
// the aidé's name; the routines here compute it, and the control applies it.
namespace model {

// The seven columns of both label tables.
namespace col {
inline constexpr int NumEtq = 1;        // index of the label's item in Etq_Aide, once it exists
inline constexpr int HeureDebut = 2;    // earliest start allowed, hundredths of an hour
inline constexpr int HeureFin = 3;      // latest end allowed, hundredths of an hour
inline constexpr int DureeMn = 4;       // duration in minutes
inline constexpr int TopEtq = 5;        // Top of the label; sort key of TabTempoDetail
inline constexpr int CleProtocole = 6;  // 21 characters, the CodeAide first
inline constexpr int TypeEtq = 7;       // kind "I", "A" or "M", then "|1" or "|2" for two people
}  // namespace col

// One row of a label table, as its routines take it.
struct LabelRow {
    int NumEtq = 0;
    int HeureDebut = 0;
    int HeureFin = 0;
    int DureeMn = 0;
    int TopEtq = 0;
    std::string CleProtocole;
    std::string TypeEtq;
};

// Opens row `row` of the table with NumEtq (moving later rows down), then writes columns 2 to 7 in
// turn. The order of the table is the caller's business.
void insertLabelRow(mvdb::DynamicRecord& table, std::int64_t row, const LabelRow& values);

// Where TriCouleurEtq puts a new row so that TopEtq keeps rising: row 1 of an empty table, after the
// last row when that one is lower, otherwise before the first row that is not lower, so that a new row
// goes before one of equal TopEtq.
std::int64_t rowForTopEtq(const mvdb::DynamicRecord& table, int topEtq);

// Tag of a label: CleProtocole + "|" + DureeMn, written once when the label is made.
std::string makeTag(std::string_view cleProtocole, std::string_view dureeMn);
// The duration in minutes that a Tag carries after its first "|". A Tag without a readable number is a
// base::Error naming it.
int dureeMnFromTag(std::string_view tag);
// The CodeAide that a Tag (or a CleProtocole) begins with.
std::string codeAideOf(std::string_view cleOrTag);

// Suffix of a two-person intervention. In pane "AIDE" the last figure of TypeEtq counts free places:
// "2" reads "- 0/2", "1" reads "- 1/2". In pane "DETAIL" it reads "- 2/2" when the tournée shown has
// two intervenants, else "- 1/2". A one-person intervention has none.
std::string suffixeAide(std::string_view typeEtq);
std::string suffixeDetail(std::string_view typeEtq, int nbIntervenantsTournee);

// A time in hundredths of an hour as HHhMM. The hour is the first two digits of the value padded to
// four, the minutes those of the value rounded to five minutes: the two halves do not share a rounding,
// so 899 reads "08h00".
std::string texteHeure(double centiemes);
// End of a detail label: the first four characters of the number LinkItem + DureeMn * 10 / 6
// (883.5 gives "883,"). The anomaly test reads the same text as a number.
std::string finDetail(double linkItem, double dureeMn);

// What a label's texts are made of. dureeMn is the row's text; debut and fin are HHhMM.
struct LabelFacts {
    std::string codeAide;
    std::string nom;
    std::string prenom;
    std::string dureeMn;
    std::string debut;
    std::string fin;
    std::string suffixe;
};
std::string captionAide(const LabelFacts& facts);
std::string toolTipAide(const LabelFacts& facts);
std::string captionDetail(const LabelFacts& facts);
std::string toolTipDetail(const LabelFacts& facts);

// The colour string of a kind: "I" infirmier, "A" soignant, anything else mixte.
const std::string& couleurParType(std::string_view typeEtq, const std::string& couleurInfirmier,
                                  const std::string& couleurSoignant, const std::string& couleurMixte);
// A colour kept as a decimal string, as a colour number. A text that is no colour is a base::Error.
toolkit::Colour colourNumber(std::string_view decimal);

struct LabelFont {
    double size = 8;
    bool bold = false;
};
// Font of a detail label: 6 and bold when its interval is too short for 8 on the scale shown (more than
// 6 hours shown and under 20 minutes, or exactly 6 hours and under 15 minutes).
LabelFont fontDetail(double heuresAffichees, double dureeMn);

struct Geometry {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};

// Where the scale starts and how long a quarter is; start in hundredths of an hour.
struct ScaleRef {
    double start = 0;
    int pasQuartHeure = 0;
};

// Label of pane "AIDE" for a protocole's window (hundredths) on line `row`, before clipping.
Geometry geometryAide(double heureDebut, double heureFin, std::int64_t row, int hauteurEtq,
                      const ScaleRef& scale);
// Clips a label of pane "AIDE" to the scale: the right edge to 10900 first, then the left to 5290.
// A window wholly off the scale keeps a width of zero or less.
Geometry clipAide(Geometry geometry);
// Label of pane "DETAIL" at its planned start (hundredths); its height is its duration. Not clipped.
Geometry geometryDetail(double linkItem, double dureeMn, const ScaleRef& scale);

// The pane a label lies in, told from where it stands: Aide or Detail, never None.
Pane paneAt(double left, double top);

// Everything a label shows.
struct LabelLook {
    Geometry geometry;
    std::string tag;
    std::string caption;
    std::string toolTip;
    toolkit::Colour backColor = 0;
    LabelFont font;
};
void applyLook(toolkit::Label& label, const LabelLook& look);

// The three kind colours, as the control keeps them.
struct KindColours {
    std::string infirmier;
    std::string soignant;
    std::string mixte;
};

// The look of the label of row `row` of TabTempoAide: its window on the scale, clipped, on the row's
// line; the aidé's name as given (whatever the record buffer last held).
LabelLook lookAide(const mvdb::DynamicRecord& table, std::int64_t row, const std::string& nom,
                   const std::string& prenom, const ScaleRef& scale, int hauteurEtq,
                   const KindColours& colours);

// What a detail label needs of the screen beyond the scale.
struct DetailContext {
    ScaleRef scale;
    double heuresAffichees = 0;
    int nbIntervenantsTournee = 0;
};

// The look of the label of row `row` of TabTempoDetail, once its planned start is cut off into
// linkItem (LabelTables::takePlannedStart).
LabelLook lookDetail(const mvdb::DynamicRecord& table, std::int64_t row, const std::string& linkItem,
                     const std::string& nom, const std::string& prenom, const DetailContext& context,
                     const KindColours& colours);

}  // namespace model
