// Has the focus whenever nothing else in the window has it, and makes the space bar play and pause. It cannot be seen.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"

#include <QWidget>

namespace quillet {

class KeyResponderView final : public QWidget {
    Q_OBJECT

public:
    /// `state` outlives the view.
    KeyResponderView(AppState& state, QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void takeFocusIfNobodyHasIt();

    AppState& m_state;
};

}  // namespace quillet
