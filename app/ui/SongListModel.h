// The list of songs for a list view: their names, which of them is current and which could not be opened.
// Threads: main thread.
#pragma once

#include "app/core/SongList.h"

#include <QAbstractListModel>
#include <QString>

#include <vector>

namespace quillet {

class SongListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { currentRole = Qt::UserRole, unreadableRole };

    /// `songs` outlives the model.
    explicit SongListModel(const SongList& songs, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    void reset();

    const SongList& m_songs;
    std::vector<QString> m_names;
};

/// Where the list is: "3 of 12", or how many songs it has.
[[nodiscard]] QString placeText(const SongList& songs);

}  // namespace quillet
