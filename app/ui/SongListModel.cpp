#include "app/ui/SongListModel.h"

#include "app/ui/FileNames.h"

namespace quillet {

SongListModel::SongListModel(const SongList& songs, QObject* parent)
    : QAbstractListModel(parent),
      m_songs(songs)
{
    connect(&songs, &SongList::songsChanged, this, &SongListModel::reset);
    connect(&songs, &SongList::placeChanged, this, [this] {
        if (rowCount() > 0)
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    });
    reset();
}

void SongListModel::reset()
{
    beginResetModel();
    m_names = listNames(m_songs.songs());
    endResetModel();
}

int SongListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : static_cast<int>(m_names.size()); }

QVariant SongListModel::data(const QModelIndex& index, int role) const
{
    const auto row = static_cast<std::size_t>(index.row());
    // The list has changed already, and the names have not yet.
    if (!index.isValid() || row >= m_names.size() || m_names.size() != m_songs.songs().size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return m_names[row];
    case Qt::AccessibleTextRole:
        if (m_songs.isUnreadable(row))
            return tr("%1, cannot be opened", "A song").arg(m_names[row]);
        return m_songs.current() == row ? tr("%1, the present song", "A song").arg(m_names[row]) : m_names[row];
    case Qt::ToolTipRole:
        return toolTipText(pathText(m_songs.songs()[row]));
    case currentRole:
        return m_songs.current() == row;
    case unreadableRole:
        return m_songs.isUnreadable(row);
    default:
        return {};
    }
}

QString placeText(const SongList& songs)
{
    const auto count = static_cast<int>(songs.songs().size());
    const auto current = songs.current();
    return current ? SongListModel::tr("%1 of %2", "The number of a song in a list").arg(*current + 1).arg(count)
                   : SongListModel::tr("%1 songs").arg(count);
}

}  // namespace quillet
