#include "app/state_dump.h"

#include <nlohmann/json.hpp>

#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace app {
namespace {

using json = nlohmann::ordered_json;

std::string focusName(const toolkit::Control* c) {
    if (!c) return "";
    return c->index() >= 0 ? c->name() + "(" + std::to_string(c->index()) + ")" : c->name();
}

json controlJson(const toolkit::Control& c) {
    json j;
    switch (c.kind()) {
        case toolkit::Kind::TextBox:
            j["text"] = static_cast<const toolkit::TextBox&>(c).text();
            break;
        case toolkit::Kind::ComboBox:
            j["text"] = static_cast<const toolkit::ComboBox&>(c).text();
            [[fallthrough]];
        case toolkit::Kind::ListBox: {
            const auto& list = static_cast<const toolkit::ListControl&>(c);
            j["items"] = list.items();
            j["listIndex"] = list.listIndex();
            break;
        }
        case toolkit::Kind::OptionButton:
            j["value"] = static_cast<const toolkit::OptionButton&>(c).value();
            break;
        case toolkit::Kind::CheckBox:
            j["value"] = static_cast<const toolkit::CheckBox&>(c).value();
            break;
        case toolkit::Kind::VScrollBar: {
            const auto& bar = static_cast<const toolkit::VScrollBar&>(c);
            j["value"] = bar.value();
            j["max"] = bar.max();
            break;
        }
        default:
            break;
    }
    if (c.kind() != toolkit::Kind::TextBox && c.kind() != toolkit::Kind::ComboBox &&
        c.kind() != toolkit::Kind::ListBox && c.kind() != toolkit::Kind::VScrollBar) {
        j["caption"] = c.caption();
    }
    j["visible"] = c.visible();
    j["enabled"] = c.enabled();
    j["left"] = c.left();
    j["top"] = c.top();
    j["backColor"] = c.backColor();
    return j;
}

json messagesJson(const std::vector<toolkit::HeadlessHost::Shown>& messages) {
    json shown = json::array();
    for (const auto& m : messages) {
        shown.push_back({{"title", m.title}, {"text", m.text}, {"style", m.style}, {"answer", m.answer}});
    }
    return shown;
}

json controlsJson(const toolkit::Form& form) {
    json controls = json::object();
    for (const toolkit::Control* c : form.controls()) {
        if (c->index() < 0) controls[c->name()] = controlJson(*c);
    }
    return controls;
}

json labelJson(const toolkit::Control& l) {
    return {{"index", l.index()},         {"left", l.left()},         {"top", l.top()},
            {"width", l.width()},         {"height", l.height()},     {"caption", l.caption()},
            {"tooltip", l.toolTipText()}, {"tag", l.tag()},           {"linkItem", l.linkItem()},
            {"backColor", l.backColor()}, {"fontSize", l.fontSize()}, {"fontBold", l.fontBold()},
            {"visible", l.visible()},     {"enabled", l.enabled()}};
}

json tableJson(const model::WorkTable& table) {
    if (!table.exists()) return nullptr;
    json rows = json::array();
    const mvdb::DynamicRecord& t = *table;
    for (std::int64_t r = 1; r <= t.DCount(); ++r) {
        json row = json::array();
        for (std::int64_t c = 1; c <= std::max<std::int64_t>(1, t.DCount(r)); ++c)
            row.push_back(t(r, c));
        rows.push_back(row);
    }
    return rows;
}

json scaleJson(const toolkit::ControlArray<toolkit::Label>& captions,
               const toolkit::ControlArray<toolkit::Line>& ticks) {
    json c = json::array(), t = json::array();
    for (toolkit::Control* e : captions.elements()) {
        if (e->index() > 0) c.push_back({{"caption", e->caption()}, {"left", e->left()}, {"top", e->top()}});
    }
    for (toolkit::Control* e : ticks.elements()) {
        auto* line = static_cast<toolkit::Line*>(e);
        if (e->index() > 0)
            t.push_back({{"x1", line->x1()}, {"y1", line->y1()}, {"x2", line->x2()}, {"y2", line->y2()}});
    }
    return {{"captions", c}, {"ticks", t}};
}

json stateJson(const control::Ctr_Zandorel& ctl) {
    return {{"HeureDebutEchelle", ctl.HeureDebutEchelle},
            {"HeureFinEchelle", ctl.HeureFinEchelle},
            {"PasQuartHeure", ctl.PasQuartHeure},
            {"IndiceEtqMax", ctl.IndiceEtqMax},
            {"IndiceEtqCourante", ctl.IndiceEtqCourante},
            {"PanneauSource", std::string(model::paneText(ctl.PanneauSource))},
            {"SansTournee", ctl.SansTournee},
            {"TourneeAnterieure", ctl.TourneeAnterieure},
            {"JourneeAffichee", ctl.JourneeAffichee},
            {"FlagAffectationEnCours", ctl.Mod.FlagAffectationEnCours},
            {"NbIntervenantsTournee", ctl.NbIntervenantsTournee},
            {"DateAffichee", ctl.DateAffichee},
            {"ValidationAnomalies", ctl.ValidationAnomalies},
            {"W_Sortir", ctl.W_Sortir}};
}

}  // namespace

std::string dumpState(const control::Ctr_Zandorel& ctl,
                      const std::vector<toolkit::HeadlessHost::Shown>& messages,
                      const std::vector<std::string>& errors) {
    json j;
    j["messages"] = messagesJson(messages);
    j["errors"] = errors;
    j["state"] = stateJson(ctl);
    j["controls"] = controlsJson(ctl.UserControl);
    json labels = json::array();
    for (const toolkit::Control* l : ctl.Etq_Aide.elements()) {
        if (l->index() > 0) labels.push_back(labelJson(*l));
    }
    j["labels"] = labels;
    j["tables"] = {{"TabTempoAide", tableJson(ctl.TabTempoAide)},
                   {"TabTempoDetail", tableJson(ctl.TabTempoDetail)},
                   {"TabAnomalies", tableJson(ctl.TabAnomalies)},
                   {"TabTourneeEnregistree", tableJson(ctl.TabTourneeEnregistree)}};
    j["scales"] = {{"aide", scaleJson(ctl.Etq_HeureAide, ctl.Line_HeureAide)},
                   {"detail", scaleJson(ctl.Etq_HeureDetail, ctl.Line_HeureDetail)}};
    j["focus"] = focusName(ctl.UserControl.activeControl());
    j["mousePointer"] = ctl.host().screenMousePointer();
    j["enabled"] = ctl.UserControl.enabled();
    return j.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string dumpForm(const toolkit::Form& form, const std::vector<toolkit::HeadlessHost::Shown>& messages) {
    json j;
    j["messages"] = messagesJson(messages);
    j["form"] = form.name();
    j["caption"] = form.caption();
    j["controls"] = controlsJson(form);
    return j.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace app
