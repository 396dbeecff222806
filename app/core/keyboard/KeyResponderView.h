// The player, as far as the keyboard is concerned: it has the focus whenever nothing else in the window has it on purpose, and
// makes the space bar play and pause. On purpose is a text that is being edited, and a control that Tab has led to. It cannot
// be seen.
// Threads: main thread.
#pragma once

#include "app/core/CommandCenter.h"

#include <QPointer>
#include <QWidget>

namespace quillet {

class KeyResponderView final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    KeyResponderView(AppState& state, CommandCenter& center, QWidget* parent);

    /// Takes the focus, whoever has it in this window; what was being typed is committed.
    void takeFocus();

    /// Plays or pauses if the event is a press of the space bar; whether it is. For a press that nothing else has handled too.
    bool takeSpace(const QKeyEvent& event);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void takeFocusIfNobodyHasIt();
    void noteKey(const QObject* watched, const QKeyEvent& event);
    [[nodiscard]] bool mayHaveFocus(const QWidget& widget, Qt::FocusReason reason) const;
    void followLoading();

    AppState& m_state;
    CommandCenter& m_center;
    /// Where the focus is on purpose.
    QPointer<QWidget> m_chosen;
    /// While a press of Tab is carried out.
    bool m_isTabbing = false;
    LoadingState::Stage m_stage;
};

}  // namespace quillet
