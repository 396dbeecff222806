#include "app/ui/RegionControls.h"

#include "AppCore/TimeIntervalComponents.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/TimePickerField.h"

#include <QGridLayout>

#include <algorithm>

namespace quillet {

RegionControls::RegionControls(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state)
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(12);
    m_start = addRow(*grid, 0, tr("Start"), tr("Region start, %1"), source);
    m_end = addRow(*grid, 1, tr("End"), tr("Region end, %1"), source);
    grid->setColumnStretch(5, 1);
    for (TimePickerField* field : { m_start.minutes, m_start.seconds, m_start.milliseconds })
        field->onCommit([this] { applyStart(); });
    for (TimePickerField* field : { m_end.minutes, m_end.seconds, m_end.milliseconds })
        field->onCommit([this] { applyEnd(); });
    connect(&state, &AppState::regionChanged, this, &RegionControls::syncFromState);
    syncFromState();
}

RegionControls::Fields RegionControls::addRow(QGridLayout& grid, int row, const QString& title, const QString& name,
                                              const ThemeSource& source)
{
    const auto named = [&](const QString& unit) { return name.arg(unit); };
    const Fields fields{ new TimePickerField(source, tr("min"), named(tr("minutes")), { 0, 999 }),
                         new TimePickerField(source, tr("sec"), named(tr("seconds")), { 0, 59 }),
                         new TimePickerField(source, tr("ms"), named(tr("milliseconds")), { 0, 999 }) };
    grid.addWidget(new Label(source, Label::Role::title, title), row, 0);
    grid.addWidget(fields.minutes, row, 1);
    grid.addWidget(new Label(source, Label::Role::title, QStringLiteral(":")), row, 2);
    grid.addWidget(fields.seconds, row, 3);
    grid.addWidget(fields.milliseconds, row, 4);
    return fields;
}

double RegionControls::Fields::time() const
{
    return TimeIntervalComponents{ minutes->value(), seconds->value(), milliseconds->value() }.asTimeInterval();
}

/// What is below a millisecond is not shown, and no change.
bool RegionControls::Fields::hasChanged(double shown) const
{
    return TimeIntervalComponents{ minutes->value(), seconds->value(), milliseconds->value() }
    != TimeIntervalComponents::fromSeconds(shown);
}

void RegionControls::Fields::show(double time) const
{
    const TimeIntervalComponents parts = TimeIntervalComponents::fromSeconds(time);
    minutes->setValue(parts.minutes);
    seconds->setValue(parts.seconds);
    milliseconds->setValue(parts.milliseconds);
}

void RegionControls::syncFromState()
{
    m_start.show(m_state.regionStart());
    m_end.show(m_state.regionEnd());
}

void RegionControls::applyStart()
{
    const TimeRange region = m_state.region();
    if (m_start.hasChanged(region.start))
        apply({ std::max(0.0, std::min(m_start.time(), region.end)), region.end });
}

void RegionControls::applyEnd()
{
    const TimeRange region = m_state.region();
    if (m_end.hasChanged(region.end))
        apply({ region.start, std::max(region.start, std::min(m_end.time(), m_state.audioDuration())) });
}

void RegionControls::apply(const TimeRange& region)
{
    m_state.setRegion(region);
    m_state.restartRegion();
    syncFromState();
}

}  // namespace quillet
