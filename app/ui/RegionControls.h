// The start and the end of the region in fields for minutes, seconds and milliseconds.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QGridLayout;

namespace quillet {

class TimePickerField;

class RegionControls final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the control.
    RegionControls(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    struct Fields {
        TimePickerField* minutes;
        TimePickerField* seconds;
        TimePickerField* milliseconds;

        [[nodiscard]] double time() const;
        /// Whether they say another time than the one that was shown in them, seconds.
        [[nodiscard]] bool hasChanged(double shown) const;
        void show(double seconds) const;
    };

    /// `name` is what a field is called, with its unit in place of %1.
    [[nodiscard]] Fields addRow(QGridLayout& grid, int row, const QString& title, const QString& name,
                                const ThemeSource& source);
    void syncFromState();
    void applyStart();
    void applyEnd();
    void apply(const TimeRange& region);

    AppState& m_state;
    Fields m_start;
    Fields m_end;
};

}  // namespace quillet
