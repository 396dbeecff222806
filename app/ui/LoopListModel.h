// The saved loops of the open song for a list view: their names can be edited and their order changed in it. It goes through
// the state with everything.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"

#include <QAbstractListModel>

namespace quillet {

class LoopListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    /// Whoever shows the last two repaints when the state's region, waiting loop or list changes: no change of the model tells.
    enum Role { colorRole = Qt::UserRole, presentRole, waitingRole };

    /// `state` outlives the model.
    explicit LoopListModel(AppState& state, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

    // ---- Another order, by drag and drop ----

    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column, const QModelIndex& parent) override;

private:
    [[nodiscard]] QString describe(const NamedLoop& loop) const;

    AppState& m_state;
};

}  // namespace quillet
