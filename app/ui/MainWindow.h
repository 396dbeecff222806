// The one window: menus, its content, and where it stood the last time.
// Threads: main thread.
#pragma once

#include "app/ui/ContentView.h"

#include <QMainWindow>

class QMenu;

namespace quillet {

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    /// All outlive the window. It is bare at first, so that it can be shown at once: loading fonts alone takes as long as
    /// showing it.
    explicit MainWindow(const ContentView::Services& services);

    /// Gives the window its menus and its content. Once, when it is on the screen.
    void populate();
    /// After `populate`.
    [[nodiscard]] ContentView& content() { return *m_content; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void buildMenus();
    void addRecentFiles(QMenu& menu);
    void addQuit(QMenu& menu);
    /// Shows the action while there are stems, or while there are none.
    void followStems(QAction& action, bool isForStems);
    void restorePlace();
    void syncTitle();

    ContentView::Services m_services;
    ContentView* m_content = nullptr;
};

}  // namespace quillet
