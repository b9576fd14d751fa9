#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <optional>

#include "toolkit/control.h"

namespace qtui {

class FormView;

// What every widget of the adapter does with the mouse: presses, moves and releases go to the model's
// control, in twips relative to it; while the model drags a control, moves and the release follow the
// drag instead. Qt keeps sending the moves to the widget that was pressed.
class MouseForwarder {
public:
    MouseForwarder(FormView& view, toolkit::Control& control) : m_view(view), m_control(control) {}
    // True when the event was taken by a drag under way.
    bool forwardPress(QWidget* widget, QMouseEvent* event);
    bool forwardMove(QWidget* widget, QMouseEvent* event);
    bool forwardRelease(QWidget* widget, QMouseEvent* event);

protected:
    FormView& m_view;
    toolkit::Control& m_control;
};

class LabelWidget : public QLabel, public MouseForwarder {
public:
    LabelWidget(FormView& view, toolkit::Control& control, QWidget* parent);

protected:
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
};

class FrameWidget : public QFrame, public MouseForwarder {
public:
    FrameWidget(FormView& view, toolkit::Control& control, QWidget* parent);
    void setCaption(const QString& caption);
    // Pixels of the frame's width that its caption can't use: the inset before it and the gaps around it.
    static constexpr int kCaptionInset = 8 + 6 + 8;

protected:
    void paintEvent(QPaintEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    QString m_caption;
};

// A line of the model, drawn within its bounding box in its parent.
class LineWidget : public QWidget {
public:
    LineWidget(toolkit::Control& control, QWidget* parent);
    void place(const QRect& parentRect, QPoint from, QPoint to);

protected:
    void paintEvent(QPaintEvent* e) override;

private:
    QPoint m_from, m_to;
};

// A text box: keys go to the model (KeyDown, KeyPress, the edit), which writes the text back. Moving the
// caret stays Qt's, and the model is told where it is.
class TextBoxWidget : public QLineEdit {
public:
    TextBoxWidget(FormView& view, toolkit::Control& control, QWidget* parent);
    void mirrorText(const QString& text, int caret);

protected:
    void keyPressEvent(QKeyEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    void tellCaret();
    FormView& m_view;
    toolkit::Control& m_control;
};

// A multi-line text box with its vertical scroll bar: read and scrolled, its text the model's alone.
class MultiLineWidget : public QPlainTextEdit {
public:
    explicit MultiLineWidget(QWidget* parent);
    void mirrorText(const QString& text);
};

// A list box: its items and selection are the model's; a click selects through the model, which fires
// Click, and a double click fires DblClick.
class ListWidget : public QListWidget {
public:
    ListWidget(FormView& view, toolkit::Control& control, QWidget* parent);
    void mirror();

private:
    toolkit::Control* m_control = nullptr;
    bool m_mirroring = false;
};

class ComboWidget : public QComboBox {
public:
    ComboWidget(FormView& view, toolkit::Control& control, QWidget* parent);
    void mirror();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FormView& m_view;
    toolkit::Control& m_control;
};

class ButtonWidget : public QPushButton, public MouseForwarder {
public:
    ButtonWidget(FormView& view, toolkit::Control& control, QWidget* parent);

protected:
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
};

class OptionWidget : public QRadioButton {
public:
    OptionWidget(FormView& view, toolkit::Control& control, QWidget* parent);
};

class CheckWidget : public QCheckBox {
public:
    CheckWidget(FormView& view, toolkit::Control& control, QWidget* parent);
};

class ScrollWidget : public QScrollBar {
public:
    ScrollWidget(FormView& view, toolkit::Control& control, QWidget* parent);
    void mirror();

private:
    toolkit::Control* m_control = nullptr;
    bool m_mirroring = false;
};

// Handles the keys every adapter widget shares (Tab, Enter, Escape, Backspace, Delete, typed text);
// true when the key went to the model.
bool forwardKey(FormView& view, toolkit::Control& control, QKeyEvent* e);

}  // namespace qtui
