#pragma once

#include "desk/TalkMeters.h"

#include <QColor>
#include <QPointer>
#include <QQuickPaintedItem>

/** The peaks of the last ten seconds of a talk as a line, the newest on the right. */
class WaveformItem : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(TalkMeters* meters READ meters WRITE setMeters NOTIFY metersChanged)
    /** TalkMeters::Direction. */
    Q_PROPERTY(int direction MEMBER m_direction NOTIFY lookChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY lookChanged)

public:
    explicit WaveformItem(QQuickItem* parent = nullptr);

    TalkMeters* meters() const { return m_meters; }
    void setMeters(TalkMeters* meters);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void metersChanged();
    void lookChanged();

private:
    QPointer<TalkMeters> m_meters;
    int m_direction = TalkMeters::Captured;
    QColor m_color = Qt::black;
};
