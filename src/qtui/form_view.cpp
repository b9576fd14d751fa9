#include "qtui/form_view.h"

#include <QApplication>
#include <QListWidget>
#include <QMessageBox>
#include <QMouseEvent>
#include <QStyle>
#include <algorithm>
#include <optional>

#include "base/error.h"
#include "qtui/widgets.h"
#include "toolkit/controls.h"
#include "toolkit/host.h"
#include "toolkit/input.h"

namespace qtui {
namespace {

QString qtext(const std::string& s) {
    return QString::fromStdString(s);
}

// Captions use CRLF between lines, as the toolkit's labels did.
QString caption(const std::string& s) {
    return qtext(s).replace("\r\n", "\n");
}

QString colourStyle(const char* widget, toolkit::Colour back, toolkit::Colour fore) {
    return QString("%1 { background-color: %2; color: %3; }")
        .arg(widget, toQColor(back).name(), toQColor(fore).name());
}

// The room a caption has inside its widget, in pixels, and whether its words may wrap there.
struct Room {
    QSize size;
    bool wraps = false;
};

std::optional<Room> captionRoom(const toolkit::Control& c, const QWidget* w) {
    const QStyle* style = w->style();
    switch (c.kind()) {
        case toolkit::Kind::Label: {
            const int border = c.border() ? 2 : 0;
            return Room{w->size() - QSize(border, border), true};
        }
        case toolkit::Kind::CommandButton: {
            const int margin = style->pixelMetric(QStyle::PM_ButtonMargin, nullptr, w) +
                               2 * style->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, w);
            return Room{w->size() - QSize(margin, 0), false};
        }
        case toolkit::Kind::Frame:
            if (!c.border() || c.caption().empty()) return std::nullopt;
            return Room{w->size() - QSize(FrameWidget::kCaptionInset, 0), false};
        default:
            return std::nullopt;
    }
}

bool fits(const QFont& font, const QString& text, const Room& room) {
    const QFontMetrics metrics(font);
    if (!room.wraps)
        return metrics.horizontalAdvance(text) <= room.size.width() && metrics.height() <= room.size.height();
    const QRect needed = metrics.boundingRect(QRect(0, 0, room.size.width(), 1 << 20),
                                              Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text);
    return needed.width() <= room.size.width() && needed.height() <= room.size.height();
}

}  // namespace

void FormView::fitCaption(const toolkit::Control& c, QWidget* w) const {
    // The screen was laid out for fonts a little narrower than the ones that stand for them today: a
    // caption that would be cut takes the largest size, down from its own, at which it shows whole.
    if (c.kind() == toolkit::Kind::OptionButton || c.kind() == toolkit::Kind::CheckBox) {
        // Its indicator and margins are the style's: the button says what it needs. The indicator sets
        // the height, which no font size changes.
        QFont font = m_zoom.font(c);
        w->setFont(font);
        while (font.pixelSize() > 5 && w->sizeHint().width() > w->width()) {
            font.setPixelSize(font.pixelSize() - 1);
            w->setFont(font);
        }
        return;
    }
    const std::optional<Room> room = captionRoom(c, w);
    if (!room) return;
    const QString text = c.kind() == toolkit::Kind::Label ? caption(c.caption()) : qtext(c.caption());
    QFont font = m_zoom.font(c);
    while (font.pixelSize() > 5 && !fits(font, text, *room))
        font.setPixelSize(font.pixelSize() - 1);
    if (font != w->font()) w->setFont(font);
}

FormView::FormView(toolkit::Form& form, Zoom zoom, QWidget* parent)
    : QWidget(parent), m_form(form), m_zoom(zoom) {
    setAutoFillBackground(true);
    setMouseTracking(true);
    m_widgets[&form] = this;
    m_controls[this] = &form;
    for (toolkit::Control* c : form.controls())
        create(*c);
    applyAll(form, this);
    m_form.setObserver(this);
    m_focusWatch = connect(qApp, &QApplication::focusChanged, this,
                           [this](QWidget*, QWidget* now) { focusArrived(now); });
}

FormView::~FormView() {
    // The widgets going away move Qt's focus while this view is no longer whole.
    disconnect(m_focusWatch);
    m_form.setObserver(nullptr);
}

