#include "app/ui/settings/CacheSettingsView.h"

#include "app/ui/controls/Card.h"
#include "app/ui/controls/Label.h"

#include <QVBoxLayout>

namespace quillet {

CacheSettingsView::CacheSettingsView(const Services& services, QWidget* parent)
    : QWidget(parent),
      m_services(services),
      m_downloads(new DownloadSettings(services.downloads)),
      m_stems(new StemSettings(services.stems)),
      m_updates(new UpdateSettings(services.cache.theme, services.stems.defaults, services.checkForUpdates)),
      m_language(new LanguageSettings(services.cache.theme, services.stems.defaults, services.changeLanguage)),
      m_cache(new CacheSettings(services.cache))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->setSpacing(6);
    addSection(*column, tr("Song Downloads"), m_downloads);
    addSection(*column, tr("Stem Separation"), m_stems);
    addSection(*column, tr("Updates"), m_updates);
    addSection(*column, tr("Cache"), m_cache);
    addSection(*column, tr("Language"), m_language);
    addSection(*column, tr("Keys"), new KeySettings(services.cache.theme, services.keys));
    column->addStretch();
}

void CacheSettingsView::addSection(QVBoxLayout& column, const QString& title, QWidget* content)
{
    auto* card = new Card(m_services.cache.theme);
    auto* inside = new QVBoxLayout(card);
    inside->setContentsMargins(AppTheme::cardPadding, AppTheme::cardPadding, AppTheme::cardPadding, AppTheme::cardPadding);
    inside->addWidget(content);
    column.addWidget(new Label(m_services.cache.theme, Label::Role::title, title));
    column.addWidget(card);
    column.addSpacing(AppTheme::cardSpacing - 6);
}

void CacheSettingsView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_downloads->loadCurrentSettings();
    m_stems->refreshStemStats();
    m_updates->loadCurrentSettings();
    m_language->loadCurrentSettings();
    m_cache->loadCurrentSettings();
}

}  // namespace quillet
