// The content of the settings window. What is changed holds at once; it keeps nothing of its own.
// Threads: main thread.
#pragma once

#include "app/ui/settings/CacheSettings.h"
#include "app/ui/settings/DownloadSettings.h"
#include "app/ui/settings/KeySettings.h"
#include "app/ui/settings/LanguageSettings.h"
#include "app/ui/settings/StemSettings.h"
#include "app/ui/settings/UpdateSettings.h"

#include <QWidget>

#include <functional>

class QVBoxLayout;

namespace quillet {

class CacheSettingsView final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view, and the background's jobs that it has started.
    struct Services {
        StemSettings::Services stems;
        CacheSettings::Services cache;
        DownloadSettings::Services downloads;
        /// Asks for a newer version, now.
        std::function<void()> checkForUpdates;
        /// Takes up the chosen language in the whole window, later, or cannot now.
        std::function<bool()> changeLanguage;
        KeyMap& keys;
    };

    explicit CacheSettingsView(const Services& services, QWidget* parent = nullptr);

    [[nodiscard]] QWidget& language() { return *m_language; }

protected:
    /// Shows everything as it is now.
    void showEvent(QShowEvent* event) override;

private:
    void addSection(QVBoxLayout& column, const QString& title, QWidget* content);

    Services m_services;
    DownloadSettings* m_downloads;
    StemSettings* m_stems;
    UpdateSettings* m_updates;
    LanguageSettings* m_language;
    CacheSettings* m_cache;
};

}  // namespace quillet
