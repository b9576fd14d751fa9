#include "model/scales.h"

#include "base/error.h"
#include "base/text.h"
#include "model/clock.h"

namespace model {

namespace {

// A control array is indexed by a 16-bit integer: a walk longer than this cannot be drawn.
constexpr int kMaxElements = 32767;

constexpr double kHorizontalCaptionTop = 240;
constexpr double kHorizontalTickBottom = 600;
constexpr double kDetailCaptionLeft = 120;
constexpr double kDetailCaptionFirstTop = 600;
constexpr double kDetailTickX1 = 720;
constexpr double kDetailTickFirstY = 740;
constexpr int kPasLigneAide = 800;

enum class EndTest { Strict, Inclusive };

[[noreturn]] void throwBadHours(double heureDebut, double heureFin) {
    throw base::Error(base::codes::kBadData, "Heures de tournée incorrectes : début " +
                                                 base::numberText(heureDebut) + " et fin " +
                                                 base::numberText(heureFin));
}

bool isWholeHour(const std::string& text) {
    const std::size_t length = base::Len(text);
    return length == 1 || length == 2;
}

Graduation graduationOf(const std::string& text) {
    if (isWholeHour(text)) return Graduation::Heure;
    const std::string lastTwo = base::Right(text, 2);
    if (lastTwo == "15" || lastTwo == "45") return Graduation::Quart;
    if (base::Right(text, 1) == "3") return Graduation::Demie;
    return Graduation::Aucune;
}

// The texts of the H.MM values walked from the start, quarter by quarter. The walk adds plain doubles
// and reads the text of the sum, whose 15 significant digits hide the noise of the additions
// (6.30000000000001 reads "6,3"); minutes are not carried, so a start off the quarters runs past 60.
std::vector<std::string> walkQuarters(double heureDebut, double heureFin, EndTest endTest) {
    std::vector<std::string> texts;
    const double limit = heureFin + 0.15;
    double cur = heureDebut;
    for (;;) {
        if (texts.size() == static_cast<std::size_t>(kMaxElements)) throwBadHours(heureDebut, heureFin);
        texts.push_back(base::numberText(cur));
        cur += base::Right(texts.back(), 2) == "45" ? 0.55 : 0.15;
        const bool goOn = endTest == EndTest::Strict ? limit > cur : limit >= cur;
        if (!goOn) break;
    }
    return texts;
}

double tickY1(Graduation graduation, double modelY1) {
    switch (graduation) {
        case Graduation::Heure:
            return 490;
        case Graduation::Demie:
            return 540;
        case Graduation::Quart:
            return 570;
        case Graduation::Aucune:
            break;
    }
    return modelY1;
}

double tickX2(Graduation graduation, double modelX2) {
    switch (graduation) {
        case Graduation::Heure:
            return 600;
        case Graduation::Demie:
            return 630;
        case Graduation::Quart:
            return 660;
        case Graduation::Aucune:
            break;
    }
    return modelX2;
}

void unloadScale(toolkit::ControlArray<toolkit::Label>& captions,
                 toolkit::ControlArray<toolkit::Line>& ticks) {
    captions.unloadAll();
    ticks.unloadAll();
}

}  // namespace

int pasQuartHeure(double heureDebut, double heureFin) {
    const double quarts = base::Int(0.5 + heuresAffichees(heureDebut, heureFin) * 4);
    // Written so that a NaN from absurd hours is refused too.
    if (!(quarts >= 1)) throwBadHours(heureDebut, heureFin);
    return static_cast<int>(base::roundHalfEven(kLongueurEchelle / quarts));
}

double heuresAffichees(double heureDebut, double heureFin) {
    return HeureVersCentiemes(heureFin) - HeureVersCentiemes(heureDebut);
}

ScaleLayout layoutScale(double heureDebut, double heureFin) {
    ScaleLayout layout;
    layout.pas = pasQuartHeure(heureDebut, heureFin);
    // The captions stop on a strict test and the ticks on a loose one. Deliberate: with the noise of
    // the additions, the evening scale (14.00 to 22.00) gets one tick more than its captions, at 22.15,
    // and the screen is expected to show it.
    const std::vector<std::string> captionWalk = walkQuarters(heureDebut, heureFin, EndTest::Strict);
    for (std::size_t i = 0; i < captionWalk.size(); ++i) {
        if (isWholeHour(captionWalk[i])) layout.captions.push_back({static_cast<int>(i) + 1, captionWalk[i]});
    }
    for (const std::string& text : walkQuarters(heureDebut, heureFin, EndTest::Inclusive))
        layout.ticks.push_back(graduationOf(text));
    return layout;
}

int loadHorizontalScale(toolkit::ControlArray<toolkit::Label>& captions,
                        toolkit::ControlArray<toolkit::Line>& ticks, double heureDebut, double heureFin) {
    const ScaleLayout layout = layoutScale(heureDebut, heureFin);
    const double pas = layout.pas;
    unloadScale(captions, ticks);
    int n = 0;
    for (const HourCaption& caption : layout.captions) {
        toolkit::Label& label = captions.Load(++n);
        label.setCaption(caption.text);
        label.setTop(kHorizontalCaptionTop);
        label.setLeft(pas * caption.k - pas);
        label.setVisible(true);
    }
    for (int k = 1; k <= static_cast<int>(layout.ticks.size()); ++k) {
        toolkit::Line& line = ticks.Load(k);
        const double x = pas * k - pas;
        line.setEnds(x, tickY1(layout.ticks[k - 1], line.y1()), x, kHorizontalTickBottom);
        line.setVisible(true);
    }
    return layout.pas;
}

int loadDetailScale(toolkit::ControlArray<toolkit::Label>& captions,
                    toolkit::ControlArray<toolkit::Line>& ticks, double heureDebut, double heureFin) {
    const ScaleLayout layout = layoutScale(heureDebut, heureFin);
    const double pas = layout.pas;
    unloadScale(captions, ticks);
    int n = 0;
    for (const HourCaption& caption : layout.captions) {
        toolkit::Label& label = captions.Load(++n);
        label.setCaption(caption.text + "h00");
        label.setLeft(kDetailCaptionLeft);
        label.setTop(pas * caption.k + kDetailCaptionFirstTop - pas);
        label.setVisible(true);
    }
    for (int k = 1; k <= static_cast<int>(layout.ticks.size()); ++k) {
        toolkit::Line& line = ticks.Load(k);
        const double y = pas * k + kDetailTickFirstY - pas;
        line.setEnds(kDetailTickX1, y, tickX2(layout.ticks[k - 1], line.x2()), y);
        line.setVisible(true);
    }
    return layout.pas;
}

AidePage pageAide(int value, int max, int derniereValeurScroll) {
    if (value <= max - 6) return {value, value + 6, 1120, false};
    // At the bottom the rows sit 350 twips higher, unless the bar is moving up: then the value goes
    // back to max - 6 and the rows to their usual place.
    const bool movingUp = derniereValeurScroll > value;
    return {max - 6, max, movingUp ? 1120 : 770, movingUp};
}

bool rowShown(const AidePage& page, int i) {
    return i >= page.first && i <= page.last;
}

double rowTop(const AidePage& page, int i) {
    return static_cast<double>(i - page.first) * kPasLigneAide + page.firstTop;
}

}  // namespace model
