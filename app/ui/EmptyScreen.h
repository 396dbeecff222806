// What is shown while no file is open: how to open one, and those opened last.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/Notifications.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QVBoxLayout;

namespace quillet {

class Card;

class EmptyScreen final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the screen.
    EmptyScreen(AppState& state, Notifications& notifications, const ThemeSource& source, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void listRecentFiles();

    AppState& m_state;
    Notifications& m_notifications;
    const ThemeSource& m_source;
    QWidget* m_symbol;
    Card* m_recent;
    QVBoxLayout* m_rows;
};

}  // namespace quillet
