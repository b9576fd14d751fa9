#include "qtui/widgets.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "qtui/form_view.h"
#include "toolkit/controls.h"
#include "toolkit/input.h"

namespace qtui {
namespace {

int buttonOf(const QMouseEvent* e) {
    switch (e->button() == Qt::NoButton ? e->buttons().toInt() & 7 : static_cast<int>(e->button())) {
        case Qt::LeftButton:
            return 1;
        case Qt::RightButton:
            return 2;
        case Qt::MiddleButton:
            return 4;
        default:
            return 0;
    }
}

int shiftOf(const QInputEvent* e) {
    int shift = 0;
    if (e->modifiers() & Qt::ShiftModifier) shift |= 1;
    if (e->modifiers() & Qt::ControlModifier) shift |= 2;
    if (e->modifiers() & Qt::AltModifier) shift |= 4;
    return shift;
}

// Qt's line edit types a letter held with Alt (it refuses only Ctrl's): with Alt held the key is a command,
// never text, and the letter would reach the box behind the model's back.
bool isLetterWithAlt(const QKeyEvent* e) {
    return (e->modifiers() & Qt::AltModifier) && !e->text().isEmpty() && e->text().at(0).isPrint();
}

}  // namespace

bool forwardKey(FormView& view, toolkit::Control& control, QKeyEvent* e) {
    std::optional<toolkit::Key> key;
    switch (e->key()) {
        case Qt::Key_Tab:
            key = toolkit::Key::Tab;
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            key = toolkit::Key::Enter;
            break;
        case Qt::Key_Escape:
            key = toolkit::Key::Escape;
            break;
        case Qt::Key_Backspace:
            key = toolkit::Key::Backspace;
            break;
        case Qt::Key_Delete:
            key = toolkit::Key::Delete;
            break;
        default:
            break;
    }
    if (key) {
        view.forward([&] { toolkit::input::key(control, *key); });
        return true;
    }
    bool editable = control.kind() == toolkit::Kind::TextBox || control.kind() == toolkit::Kind::ComboBox;
    QString text = e->text();
    if (!editable || text.isEmpty() || (e->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    for (char32_t code : text.toUcs4()) {
        if (code < 32) return false;
    }
    view.forward([&] {
        for (char32_t code : text.toUcs4())
            toolkit::input::press(control, static_cast<int>(code));
    });
    return true;
}

bool MouseForwarder::forwardPress(QWidget* widget, QMouseEvent* e) {
    QPointF p = e->position();
    const Zoom& z = m_view.zoom();
    int button = buttonOf(e), shift = shiftOf(e);
    (void)widget;
    m_view.forward([&] {
        if (m_control.MouseDown) m_control.MouseDown(button, shift, z.twips(p.x()), z.twips(p.y()));
    });
    return true;
}

bool MouseForwarder::forwardMove(QWidget* widget, QMouseEvent* e) {
    if (m_view.form().dragSource()) {
        m_view.dragMove(widget->mapTo(&m_view, e->position().toPoint()));
        return true;
    }
    QPointF p = e->position();
    const Zoom& z = m_view.zoom();
    int button = buttonOf(e), shift = shiftOf(e);
    m_view.forward([&] {
        if (m_control.MouseMove) m_control.MouseMove(button, shift, z.twips(p.x()), z.twips(p.y()));
    });
    return false;
}

bool MouseForwarder::forwardRelease(QWidget* widget, QMouseEvent* e) {
    if (m_view.form().dragSource()) {
        m_view.dragDrop(widget->mapTo(&m_view, e->position().toPoint()));
        return true;
    }
    QPointF p = e->position();
    const Zoom& z = m_view.zoom();
    int button = buttonOf(e), shift = shiftOf(e);
    m_view.forward([&] {
        if (m_control.MouseUp) m_control.MouseUp(button, shift, z.twips(p.x()), z.twips(p.y()));
    });
    return false;
}

LabelWidget::LabelWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QLabel(parent), MouseForwarder(view, control) {
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setWordWrap(true);
    setMouseTracking(true);
    setAutoFillBackground(true);
}

void LabelWidget::mousePressEvent(QMouseEvent* e) {
    forwardPress(this, e);
    if (m_control.Click && e->button() == Qt::LeftButton) m_view.forward([&] { m_control.fireClick(); });
}
void LabelWidget::mouseMoveEvent(QMouseEvent* e) {
    forwardMove(this, e);
}
void LabelWidget::mouseReleaseEvent(QMouseEvent* e) {
    forwardRelease(this, e);
}

FrameWidget::FrameWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QFrame(parent), MouseForwarder(view, control) {
    setAutoFillBackground(true);
}

void FrameWidget::setCaption(const QString& caption) {
    m_caption = caption;
    update();
}

void FrameWidget::paintEvent(QPaintEvent* e) {
    QFrame::paintEvent(e);
    if (!m_control.border()) return;
    // A bordered frame is the classic group box: an etched outline with its caption cut into the top.
    QPainter p(this);
    int h = fontMetrics().height();
    p.setPen(palette().color(QPalette::Mid));
    p.drawRect(QRect(0, h / 2, width() - 1, height() - h / 2 - 1));
    if (m_caption.isEmpty()) return;
    QRect text(8, 0, fontMetrics().horizontalAdvance(m_caption) + 6, h);
    p.fillRect(text, palette().color(QPalette::Window));
    p.setPen(palette().color(QPalette::WindowText));
    p.drawText(text, Qt::AlignCenter, m_caption);
}

void FrameWidget::mousePressEvent(QMouseEvent* e) {
    forwardPress(this, e);
}
void FrameWidget::mouseMoveEvent(QMouseEvent* e) {
    forwardMove(this, e);
}
void FrameWidget::mouseReleaseEvent(QMouseEvent* e) {
    forwardRelease(this, e);
}

LineWidget::LineWidget(toolkit::Control&, QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void LineWidget::place(const QRect& box, QPoint from, QPoint to) {
    setGeometry(box);
    m_from = from;
    m_to = to;
    update();
}

void LineWidget::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setPen(QPen(Qt::black, 1));
    p.drawLine(m_from, m_to);
}

TextBoxWidget::TextBoxWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QLineEdit(parent), m_view(view), m_control(control) {}

void TextBoxWidget::mirrorText(const QString& text, int caret) {
    if (this->text() != text) setText(text);
    setCursorPosition(std::min(caret, static_cast<int>(text.size())));
}

void TextBoxWidget::tellCaret() {
    auto& box = static_cast<toolkit::TextBox&>(m_control);
    int start = hasSelectedText() ? selectionStart() : cursorPosition();
    box.setSelection(start, hasSelectedText() ? static_cast<int>(selectedText().size()) : 0);
}

void TextBoxWidget::keyPressEvent(QKeyEvent* e) {
    tellCaret();
    if (forwardKey(m_view, m_control, e)) return;
    if (isLetterWithAlt(e)) return e->ignore();
    // Moving the caret and selecting stay Qt's; nothing else edits the box behind the model's back.
    if (e->matches(QKeySequence::Paste) || e->matches(QKeySequence::Cut) || e->matches(QKeySequence::Undo))
        return;
    QLineEdit::keyPressEvent(e);
    tellCaret();
}

void TextBoxWidget::mouseReleaseEvent(QMouseEvent* e) {
    QLineEdit::mouseReleaseEvent(e);
    tellCaret();
}

MultiLineWidget::MultiLineWidget(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

void MultiLineWidget::mirrorText(const QString& text) {
    QString shown = QString(text).replace("\r\n", "\n");
    if (toPlainText() != shown) setPlainText(shown);
}

ListWidget::ListWidget(FormView& view, toolkit::Control& control, QWidget* parent) : QListWidget(parent) {
    connect(this, &QListWidget::currentRowChanged, this, [this, &view, &control](int row) {
        if (m_mirroring) return;
        view.forward([&] { static_cast<toolkit::ListControl&>(control).setListIndex(row); });
        mirror();
    });
    connect(this, &QListWidget::itemDoubleClicked, this, [&view, &control](QListWidgetItem*) {
        view.forward([&] {
            if (control.DblClick) control.DblClick();
        });
    });
    m_control = &control;
}

void ListWidget::mirror() {
    auto& list = static_cast<toolkit::ListControl&>(*m_control);
    m_mirroring = true;
    if (count() != list.listCount()) {
        clear();
        for (const std::string& item : list.items())
            addItem(QString::fromStdString(item));
    } else {
        for (int i = 0; i < count(); ++i)
            item(i)->setText(QString::fromStdString(list.list(i)));
    }
    setCurrentRow(list.listIndex());
    m_mirroring = false;
}

ComboWidget::ComboWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QComboBox(parent), m_view(view), m_control(control) {
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    lineEdit()->installEventFilter(this);
    connect(this, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        auto& combo = static_cast<toolkit::ComboBox&>(m_control);
        std::string item = combo.list(index);
        m_view.forward([&] { toolkit::input::choose(combo, item); });
        mirror();
    });
}

void ComboWidget::mirror() {
    auto& combo = static_cast<toolkit::ComboBox&>(m_control);
    QSignalBlocker block(this);
    if (count() != combo.listCount()) {
        clear();
        for (const std::string& item : combo.items())
            addItem(QString::fromStdString(item));
    } else {
        for (int i = 0; i < count(); ++i)
            setItemText(i, QString::fromStdString(combo.list(i)));
    }
    setCurrentIndex(combo.listIndex());
    lineEdit()->setText(QString::fromStdString(combo.text()));
}

bool ComboWidget::eventFilter(QObject* watched, QEvent* event) {
    if (watched == lineEdit() && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down || key->key() == Qt::Key_F4) return false;
        if (forwardKey(m_view, m_control, key) || isLetterWithAlt(key)) return true;
        return key->matches(QKeySequence::Paste) || key->matches(QKeySequence::Cut);
    }
    return QComboBox::eventFilter(watched, event);
}

ButtonWidget::ButtonWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QPushButton(parent), MouseForwarder(view, control) {
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QPushButton::clicked, this,
            [this] { m_view.forward([&] { toolkit::input::click(m_control); }); });
}

void ButtonWidget::mouseMoveEvent(QMouseEvent* e) {
    if (!forwardMove(this, e)) QPushButton::mouseMoveEvent(e);
}

void ButtonWidget::mouseReleaseEvent(QMouseEvent* e) {
    if (m_view.form().dragSource()) {
        forwardRelease(this, e);
        return;
    }
    QPushButton::mouseReleaseEvent(e);
}

OptionWidget::OptionWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QRadioButton(parent) {
    setAutoExclusive(false);
    connect(this, &QRadioButton::clicked, this, [this, &view, &control] {
        view.forward([&] { toolkit::input::click(control); });
        // Qt toggles the button itself; the model says what it is.
        QSignalBlocker block(this);
        setChecked(static_cast<toolkit::OptionButton&>(control).value());
    });
}

CheckWidget::CheckWidget(FormView& view, toolkit::Control& control, QWidget* parent) : QCheckBox(parent) {
    connect(this, &QCheckBox::clicked, this, [this, &view, &control] {
        view.forward([&] { toolkit::input::click(control); });
        QSignalBlocker block(this);
        setChecked(static_cast<toolkit::CheckBox&>(control).value());
    });
}

ScrollWidget::ScrollWidget(FormView& view, toolkit::Control& control, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent) {
    connect(this, &QScrollBar::valueChanged, this, [this, &view, &control](int value) {
        if (m_mirroring) return;
        view.forward([&] { toolkit::input::scroll(static_cast<toolkit::VScrollBar&>(control), value); });
        mirror();
    });
    m_control = &control;
}

void ScrollWidget::mirror() {
    auto& bar = static_cast<toolkit::VScrollBar&>(*m_control);
    m_mirroring = true;
    setRange(std::min(bar.min(), bar.max()), std::max(bar.min(), bar.max()));
    setValue(bar.value());
    setPageStep(std::max(1, bar.largeChange()));
    setSingleStep(std::max(1, bar.smallChange()));
    m_mirroring = false;
}

}  // namespace qtui
