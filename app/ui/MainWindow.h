// The one window: menus, its content, and where it stood the last time.
// Threads: main thread.
#pragma once

#include "app/ui/ContentView.h"
#include "app/ui/Translations.h"

#include <QMainWindow>

class QMenu;

namespace quillet {

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    /// All outlive the window, the translations too, in whose language it speaks. It is bare at first, so that it can be shown
    /// at once: loading fonts alone takes as long as showing it.
    MainWindow(const ContentView::Services& services, Translations& translations);

    /// Gives the window its menus and its content. Once, when it is on the screen.
    void populate();
    /// After `populate`.
    [[nodiscard]] ContentView& content() { return *m_content; }
    /// What the window says for as long as it is so: that nothing can be heard, and that the settings cannot be saved.
    void setHeard(bool isHeard);
    void setSettingsHealth(const DefaultsHealth& health);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void changeLanguage();
    void buildMenus();
    void followKeys(QAction& action, const Command& command);
    void followHistory(QAction& action, CommandId id);
    void followLoops(QAction& action, bool needsLoops);
    void followTrainer(QAction& action);
    void followChoice(QAction& action);
    void followSongs(QAction& action, CommandId id);
    void addRecentFiles(QMenu& menu);
    void addQuit(QMenu& menu);
    /// Shows the action while there are stems, or while there are none.
    void followStems(QAction& action, bool isForStems);
    void restorePlace();
    void syncTitle();

    ContentView::Services m_services;
    Translations& m_translations;
    ContentView* m_content = nullptr;
    bool m_isHeard = true;
    DefaultsHealth m_settingsHealth;
};

}  // namespace quillet