void FormView::setZoom(Zoom zoom) {
    m_zoom = zoom;
    // Only sizes and fonts follow the zoom. The widgets were stacked as they were made; raising them again
    // in any other order buries controls under the frames drawn behind them, as the legend of acts was.
    using P = toolkit::Property;
    apply(m_form, this, P::Geometry);
    for (toolkit::Control* c : m_form.controls()) {
        if (QWidget* w = widgetFor(c)) {
            apply(*c, w, P::Font);
            apply(*c, w, P::Geometry);
        }
    }
}

void FormView::setSizing(Sizing sizing) {
    m_sizing = sizing;
    if (sizing == Sizing::FollowsSize) {
        setMinimumSize(0, 0);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    }
    apply(m_form, this, toolkit::Property::Geometry);
}

QSize FormView::sizeHint() const {
    return {m_zoom.px(m_form.width()), m_zoom.px(m_form.height())};
}

void FormView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_sizing != Sizing::FollowsSize || m_form.width() <= 0 || m_form.height() <= 0) return;
    // The largest zoom at which the whole form fits. A zoom whose form already fills the view to the
    // pixel is kept, so that a size made from a zoom gives that zoom back.
    const double fits =
        std::max(1.0, std::min(width() * 15.0 / m_form.width(), height() * 15.0 / m_form.height()));
    const bool filled = sizeHint().width() <= width() && sizeHint().height() <= height() &&
                        (width() - sizeHint().width() < 2 || height() - sizeHint().height() < 2);
    if (filled && fits >= m_zoom.factor()) return;
    setZoom(Zoom(fits));
    if (onZoomFollowed) onZoomFollowed(m_zoom);
}

QWidget* FormView::widgetFor(const toolkit::Control* control) const {
    auto it = m_widgets.find(control);
    return it == m_widgets.end() ? nullptr : it->second;
}

toolkit::Control* FormView::controlFor(const QWidget* widget) const {
    for (const QWidget* w = widget; w; w = w->parentWidget()) {
        auto it = m_controls.find(w);
        if (it != m_controls.end()) return it->second;
    }
    return nullptr;
}

QWidget* FormView::makeWidget(toolkit::Control& c, QWidget* parent) {
    switch (c.kind()) {
        case toolkit::Kind::Label:
            return new LabelWidget(*this, c, parent);
        case toolkit::Kind::Frame:
            return new FrameWidget(*this, c, parent);
        case toolkit::Kind::Line:
            return new LineWidget(c, parent);
        case toolkit::Kind::TextBox:
            if (static_cast<toolkit::TextBox&>(c).multiLine()) return new MultiLineWidget(parent);
            return new TextBoxWidget(*this, c, parent);
        case toolkit::Kind::ComboBox:
            return new ComboWidget(*this, c, parent);
        case toolkit::Kind::ListBox: {
            auto* list = new ListWidget(*this, c, parent);
            // A list that is only a colour swatch takes no focus.
            if (!c.tabStop()) list->setFocusPolicy(Qt::NoFocus);
            return list;
        }
        case toolkit::Kind::OptionButton:
            return new OptionWidget(*this, c, parent);
        case toolkit::Kind::CheckBox:
            return new CheckWidget(*this, c, parent);
        case toolkit::Kind::CommandButton:
            return new ButtonWidget(*this, c, parent);
        case toolkit::Kind::VScrollBar:
            return new ScrollWidget(*this, c, parent);
        case toolkit::Kind::Menu:
        case toolkit::Kind::Form:
            return nullptr;
    }
    return nullptr;
}

void FormView::create(toolkit::Control& c) {
    if (m_widgets.count(&c)) return;
    QWidget* parent = c.parent() ? widgetFor(c.parent()) : this;
    if (!parent) return;  // menus and what hangs from them have no widget
    QWidget* w = makeWidget(c, parent);
    if (!w) return;
    m_widgets[&c] = w;
    m_controls[w] = &c;
    applyAll(c, w);
}

void FormView::destroy(toolkit::Control& c) {
    QWidget* w = widgetFor(&c);
    if (!w || w == this) return;
    m_widgets.erase(&c);
    m_controls.erase(w);
    w->hide();
    w->deleteLater();
}

void FormView::applyAll(toolkit::Control& c, QWidget* w) {
    using P = toolkit::Property;
    for (P p : {P::Geometry, P::Font, P::BackColor, P::Caption, P::Text, P::List, P::ListIndex, P::Value,
                P::Range, P::ToolTipText, P::MousePointer, P::Enabled, P::Visible}) {
        apply(c, w, p);
    }
    if (c.kind() != toolkit::Kind::Form) w->raise();
}

