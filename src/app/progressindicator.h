// SPDX-License-Identifier: MIT
#pragma once

#include <QBasicTimer>
#include <QProgressBar>

namespace filmwright {

/// A progress bar that keeps its range and value while it shows work of unknown length, by a part
/// that goes to and fro.
class ProgressIndicator : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget *parent = nullptr);

    bool isIndeterminate() const { return m_indeterminate; }
    void setIndeterminate(bool indeterminate);

    double minValue() const { return m_minValue; }
    void setMinValue(double value);
    double maxValue() const { return m_maxValue; }
    void setMaxValue(double value);
    /// Within the range, to the step that a pixel can show.
    double doubleValue() const { return m_doubleValue; }
    void setDoubleValue(double value);

    /// Whether work goes on. Only then does an indeterminate bar move.
    bool isAnimating() const { return m_animating; }
    void startAnimation();
    void stopAnimation();

protected:
    void initStyleOption(QStyleOptionProgressBar *option) const override;
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    bool isBusy() const { return m_indeterminate && m_animating; }
    void refresh();

    bool m_indeterminate = false;
    bool m_animating = false;
    double m_minValue = 0;
    double m_maxValue = 3; // the stages of a recording
    double m_doubleValue = 0;
    QBasicTimer m_motion;
};

} // namespace filmwright
