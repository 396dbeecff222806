// What is shown while a file is being opened: that something goes on, and how far it is.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QProgressBar;

namespace quillet {

class Label;

class LoadingScreen final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the screen.
    LoadingScreen(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void sync();

    AppState& m_state;
    Label* m_message;
    QProgressBar* m_bar;
};

}  // namespace quillet
