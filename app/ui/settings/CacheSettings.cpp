#include "app/ui/settings/CacheSettings.h"

#include "AppCore/CacheLimits.h"
#include "app/ui/Questions.h"
#include "app/ui/controls/DecimalText.h"
#include "app/ui/controls/Label.h"
#include "app/ui/settings/LimitPicker.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace quillet {
namespace {

template <typename Presets> QStringList labelsOf(const Presets& presets)
{
    QStringList labels;
    for (const auto& preset : presets)
        labels << CacheSettings::tr(preset.label);
    return labels;
}

// The labels of the presets, for translation.
[[maybe_unused]] constexpr const char* presetTexts[] = {
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "1 MB"),      QT_TRANSLATE_NOOP("quillet::CacheSettings", "50 MB"),
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "100 MB"),    QT_TRANSLATE_NOOP("quillet::CacheSettings", "Unlimited"),
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "Custom"),    QT_TRANSLATE_NOOP("quillet::CacheSettings", "7 days"),
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "14 days"),   QT_TRANSLATE_NOOP("quillet::CacheSettings", "1 month"),
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "6 months"),  QT_TRANSLATE_NOOP("quillet::CacheSettings", "1 year"),
    QT_TRANSLATE_NOOP("quillet::CacheSettings", "Indefinite")
};

}  // namespace

CacheSettings::CacheSettings(const Services& services, QWidget* parent)
    : QWidget(parent),
      m_services(services),
      m_entries(new Label(services.theme, Label::Role::number, {})),
      m_totalSize(new Label(services.theme, Label::Role::number, {})),
      m_size(new LimitPicker(
          services.theme,
          { tr("Max Cache Size"), tr("Size limit"), tr("MB"), {}, tr("Type a whole number of megabytes, at least 1.") },
          labelsOf(sizePresets),
          { [this](int place) {
               const auto& row = sizePresets.at(static_cast<std::size_t>(place));
               if (row.preset != SizePreset::custom)
                   m_services.cache.setMaxTotalBytes(row.limit);
           },
            [this](const QString& text) { return commitCustomSize(text); } })),
      m_age(new LimitPicker(
          services.theme,
          { tr("Max Cache Age"), tr("Age limit"), tr("Days"), tr("days"), tr("Type a whole number of days, at least 1.") },
          labelsOf(agePresets),
          { [this](int place) {
               const auto& row = agePresets.at(static_cast<std::size_t>(place));
               if (row.preset != AgePreset::custom)
                   m_services.cache.setMaxAgeSeconds(row.limit);
           },
            [this](const QString& text) { return commitCustomAge(text); } }))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    const auto addRow = [&](const QString& name, Label* value) {
        auto* row = new QHBoxLayout;
        row->addWidget(new Label(services.theme, Label::Role::text, name));
        row->addStretch(1);
        row->addWidget(value);
        column->addLayout(row);
    };
    addRow(tr("Entries"), m_entries);
    addRow(tr("Total size"), m_totalSize);
    column->addWidget(m_size);
    column->addWidget(m_age);
    auto* clear = new QPushButton(tr("Clear Cache…"));
    clear->setAutoDefault(false);
    connect(clear, &QAbstractButton::clicked, this, &CacheSettings::confirmClear);
    column->addWidget(clear, 0, Qt::AlignRight);
}

void CacheSettings::loadCurrentSettings()
{
    const auto bytes = m_services.cache.maxTotalBytes();
    const auto seconds = m_services.cache.maxAgeSeconds();
    m_size->show(static_cast<int>(presetOf(sizePresets, bytes)), bytes ? QString::number(*bytes / bytesPerMB) : QString());
    m_age->show(static_cast<int>(presetOf(agePresets, seconds)),
                seconds ? QString::number(std::floor(*seconds / secondsPerDay), 'f', 0) : QString());
    refreshStats();
}

bool CacheSettings::commitCustomSize(const QString& text)
{
    const auto megabytes = customLimit(text.toStdString());
    if (megabytes)
        m_services.cache.setMaxTotalBytes(*megabytes * bytesPerMB);
    return megabytes.has_value();
}

bool CacheSettings::commitCustomAge(const QString& text)
{
    const auto days = customLimit(text.toStdString());
    if (days)
        m_services.cache.setMaxAgeSeconds(static_cast<double>(*days) * secondsPerDay);
    return days.has_value();
}

void CacheSettings::refreshStats(bool clearFirst)
{
    m_services.background.run([services = m_services, self = QPointer(this), clearFirst] {
        if (clearFirst) {
            services.cache.clearAll();
            services.settings.clearAll();
        }
        services.scheduler.post([self, entryCount = services.cache.entryCount(), totalBytes = services.cache.totalBytes()] {
            if (!self)
                return;
            self->m_entries->setText(QString::number(entryCount));
            self->m_totalSize->setText(
                tr("%1 MB").arg(decimalText(static_cast<double>(totalBytes) / static_cast<double>(bytesPerMB))));
        });
    });
}

void CacheSettings::confirmClear()
{
    makeQuestion(*this, { tr("Clear all cached waveforms and saved song settings?"), {}, tr("Clear Cache & Settings"), true },
                 [this] { refreshStats(true); })
        ->open();
}

}  // namespace quillet
