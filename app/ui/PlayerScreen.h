// What is shown while a file is open: the waveform, and under it, scrolling where there is not room enough, the controls. Two
// columns where the window is wide, one where it is not.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "app/playback/AudioEngine.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <vector>

class QGridLayout;
class QScrollArea;

namespace quillet {

class Card;

class PlayerScreen final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the screen.
    PlayerScreen(AppState& state, AudioEngine& engine, PlaybackCommands& commands, const ThemeSource& source,
                 QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class Columns { unknown, one, two };

    [[nodiscard]] Card* cardAround(QWidget* content, const ThemeSource& source);
    void arrange();
    void placeCards();

    Card* m_waveform;
    QScrollArea* m_scroll;
    QGridLayout* m_grid;
    /// Region, transport, speed, pitch, loop, equaliser.
    std::vector<Card*> m_cards;
    Columns m_columns = Columns::unknown;
};

}  // namespace quillet
