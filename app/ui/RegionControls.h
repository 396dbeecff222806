// The start and the end of the region in fields for minutes, seconds and milliseconds.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QGridLayout;

namespace quillet {

class TimePickerField;

class RegionControls final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the control.
    RegionControls(AppState& state, PlaybackCommands& commands, const ThemeSource& source, QWidget* parent = nullptr);

private:
    struct Fields {
        TimePickerField* minutes;
        TimePickerField* seconds;
        TimePickerField* milliseconds;

        [[nodiscard]] double time() const;
        void show(double seconds) const;
    };

    [[nodiscard]] Fields addRow(QGridLayout& grid, int row, const QString& title, const ThemeSource& source);
    void syncFromState();
    void applyStart();
    void applyEnd();
    void finishEdit();

    AppState& m_state;
    PlaybackCommands& m_commands;
    Fields m_start;
    Fields m_end;
};

}  // namespace quillet
