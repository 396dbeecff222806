#include "app/core/SongList.h"

#include <algorithm>
#include <utility>

namespace quillet {

SongList::SongList(const AppState& state, QObject* parent)
    : QObject(parent),
      m_state(state)
{
    connect(&state, &AppState::audioFileURLChanged, this, &SongList::followSong);
    connect(&state, &AppState::loadingStateChanged, this, &SongList::followLoading);
}

void SongList::setSongs(std::vector<FilePath> songs)
{
    m_songs = std::move(songs);
    m_isUnreadable.assign(m_songs.size(), false);
    m_place = 0;
    m_isAtPlace = false;
    Q_EMIT songsChanged();
    followSong();
}

std::optional<std::size_t> SongList::current() const { return m_isAtPlace ? std::optional(m_place) : std::nullopt; }

const FilePath* SongList::previous() const
{
    // Where another song is open, the one that was left comes first.
    const std::size_t after = m_isAtPlace ? m_place : m_place + 1;
    return m_songs.empty() || after == 0 ? nullptr : &m_songs[after - 1];
}

const FilePath* SongList::next() const { return m_place + 1 < m_songs.size() ? &m_songs[m_place + 1] : nullptr; }

void SongList::followSong()
{
    // None is open any more: what could not be opened stays where the list is.
    if (!m_state.audioFileURL())
        return;
    const auto found = std::ranges::find(m_songs, *m_state.audioFileURL());
    m_isAtPlace = found != m_songs.end();
    if (m_isAtPlace)
        m_place = static_cast<std::size_t>(found - m_songs.begin());
    Q_EMIT placeChanged();
}

void SongList::followLoading()
{
    const auto stage = m_state.loadingState().stage;
    if (stage == LoadingState::Stage::loading || !m_isAtPlace)
        return;
    // An opening has ended, with a song or without.
    m_isUnreadable[m_place] = stage == LoadingState::Stage::idle;
    Q_EMIT placeChanged();
}

}  // namespace quillet