void FormView::changed(toolkit::Control& c, toolkit::Property p) {
    if (p == toolkit::Property::Loaded) return create(c);
    if (p == toolkit::Property::Unloaded) return destroy(c);
    if (QWidget* w = widgetFor(&c)) apply(c, w, p);
}

void FormView::apply(toolkit::Control& c, QWidget* w, toolkit::Property p) {
    applyProperty(c, w, p);
    using P = toolkit::Property;
    if ((p == P::Geometry || p == P::Font || p == P::Caption) && w != this) fitCaption(c, w);
}

void FormView::applyProperty(toolkit::Control& c, QWidget* w, toolkit::Property p) {
    using P = toolkit::Property;
    using K = toolkit::Kind;
    switch (p) {
        case P::Geometry:
            if (c.kind() == K::Line) {
                auto& line = static_cast<toolkit::Line&>(c);
                QPoint a(m_zoom.px(line.x1()), m_zoom.px(line.y1())),
                    b(m_zoom.px(line.x2()), m_zoom.px(line.y2()));
                QRect box = QRect(a, b).normalized().adjusted(0, 0, 1, 1);
                static_cast<LineWidget*>(w)->place(box, a - box.topLeft(), b - box.topLeft());
            } else if (c.kind() == K::Form) {
                if (m_sizing == Sizing::Fixed) {
                    setFixedSize(m_zoom.px(c.width()), m_zoom.px(c.height()));
                } else {
                    const Zoom full(1.0);
                    setMinimumSize(full.px(c.width()), full.px(c.height()));
                    updateGeometry();
                }
            } else {
                w->setGeometry(m_zoom.rect(c));
            }
            break;
        case P::Visible:
            if (c.kind() != K::Form) {
                w->setVisible(c.visible());
            } else if (!c.visible() && onFormHidden) {
                onFormHidden();
            }
            break;
        case P::Enabled:
            w->setEnabled(c.enabled());
            break;
        case P::Font:
            w->setFont(m_zoom.font(c));
            break;
        case P::BackColor:
        case P::ForeColor:
            if (c.kind() == K::Label) {
                w->setStyleSheet(colourStyle("QLabel", c.backColor(), c.foreColor()) +
                                 (c.border() ? " QLabel { border: 1px solid black; }" : ""));
            } else if (c.kind() == K::ListBox || c.kind() == K::TextBox || c.kind() == K::ComboBox) {
                QPalette pal = w->palette();
                pal.setColor(QPalette::Base, toQColor(c.backColor()));
                w->setPalette(pal);
            } else if (c.hasBackColor()) {
                QPalette pal = w->palette();
                pal.setColor(QPalette::Window, toQColor(c.backColor()));
                pal.setColor(QPalette::Button, toQColor(c.backColor()));
                w->setPalette(pal);
                w->setAutoFillBackground(true);
            }
            break;
        case P::Caption:
            if (c.kind() == K::Label) static_cast<QLabel*>(w)->setText(caption(c.caption()));
            if (c.kind() == K::CommandButton) static_cast<QPushButton*>(w)->setText(qtext(c.caption()));
            if (c.kind() == K::OptionButton || c.kind() == K::CheckBox)
                static_cast<QAbstractButton*>(w)->setText(qtext(c.caption()));
            if (c.kind() == K::Frame) static_cast<FrameWidget*>(w)->setCaption(qtext(c.caption()));
            break;
        case P::Text:
        case P::Selection:
            if (c.kind() == K::TextBox) {
                auto& box = static_cast<toolkit::TextBox&>(c);
                if (auto* lines = dynamic_cast<MultiLineWidget*>(w)) {
                    lines->mirrorText(qtext(box.text()));
                } else {
                    static_cast<TextBoxWidget*>(w)->mirrorText(qtext(box.text()), box.selStart());
                }
            }
            if (c.kind() == K::ComboBox) static_cast<ComboWidget*>(w)->mirror();
            break;
        case P::List:
        case P::ListIndex:
            if (c.kind() == K::ComboBox) static_cast<ComboWidget*>(w)->mirror();
            if (c.kind() == K::ListBox) static_cast<ListWidget*>(w)->mirror();
            break;
        case P::Value:
        case P::Range:
            if (c.kind() == K::OptionButton) {
                QSignalBlocker block(w);
                static_cast<QRadioButton*>(w)->setChecked(static_cast<toolkit::OptionButton&>(c).value());
            }
            if (c.kind() == K::CheckBox) {
                QSignalBlocker block(w);
                static_cast<QCheckBox*>(w)->setChecked(static_cast<toolkit::CheckBox&>(c).value());
            }
            if (c.kind() == K::VScrollBar) static_cast<ScrollWidget*>(w)->mirror();
            break;
        case P::ToolTipText:
            w->setToolTip(qtext(c.toolTipText()));
            break;
        case P::MousePointer:
            if (c.mousePointer() == 5) {
                w->setCursor(Qt::SizeAllCursor);
            } else if (c.mousePointer() == toolkit::kPointerHourglass) {
                w->setCursor(Qt::WaitCursor);
            } else {
                w->unsetCursor();
            }
            break;
        case P::Tag:
        case P::LinkItem:
        case P::Loaded:
        case P::Unloaded:
            break;
    }
}

