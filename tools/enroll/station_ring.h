#pragma once

#include "enroll/station_plan.h"

#include <QImage>
#include <QWidget>

namespace enroll {

/// A ring with one segment for each station: filled, passed, asked for, or still to come. In its
/// middle the newest sample.
class StationRing : public QWidget {
    Q_OBJECT

public:
    explicit StationRing(QWidget* parent = nullptr);

    /// Also renews what screen readers say of the ring.
    void setPlan(const StationPlan& plan);
    void setCrop(const QImage& crop);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor colorOf(std::size_t station) const;

    StationPlan plan;
    QImage crop;
};

} // namespace enroll
