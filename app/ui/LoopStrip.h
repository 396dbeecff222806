// The saved loops of the open song as a row of chips, each called up by a click, and the button that plays them one after the
// other. Without loops it takes no room.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <optional>

class QListView;
class QMenu;
class QModelIndex;
class QPushButton;

namespace quillet {

class LoopListModel;

class LoopStrip final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the strip.
    LoopStrip(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void sync();
    void call(const QModelIndex& index);
    void remove(const QModelIndex& index);
    void showMenu(const QPoint& place);
    void addColors(QMenu& menu, std::size_t loop);
    void addTimes(QMenu& menu, std::size_t loop);
    void nameLoop(std::size_t loop);
    void openName();

    AppState& m_state;
    const ThemeSource& m_source;
    LoopListModel* m_model;
    QListView* m_chips;
    QPushButton* m_playList;
    /// Saved, and not named yet.
    std::optional<std::size_t> m_toBeNamed;
};

}  // namespace quillet
