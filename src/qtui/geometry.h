#pragma once

#include <QColor>
#include <QFont>
#include <QRect>
#include <cmath>

#include "toolkit/control.h"

namespace qtui {

// Twips to pixels: 15 twips make one pixel at 100 %, and the user's zoom multiplies that. Qt scales
// logical pixels by the screen's device pixel ratio itself.
class Zoom {
public:
    explicit Zoom(double factor = 1.0) : m_factor(factor) {}
    double factor() const { return m_factor; }
    int px(double twips) const { return static_cast<int>(std::lround(twips * m_factor / 15.0)); }
    double twips(double px) const { return px * 15.0 / m_factor; }
    QRect rect(const toolkit::Control& c) const {
        int x = px(c.left()), y = px(c.top());
        return QRect(x, y, px(c.left() + c.width()) - x, px(c.top() + c.height()) - y);
    }
    // Font sizes follow the zoom like everything else: a point is 20 twips.
    QFont font(const toolkit::Control& c) const {
        QFont f(QString::fromStdString(c.fontName()));
        f.setPixelSize(std::max(1, static_cast<int>(std::lround(c.fontSize() * 20.0 * m_factor / 15.0))));
        f.setBold(c.fontBold());
        if (c.fontName() == "Courier New") f.setStyleHint(QFont::TypeWriter);
        return f;
    }

private:
    double m_factor;
};

// The toolkit's colour numbers keep blue in the high byte.
inline QColor toQColor(toolkit::Colour c) {
    return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
}

}  // namespace qtui
