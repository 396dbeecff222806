// The navy bar at the window's top: opening, recent files, the open file's name or what is being loaded, help. It acts only by
// giving commands.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QMenu;
class QPushButton;

namespace quillet {

class BusyIndicator;
class ElidedLabel;
class SymbolButton;

class ToolBar final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the bar.
    ToolBar(AppState& state, CommandCenter& center, const ThemeSource& source, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void syncLoading();
    void syncStems();

    AppState& m_state;
    QPushButton* m_open;
    /// Makes stems, or removes them.
    QPushButton* m_stems;
    QPushButton* m_recent;
    BusyIndicator* m_busy;
    ElidedLabel* m_title;
};

/// Fills `menu` with the recent files, a divider and "Clear Recents"; or with "No Recent Files".
void fillRecentMenu(QMenu& menu, const AppState& state, CommandCenter& center);

}  // namespace quillet
