// SPDX-License-Identifier: MIT
#pragma once

#include "preview/histogram.h"

#include <QWidget>

namespace filmwright {

/// Shows how the values of a picture are spread, red, green and blue over each other, and says
/// below how much of each is clipped.
class HistogramView : public QWidget
{
    Q_OBJECT

public:
    explicit HistogramView(QWidget *parent = nullptr);

    void setHistogram(const Histogram &histogram);
    /// "Clipped: red 0.3 %, green 0.0 %, blue 2.1 %"
    QString text() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Histogram m_histogram;
};

} // namespace filmwright
