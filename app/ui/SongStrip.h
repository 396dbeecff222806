// The place in the list of songs on a thin strip over the player: its neighbours, all songs to choose from, and the way out of
// the list. Without a list it takes no room.
// Threads: main thread.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/core/SongList.h"
#include "app/ui/ThemeSource.h"

#include <QPointer>
#include <QWidget>

class QPushButton;

namespace quillet {

class SymbolButton;

class SongStrip final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the strip.
    SongStrip(const AppState& state, SongList& songs, CommandCenter& center, const ThemeSource& source,
              QWidget* parent = nullptr);

    /// The songs to choose from; null while they are not shown.
    [[nodiscard]] QWidget* popup() const { return m_popup; }

private:
    void sync();
    void showSongs();

    const AppState& m_state;
    SongList& m_songs;
    CommandCenter& m_center;
    const ThemeSource& m_source;
    SymbolButton* m_previous;
    QPushButton* m_place;
    SymbolButton* m_next;
    QPointer<QWidget> m_popup;
};

}  // namespace quillet
