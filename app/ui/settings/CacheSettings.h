// How many waveforms are kept, what they take, their limits, and the button that clears them.
// Threads: main thread; the store is asked on the background's.
#pragma once

#include "AppCore/SettingsStore.h"
#include "AppCore/WaveformCache.h"
#include "app/ui/ThemeSource.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QWidget>

namespace quillet {

class Label;
class LimitPicker;

class CacheSettings final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view, and the background's jobs that it has started.
    struct Services {
        const ThemeSource& theme;
        WaveformCache& cache;
        SettingsStore& settings;
        BackgroundRunner& background;
        Scheduler& scheduler;
    };

    explicit CacheSettings(const Services& services, QWidget* parent = nullptr);

    /// Shows the limits that the cache has, and its size.
    void loadCurrentSettings();

private:
    void refreshStats(bool clearFirst = false);
    [[nodiscard]] bool commitCustomSize(const QString& text);
    [[nodiscard]] bool commitCustomAge(const QString& text);
    void confirmClear();

    Services m_services;
    Label* m_entries;
    Label* m_totalSize;
    LimitPicker* m_size;
    LimitPicker* m_age;
};

}  // namespace quillet
