#pragma once

#include <string>
#include <vector>

#include "toolkit/control_array.h"
#include "toolkit/controls.h"

// The two time scales of the screen: the horizontal one above the pane of aidés to place and the
// vertical one beside the detail pane. Both span the same hours in quarter-hour steps, and both are
// 5600 twips long whatever the span.
namespace model {

inline constexpr int kLongueurEchelle = 5600;
// A label for the scale's start stands at this Top in the detail pane; dragging turns Top back into
// a time from the same origin.
inline constexpr int kOrigineDetail = 760;

// Length of a tick, by what the clock reads at it. Aucune is a time off the quarters (a start of
// 6.10): the tick keeps the length of the array's model.
enum class Graduation { Heure, Demie, Quart, Aucune };

// One caption of a scale: the position k (from 1) in the walk of quarters, and the hour's text.
struct HourCaption {
    int k;
    std::string text;
};

// What a rebuild draws: the step, the whole-hour captions, and one tick per quarter walked.
struct ScaleLayout {
    int pas = 0;
    std::vector<HourCaption> captions;
    std::vector<Graduation> ticks;  // tick k is ticks[k - 1]
};

// Twips per quarter of an hour between two H.MM times: 5600 over the number of quarters, halves to
// even. A span of less than one quarter (equal hours, an end before the start) is a base::Error
// naming both hours: only a tournée record with wrong hours can cause it.
int pasQuartHeure(double heureDebut, double heureFin);

// Hours shown by the scale, in hundredths of an hour (the font of short detail labels depends on it).
double heuresAffichees(double heureDebut, double heureFin);

// The walk of a scale from heureDebut to heureFin (H.MM). Fails as pasQuartHeure does, and with a
// base::Error when the walk would need more elements than a control array can index.
ScaleLayout layoutScale(double heureDebut, double heureFin);

// Rebuild of the horizontal scale, in Label1: unloads every loaded caption and tick, then loads and
// shows those of layoutScale. Returns the step. On failure nothing has been touched.
int loadHorizontalScale(toolkit::ControlArray<toolkit::Label>& captions,
                        toolkit::ControlArray<toolkit::Line>& ticks, double heureDebut, double heureFin);

// The same on the vertical scale of the detail pane, captions reading "8h00".
int loadDetailScale(toolkit::ControlArray<toolkit::Label>& captions,
                    toolkit::ControlArray<toolkit::Line>& ticks, double heureDebut, double heureFin);

// Rows of the pane of aidés shown for a position of VScroll: seven rows, first to last (which may lie
// outside the table), the first at firstTop. When the bar moves up at the very bottom the value must be
// set back to max - 6 (resetValue), and the bar's Change then runs again.
struct AidePage {
    int first = 0;
    int last = 0;
    int firstTop = 0;
    bool resetValue = false;
};
AidePage pageAide(int value, int max, int derniereValeurScroll);

// Where row i stands in that page: false when it is out of view, parked at Top 240 and hidden.
bool rowShown(const AidePage& page, int i);
double rowTop(const AidePage& page, int i);
inline constexpr double kTopHorsVue = 240;

}  // namespace model
