// What is shown while no file is open: how to open one, and those opened last.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QVBoxLayout;

namespace quillet {

class Card;

class EmptyScreen final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the screen.
    EmptyScreen(AppState& state, CommandCenter& center, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void listRecentFiles();

    AppState& m_state;
    CommandCenter& m_center;
    const ThemeSource& m_source;
    Card* m_recent;
    QVBoxLayout* m_rows;
};

}  // namespace quillet
