// The settings window: it stands beside the main one, and what is set in it holds at once.
// Threads: main thread.
#pragma once

#include "app/ui/settings/CacheSettingsView.h"

#include <QDialog>

class QScrollArea;

namespace quillet {

class SettingsWindow final : public QDialog {
    Q_OBJECT

public:
    explicit SettingsWindow(const CacheSettingsView::Services& services, QWidget* parent = nullptr);

    /// In front, with the keys.
    void present();
    /// The same, at the choice of the language.
    void presentLanguage();

private:
    CacheSettingsView* m_view;
    QScrollArea* m_scroll;
};

}  // namespace quillet