void FormView::forward(const std::function<void()>& action) {
    // Input that arrives while the model handles earlier input waits its turn in the model's own order:
    // the model runs one event at a time, as the toolkit did.
    ++m_busy;
    try {
        action();
    } catch (const base::Error& e) {
        QMessageBox box(QMessageBox::Critical, "Zandorel", QString::fromStdString(e.what()),
                        QMessageBox::NoButton, this);
        box.addButton("OK", QMessageBox::AcceptRole);
        box.exec();
        // The routine stopped halfway; the screen goes back to the user as it stands.
        m_form.host().setScreenMousePointer(toolkit::kPointerDefault);
        m_form.setEnabled(true);
    }
    --m_busy;
    syncFocus();
    if (afterInput) afterInput();
}

void FormView::syncFocus() {
    QWidget* w = widgetFor(m_form.activeControl());
    if (!w || w == this) return;
    if (auto* combo = qobject_cast<QComboBox*>(w))
        w = combo->lineEdit() ? static_cast<QWidget*>(combo->lineEdit()) : w;
    ++m_busy;
    if (!w->hasFocus() && w->isVisible() && w->isEnabled()) w->setFocus(Qt::OtherFocusReason);
    --m_busy;
}

void FormView::focusArrived(QWidget* now) {
    // Focus that Qt gives on its own (a click, the window coming back to the front after a dialog closed,
    // a menu closing) is the user's move, and the model must hear of it: otherwise the next key goes to
    // the box while the model still holds another control, and the focus is pulled back there after it.
    if (m_busy > 0 || !now || !isAncestorOf(now)) return;
    toolkit::Control* control = controlFor(now);
    if (!control || control == &m_form || control == m_form.activeControl()) return;
    if (!control->effectivelyEnabled() || !control->effectivelyVisible()) return;
    forward([&] { toolkit::input::focus(*control); });
}

bool FormView::focusNextPrevChild(bool next) {
    toolkit::Control* active = m_form.activeControl();
    if (!active) return QWidget::focusNextPrevChild(next);
    // Qt moves the focus on its own when the widget holding it is disabled or hidden, as a long command
    // does to the button that started it: that is no Tab of the user's, and the model keeps its focus.
    if (m_busy > 0 || !active->effectivelyEnabled() || !active->effectivelyVisible()) return true;
    if (next) {
        forward([&] { toolkit::input::key(*active, toolkit::Key::Tab); });
    } else if (toolkit::Control* previous = m_form.nextInTabOrder(active, false)) {
        forward([&] { toolkit::input::focus(*previous); });
    }
    return true;
}

QPoint FormView::toFormPixels(const QWidget* widget, QPoint pos) const {
    return widget->mapTo(this, pos);
}

void FormView::dragMove(QPoint pos) {
    forward([&] { toolkit::input::dragOver(m_form, m_zoom.twips(pos.x()), m_zoom.twips(pos.y()), 2); });
}

void FormView::dragDrop(QPoint pos) {
    forward([&] { toolkit::input::dragDrop(m_form, m_zoom.twips(pos.x()), m_zoom.twips(pos.y())); });
}

void FormView::mousePressEvent(QMouseEvent* e) {
    int button = e->button() == Qt::RightButton ? 2 : e->button() == Qt::LeftButton ? 1 : 4;
    QPointF p = e->position();
    forward([&] {
        if (m_form.MouseDown) m_form.MouseDown(button, 0, m_zoom.twips(p.x()), m_zoom.twips(p.y()));
    });
}

void FormView::mouseMoveEvent(QMouseEvent* e) {
    if (m_form.dragSource()) dragMove(e->position().toPoint());
}

void FormView::mouseReleaseEvent(QMouseEvent* e) {
    if (m_form.dragSource()) dragDrop(e->position().toPoint());
}

}  // namespace qtui
