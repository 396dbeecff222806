// The one window: menus, its content, and where it stood the last time.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/Notifications.h"
#include "app/ui/ContentView.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QMainWindow>

namespace quillet {

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    /// `defaults` keeps the window's place; all outlive the window. The window is bare at first, so that it can be shown at
    /// once: loading fonts alone takes as long as showing it.
    MainWindow(const ContentView::Services& services, DefaultsDomain& defaults);

    /// Gives the window its menus and its content. Once, when it is on the screen.
    void populate();
    /// After `populate`.
    [[nodiscard]] ContentView& content() { return *m_content; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void restorePlace();

    ContentView::Services m_services;
    DefaultsDomain& m_defaults;
    ContentView* m_content = nullptr;
};

}  // namespace quillet
