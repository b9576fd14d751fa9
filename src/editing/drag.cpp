#include <array>
#include <string_view>

#include "base/text.h"
#include "editing/edition.h"
#include "model/clock.h"
#include "model/labels.h"
#include "model/panes.h"
#include "model/scales.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

// The drag of a label: what a press remembers, the time shown under the pointer while the label moves,
// and the events that hand the drop to DeposerEtiquette. Nothing here tells the user anything: the
// refusals belong to the drop.
namespace control {

namespace {

constexpr int kBoutonDroit = 2;
// The four-way "move" pointer, which a label takes as soon as the mouse moves over it.
constexpr int kPointeurDeplacement = 5;
// RGB(255, 0, 0), red in the low byte.
constexpr toolkit::Colour kRouge = 0x0000FF;

// The time stands this much above the label's top edge, beside the scale.
constexpr double kHoraireAuDessus = 105;

}  // namespace

void Edition::Etq_Aide_MouseMove(int Index, int, int, float, float) {
    Ctr_Zandorel& c = m_c;
    c.Etq_Aide(Index).setMousePointer(kPointeurDeplacement);
}

void Edition::Etq_Aide_MouseDown(int Index, int Button, int, float X, float Y) {
    Ctr_Zandorel& c = m_c;
    c.historique.debutGeste();
    // 1. The label pressed last, whatever the button: the menu's entries work on it.
    c.IndiceEtqCourante = Index;
    toolkit::Label& etiquette = c.Etq_Aide(Index);

    // 2. The right button opens the label's menu and nothing else; an assignment from the menu makes
    // sense only while no tournée is chosen.
    if (Button == kBoutonDroit) {
        c.Mnu_AffectationTournee.setEnabled(c.Txt_CodeTournee.text().empty());
        c.host().PopupMenu(c.Mnu_MenuEtq);
        return;
    }

    // 3. A label the mouse has not moved over cannot be taken.
    if (etiquette.mousePointer() != kPointeurDeplacement) return;

    // 4. The drag begins at once: the threshold against a mere click lies at the drop.
    etiquette.Drag();

    // 5.
    c.PanneauSource = model::paneAt(etiquette.left(), etiquette.top());

    // 6. As the toolkit converts a float to an integer: halves to the even neighbour.
    DecalageSourisX = static_cast<int>(base::roundHalfEven(X));
    DecalageSourisY = static_cast<int>(base::roundHalfEven(Y));
}

void Edition::Etq_Aide_DragOver(int Index, toolkit::Control&, float X, float Y, int) {
    Ctr_Zandorel& c = m_c;
    // Index 0 is the array's model, which is never dragged: only then is the label passed over taken
    // for the dragged one.
    if (c.IndiceEtqCourante == 0) c.IndiceEtqCourante = Index;
    const toolkit::Label& survolee = c.Etq_Aide(Index);
    SuivreHoraireEtiquette(static_cast<float>(X + survolee.left()), static_cast<float>(Y + survolee.top()));
}

void Edition::Etq_Aide_DragDrop(int Index, toolkit::Control&, float X, float Y) {
    Ctr_Zandorel& c = m_c;
    // The label under the pointer, which may be the dragged one itself.
    const toolkit::Label& dessous = c.Etq_Aide(Index);
    DeposerEtiquette(static_cast<float>(X + dessous.left()), static_cast<float>(Y + dessous.top()));
}

void Ctr_Zandorel::UserControl_DragOver(toolkit::Control&, float X, float Y, int) {
    SuivreHoraireEtiquette(X, Y);
}

void Ctr_Zandorel::UserControl_DragDrop(toolkit::Control&, float X, float Y) {
    DeposerEtiquette(X, Y);
}

void Ctr_Zandorel::UserControl_MouseDown(int Button, int, float, float) {
    if (Button == kBoutonDroit) host().PopupMenu(Mnu_Aide);
}

void Edition::Cmd_Enchainement_DragOver(toolkit::Control&, float X, float Y, int) {
    Ctr_Zandorel& c = m_c;
    // Deliberately not the button's own place, unlike the other DragOver events: over the button the
    // time keeps following the dragged label's place. A drop here has no handler and reaches nothing.
    const toolkit::Label& glissee = c.Etq_Aide(c.IndiceEtqCourante);
    SuivreHoraireEtiquette(static_cast<float>(X + glissee.left()), static_cast<float>(Y + glissee.top()));
}

void Edition::SuivreHoraireEtiquette(float X, float Y) {
    Ctr_Zandorel& c = m_c;
    // Where the label's left and top would stand. The pane of origin does not matter.
    const double L = static_cast<double>(X) - DecalageSourisX;
    const double T = static_cast<double>(Y) - DecalageSourisY;

    // 1.
    const model::Zone& zone = model::kZoneHoraire;
    if (L < zone.gauche || L > zone.droite || T < zone.haut || T > zone.bas) {
        c.Etq_Horaire.setVisible(false);
        return;
    }

    // 2.
    c.Etq_Horaire.setVisible(true);
    c.Etq_Horaire.setTop(T - kHoraireAuDessus);

    // 3. The time under the label's top edge, in hundredths of an hour, counted from the scale's start.
    const double D = model::HeureVersCentiemes(c.HeureDebutEchelle);
    const double parHeure = static_cast<double>(c.PasQuartHeure) * 4;
    const double C = ((T - model::kOrigineDetail) + D * parHeure) / parHeure;

    // 4.
    const double H = model::CentiemesVersHeure(C);

    // 5. The system writes H as text and formats that text with two decimals. H is the double nearest
    // a number of two decimals, so the round trip through its text changes nothing and is left out:
    // it would allocate at every mouse move. The caption is written only when the time changes.
    std::array<char, 32> tampon{};
    const std::string_view horaire = base::formatFixed(tampon, H, 2);
    if (horaire != c.Etq_Horaire.caption()) c.Etq_Horaire.setCaption(std::string(horaire));

    // 6.
    c.Etq_Horaire.setForeColor(kRouge);
}

}  // namespace control
