#include "tests/desk/FocusLook.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int samplesOfSide = 9;
constexpr qreal smallestRing = 10;   // px, a side
constexpr qreal leastContrast = 2.0; // of a ring with what was there without it

bool alike(const QColor& one, const QColor& other)
{
    constexpr int rounding = 3; // of one channel
    return one.isValid() && std::abs(one.red() - other.red()) <= rounding &&
           std::abs(one.green() - other.green()) <= rounding &&
           std::abs(one.blue() - other.blue()) <= rounding;
}

/** The luminance of a colour relative to white, as WCAG 2.2 defines it. */
qreal luminance(const QColor& color)
{
    const auto linear = [](qreal channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/** The contrast ratio of WCAG 2.2, 1 for the same colour. */
qreal contrast(const QColor& one, const QColor& other)
{
    const qreal first = luminance(one) + 0.05;
    const qreal second = luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

/** Places in the outer and the inner half of a border, across one point of a side. */
struct Across
{
    QPointF outer;
    QPointF inner;
};

/** Places along the straight parts of a border's four sides. */
std::vector<Across> placesAlong(const QRectF& place, qreal width, qreal radius)
{
    const auto line = [&place](qreal depth) { return place.adjusted(depth, depth, -depth, -depth); };
    const QRectF outer = line(width * 0.3);
    const QRectF inner = line(width * 0.8);
    const qreal corner = std::max(radius, width);
    std::vector<Across> places;
    for (int i = 0; i < samplesOfSide; ++i) {
        const qreal part = (i + 0.5) / samplesOfSide; // a corner's rounding ends before
        const qreal x = place.left() + corner + part * (place.width() - 2 * corner);
        const qreal y = place.top() + corner + part * (place.height() - 2 * corner);
        places.push_back({{x, outer.top()}, {x, inner.top()}});
        places.push_back({{x, outer.bottom()}, {x, inner.bottom()}});
        places.push_back({{outer.left(), y}, {inner.left(), y}});
        places.push_back({{outer.right(), y}, {inner.right(), y}});
    }
    return places;
}

} // namespace

FocusLook::FocusLook(QQuickWindow& window)
    : m_picture(window.grabWindow()), m_scale(qreal(m_picture.width()) / window.width())
{
    collect(*window.contentItem());
}

void FocusLook::collect(QQuickItem& item)
{
    if (!item.isVisible() || item.opacity() == 0) {
        return;
    }
    const auto* pen = item.property("border").value<QObject*>();
    if (item.inherits("QQuickRectangle") && pen != nullptr) {
        m_borders.insert(&item, {item.mapRectToScene(QRectF(0, 0, item.width(), item.height())),
                                 pen->property("width").toReal(), item.property("radius").toReal(),
                                 pen->property("color").value<QColor>()});
    }
    for (QQuickItem* child : item.childItems()) {
        collect(*child);
    }
}

/** The colour at a place of the scene; none outside the window. */
QColor FocusLook::pixel(const QPointF& at) const
{
    const QPoint place(qFloor(at.x() * m_scale), qFloor(at.y() * m_scale));
    return m_picture.valid(place) ? m_picture.pixelColor(place) : QColor();
}

/** Whether the focus has changed a border, and the pixels of the ring show it. */
bool FocusLook::isRing(const QQuickItem* item, const FocusLook& without) const
{
    const auto found = m_borders.find(item);
    if (found == m_borders.end() || found->width <= 0 || found->color.alpha() < 255 ||
        found->place.width() < smallestRing || found->place.height() < smallestRing) {
        return false;
    }
    const Border before = without.m_borders.value(item, {found->place, 0, 0, QColor()});
    if (found->width == before.width && found->color == before.color) {
        return false;
    }
    const QPointF moved = before.place.topLeft() - found->place.topLeft();
    const auto isColored = [&](const QPointF& at) { return alike(pixel(at), found->color); };
    const auto standsOut = [&](const QPointF& at) {
        return contrast(pixel(at), without.pixel(at + moved)) >= leastContrast;
    };
    const auto places =
        placesAlong(found->place, found->width, std::min(found->radius, found->place.height() / 2));
    return std::all_of(places.begin(), places.end(), [&](const Across& across) {
        return isColored(across.outer) && isColored(across.inner) &&
               (standsOut(across.outer) || standsOut(across.inner));
    });
}

bool FocusLook::hasRing(const QQuickItem& control, const FocusLook& without) const
{
    if (control.inherits("QQuickItemView")) { // its frame is around it, and the current row has a ring, too
        const auto* row = control.property("highlightItem").value<QQuickItem*>();
        return isRing(control.parentItem(), without) && (row == nullptr || isRing(row, without));
    }
    return std::any_of(m_borders.keyBegin(), m_borders.keyEnd(), [&](const QQuickItem* item) {
        return (item == &control || control.isAncestorOf(item)) && isRing(item, without);
    });
}
