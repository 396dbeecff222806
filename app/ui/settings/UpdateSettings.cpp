#include "app/ui/settings/UpdateSettings.h"

#include "app/ui/AppTheme.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace quillet {
namespace {

constexpr int fieldPadding = 6;

}  // namespace

UpdateSettings::UpdateSettings(const ThemeSource& source, DefaultsDomain& defaults, std::function<void()> check,
                               QWidget* parent)
    : QWidget(parent),
      m_defaults(defaults),
      m_feed(new QLineEdit)
{
    auto* button = new QPushButton(tr("Check for Updates…"));
    button->setAutoDefault(false);
    connect(button, &QAbstractButton::clicked, this, [check = std::move(check)] { check(); });
    auto* version = new QHBoxLayout;
    version->addWidget(new Label(source, Label::Role::text, tr("Quillet v%1").arg(QCoreApplication::applicationVersion())));
    version->addStretch(1);
    version->addWidget(button);
    m_feed->setPlaceholderText(QStringLiteral("https://"));
    m_feed->setAccessibleName(tr("Update feed"));
    m_feed->setFixedHeight(scaled(AppTheme::controlHeight));
    m_feed->setTextMargins(fieldPadding, 0, fieldPadding, 0);
    connect(m_feed, &QLineEdit::editingFinished, this, [this] {
        const std::string address = m_feed->text().trimmed().toStdString();
        if (address.empty())
            m_defaults.remove(feedKey);
        else
            m_defaults.setString(feedKey, address);
    });
    auto* feed = new QHBoxLayout;
    feed->setSpacing(12);
    feed->addWidget(new Label(source, Label::Role::text, tr("Update feed")));
    feed->addWidget(m_feed, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addLayout(version);
    column->addLayout(feed);
}

void UpdateSettings::loadCurrentSettings() { m_feed->setText(QString::fromStdString(m_defaults.string(feedKey).value_or(""))); }

}  // namespace quillet
