// The settings window: it stands beside the main one, and what is set in it holds at once.
// Threads: main thread.
#pragma once

#include "app/ui/settings/CacheSettingsView.h"

#include <QDialog>

namespace quillet {

class SettingsWindow final : public QDialog {
    Q_OBJECT

public:
    explicit SettingsWindow(const CacheSettingsView::Services& services, QWidget* parent = nullptr);

    /// In front, with the keys.
    void present();
};

}  // namespace quillet
