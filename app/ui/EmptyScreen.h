// What is shown while no file is open: how to open one, those opened last, and the songs of the list where there is one.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "app/core/SongList.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QVBoxLayout;

namespace quillet {

class Card;
class Label;

class EmptyScreen final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the screen.
    EmptyScreen(AppState& state, SongList& songs, CommandCenter& center, const ThemeSource& source, QWidget* parent = nullptr);

private:
    [[nodiscard]] Card* makeSongCard(SongList& songs);
    void listRecentFiles();

    AppState& m_state;
    CommandCenter& m_center;
    const ThemeSource& m_source;
    Card* m_recent;
    QVBoxLayout* m_rows;
    /// What to do first.
    Label* m_invitation;
};

}  // namespace quillet
