// The list of songs to choose from, by mouse or by keys; a letter goes to the next song that begins with it. It comes into view
// with the current song.
// Threads: main thread.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/core/SongList.h"
#include "app/ui/ThemeSource.h"

#include <QListView>

namespace quillet {

class SongListModel;

class SongListView final : public QListView {
    Q_OBJECT

public:
    /// All outlive the view.
    SongListView(const SongList& songs, CommandCenter& center, const ThemeSource& source, QWidget* parent = nullptr);

    /// As high as all songs, and at most as high as so many.
    [[nodiscard]] int heightOfRows(int most) const;

Q_SIGNALS:
    /// A song has been chosen, and is being opened.
    void chosen();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(const QModelIndex& index);

    const SongList& m_songs;
    CommandCenter& m_center;
    /// The view's own only while it is in view: to a screen reader the songs of a hidden one would seem to be there.
    SongListModel* m_model;
};

}  // namespace quillet
