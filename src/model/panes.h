#pragma once

#include <string_view>

// The two panes of the planning screen and the zones of the control, in twips, that the display, the
// drag, the drop and the push test a label against. They live here once: several of them are close but
// not equal, and each difference is a rule of its own.
namespace model {

// The pane a label comes from. None until a label is taken.
enum class Pane { None, Aide, Detail };

// The text the drag code keeps for a pane: "AIDE", "DETAIL", or the empty string before any drag.
constexpr std::string_view paneText(Pane pane) {
    switch (pane) {
        case Pane::Aide:
            return "AIDE";
        case Pane::Detail:
            return "DETAIL";
        case Pane::None:
            break;
    }
    return "";
}

// A rectangle of the control by its four edges. Which edges count as inside is each rule's own.
struct Zone {
    double gauche;
    double droite;
    double haut;
    double bas;
};

// The scale of pane "AIDE": waiting labels are clipped to its two ends.
inline constexpr double kGaucheEchelleAide = 5290;
inline constexpr double kDroiteEchelleAide = 10900;
// Top of line 0 of pane "AIDE" when the display lays it out; a label that comes back from the tournée
// is laid out five twips lower, on purpose.
inline constexpr double kHautLignesAide = 320;
inline constexpr double kHautLignesAideRetour = 325;
// Lines of pane "AIDE" shown at once; more need the scroll bar.
inline constexpr int kLignesAideVisibles = 7;

// Every label of pane "DETAIL" stands at this Left, with this width.
inline constexpr double kLeftDetail = 760;
inline constexpr double kLargeurDetail = 4230;

// Where the drag code says a label lies in pane "AIDE": top and bottom strict, left loose, right strict.
inline constexpr Zone kZonePanneauAide{5290, 11000, 1080, 6360};
// Where a dragged label's left and top must stand for its time to be shown, edges included. Wider than
// the zone where a drop lands: the time may show for a place the drop then refuses.
inline constexpr Zone kZoneHoraire{200, 4500, 750, 6340};
// Where a label of pane "DETAIL" dropped goes back to pane "AIDE", edges included.
inline constexpr Zone kZoneRetourAide{5295, 11000, 1110, 5910};
// Where a dropped label lands in pane "DETAIL", edges included; the bottom counts the label's height.
inline constexpr Zone kZonePoseDetail{200, 4230, 750, 6355};
// The bottom of pane "DETAIL" for the push: a label pushed to it or beyond goes back to pane "AIDE".
// Deliberately five twips above the bottom of the drop's zone.
inline constexpr double kBasDecalage = 6350;

}  // namespace model
