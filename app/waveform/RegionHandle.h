// One end of the selected region, for the keyboard and for those who hear the screen: an invisible control over the waveform
// that takes the focus, moves by keys, and speaks its time as a slider does. The mouse does not see it; the waveform view draws
// and drags the handle.
// Threads: main thread.
#pragma once

#include <QColor>
#include <QWidget>

#include <functional>

namespace quillet {

class RegionHandle final : public QWidget {
    Q_OBJECT

public:
    enum class Side { start, end };
    /// How far a key moves it: a hundredth of a second, a second, or as far as it goes; earlier or later.
    enum class Move { fineEarlier, fineLater, coarseEarlier, coarseLater, toFirst, toLast };

    RegionHandle(Side side, QWidget* parent);

    [[nodiscard]] Side side() const { return m_side; }
    void setFocusColor(const QColor& color);
    /// Seconds; spoken.
    void setTime(double seconds, double durationSeconds);
    [[nodiscard]] double time() const { return m_time; }
    [[nodiscard]] double duration() const { return m_duration; }

    void onMove(std::function<void(Move move)> move) { m_onMove = std::move(move); }
    void onMoveEnded(std::function<void()> ended) { m_onMoveEnded = std::move(ended); }
    void wishMove(Move move) { m_onMove(move); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Side m_side;
    double m_time = 0;
    double m_duration = 0;
    QColor m_focusColor;
    std::function<void(Move move)> m_onMove;
    std::function<void()> m_onMoveEnded;
};

/// "1 minute 5.48 seconds".
[[nodiscard]] QString spokenTime(double seconds);

}  // namespace quillet
