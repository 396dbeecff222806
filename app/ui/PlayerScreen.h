// What is shown while a file is open: the waveform, which takes the height that the page leaves, and the controls, which scroll
// where there is not room enough. The controls stand in one column in a narrow window and in two in a wider one; a wide window
// is a page of two columns, with what sets the sound beside what one plays with.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"
#include "app/ui/WaveformPanel.h"

#include <QWidget>

class QScrollArea;
class QVBoxLayout;

namespace quillet {

class Card;

class PlayerScreen final : public QWidget {
    Q_OBJECT

public:
    /// Both, and what the waveform needs, outlive the screen.
    PlayerScreen(AppState& state, const ThemeSource& source, const WaveformPanel::Services& waveform,
                 QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Page { unknown, narrow, usual, wide };

    [[nodiscard]] static Card* cardAround(QWidget* content, const ThemeSource& source);
    void arrange();
    void placeCards();
    void syncStems();

    AppState& m_state;
    Card* m_waveform;
    /// In view only while there are stems.
    Card* m_stems;
    Card* m_region;
    Card* m_transport;
    Card* m_speed;
    Card* m_pitch;
    Card* m_loop;
    Card* m_equalizer;
    QScrollArea* m_scroll;
    /// What scrolls; and what stands beside the waveform on a wide page.
    QWidget* m_controls;
    QVBoxLayout* m_column;
    /// On a wide page what stands under the waveform.
    QWidget* m_below;
    QVBoxLayout* m_belowColumn;
    Page m_page = Page::unknown;
};

}  // namespace quillet
