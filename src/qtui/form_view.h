#pragma once

#include <QWidget>
#include <functional>
#include <unordered_map>

#include "qtui/geometry.h"
#include "toolkit/control.h"
#include "toolkit/form.h"

namespace qtui {

// Shows a form of the forms model and forwards the user's input to it. It mirrors every property the
// model announces and holds no decision and no state of its own: each key, click, focus change and drag
// goes to the model through toolkit::input, and whatever the model then changes comes back as a
// property change. A failure that a routine lets through is shown in a dialog, and the screen is
// given back to the user.
class FormView : public QWidget, public toolkit::Observer {
public:
    FormView(toolkit::Form& form, Zoom zoom, QWidget* parent = nullptr);
    ~FormView() override;

    toolkit::Form& form() const { return m_form; }
    const Zoom& zoom() const { return m_zoom; }
    void setZoom(Zoom zoom);
    // A view of fixed size shows the form at its zoom; a view that follows its size takes the largest
    // zoom at which the whole form fits in it, and tells onZoomFollowed. Its size hint is the form at
    // the current zoom, and it shrinks no further than the form at 100 %.
    enum class Sizing { Fixed, FollowsSize };
    void setSizing(Sizing sizing);
    std::function<void(Zoom)> onZoomFollowed;
    QSize sizeHint() const override;
    QWidget* widgetFor(const toolkit::Control* control) const;
    toolkit::Control* controlFor(const QWidget* widget) const;

    // Runs a piece of user input on the model, shows a failure, and brings the focus in line.
    void forward(const std::function<void()>& action);
    // Puts Qt's focus on the widget of the model's active control.
    void syncFocus();

    void changed(toolkit::Control& control, toolkit::Property property) override;

    // Called when the model hides its form, and after each piece of input has run.
    std::function<void()> onFormHidden;
    std::function<void()> afterInput;

    // A drag of the model is followed with the mouse: the pointer over this view, in pixels.
    void dragMove(QPoint pos);
    void dragDrop(QPoint pos);

protected:
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void create(toolkit::Control& control);
    void destroy(toolkit::Control& control);
    void apply(toolkit::Control& control, QWidget* widget, toolkit::Property property);
    void applyProperty(toolkit::Control& control, QWidget* widget, toolkit::Property property);
    void fitCaption(const toolkit::Control& control, QWidget* widget) const;
    void applyAll(toolkit::Control& control, QWidget* widget);
    QWidget* makeWidget(toolkit::Control& control, QWidget* parent);
    QPoint toFormPixels(const QWidget* widget, QPoint pos) const;
    void focusArrived(QWidget* now);

    toolkit::Form& m_form;
    Zoom m_zoom;
    Sizing m_sizing = Sizing::Fixed;
    std::unordered_map<const toolkit::Control*, QWidget*> m_widgets;
    std::unordered_map<const QWidget*, toolkit::Control*> m_controls;
    // Input or a focus pull under way: focus that Qt moves meanwhile is the model's doing, not the user's.
    int m_busy = 0;
    QMetaObject::Connection m_focusWatch;
};

}  // namespace qtui
