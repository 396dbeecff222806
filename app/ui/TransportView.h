// Play and pause, hold, and where the play head is.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QLabel;

namespace quillet {

/// "01:05.480": minutes (more digits from 100 on), seconds and milliseconds, truncated. `seconds` × 1000 fits a signed 64-bit
/// integer (REQUIRE).
[[nodiscard]] QString formattedPosition(double seconds);

class HoldButton;
class PlayButton;

class TransportView final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    TransportView(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void syncButtons();
    void syncPosition();

    AppState& m_state;
    PlayButton* m_play;
    HoldButton* m_hold;
    QLabel* m_position;
};

}  // namespace quillet
