// The songs that the user goes through: several files, or those of a folder, in an order. It knows which of them is open by the
// state and opens none itself; another song may be open while there is a list. It is kept while the program runs.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"

#include <QObject>

#include <cstddef>
#include <optional>
#include <vector>

namespace quillet {

class SongList final : public QObject {
    Q_OBJECT

public:
    /// `state` outlives the list.
    explicit SongList(const AppState& state, QObject* parent = nullptr);

    /// In place of the list before; each song stands in it once, by its normal path.
    void setSongs(std::vector<FilePath> songs);
    void forget() { setSongs({}); }

    /// Empty: there is no list.
    [[nodiscard]] const std::vector<FilePath>& songs() const { return m_songs; }
    /// The one that is open, is being opened, or was to be opened and could not; nothing while a song is open that is not in
    /// the list.
    [[nodiscard]] std::optional<std::size_t> current() const;
    /// Whether it could not be opened when it was tried last.
    [[nodiscard]] bool isUnreadable(std::size_t index) const { return m_isUnreadable.at(index); }

    /// The neighbours of the current one, or of the place where the list was left; null at its ends.
    [[nodiscard]] const FilePath* previous() const;
    [[nodiscard]] const FilePath* next() const;

Q_SIGNALS:
    /// There are other songs.
    void songsChanged();
    /// Another one is current, or one of them turned out to be unreadable or not.
    void placeChanged();

private:
    void followSong();
    void followLoading();

    const AppState& m_state;
    std::vector<FilePath> m_songs;
    std::vector<bool> m_isUnreadable;
    /// Of the current song, or of the last that was.
    std::size_t m_place = 0;
    bool m_isAtPlace = false;
};

}  // namespace quillet
