// The one window: menus, its content, and where it stood the last time. Threads: main thread.
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
    /// `defaults` keeps the window's place; all outlive the window.
    MainWindow(const ContentView::Services& services, DefaultsDomain& defaults);

    [[nodiscard]] ContentView& content() { return *m_content; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus(AppState& state, Notifications& notifications);
    void restorePlace();

    DefaultsDomain& m_defaults;
    ContentView* m_content;
};

}  // namespace quillet
