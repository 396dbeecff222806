#include "app/ui/StemControlsView.h"

#include "app/ui/QuilletStyle.h"
#include "app/ui/Symbol.h"
#include "app/ui/controls/Fader.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr int symbolSize = 18;
constexpr int widthForThreeColumns = 840;
constexpr int widthForTwoColumns = 560;
constexpr int decibelsWidth = 66;

constexpr std::array<const char*, StemSession::keys.size()> names{
    QT_TRANSLATE_NOOP("StemControlsView", "Vocals"), QT_TRANSLATE_NOOP("StemControlsView", "Drums"),
    QT_TRANSLATE_NOOP("StemControlsView", "Bass"),   QT_TRANSLATE_NOOP("StemControlsView", "Guitar"),
    QT_TRANSLATE_NOOP("StemControlsView", "Piano"),  QT_TRANSLATE_NOOP("StemControlsView", "Other"),
};

/// The place of a stem among the six; the last one's for a key that is none of theirs.
std::size_t placeOf(std::string_view key)
{
    const auto found = std::ranges::find(StemSession::keys, key);
    return std::min<std::size_t>(static_cast<std::size_t>(found - StemSession::keys.begin()), StemSession::keys.size() - 1);
}

QString nameOf(const std::string& key)
{
    return StemSession::keys[placeOf(key)] == key ? QCoreApplication::translate("StemControlsView", names[placeOf(key)])
                                                  : QString::fromStdString(StemSession::displayName(key));
}

QColor colorOf(std::string_view key) { return AppTheme::stemColors[placeOf(key)]; }

QString symbolOf(std::string_view key)
{
    const std::string_view known = StemSession::keys[placeOf(key)];
    return QStringLiteral("stem.") + QLatin1String(known.data(), static_cast<qsizetype>(known.size()));
}

}  // namespace

StemControlsView::StemControlsView(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_source(source),
      m_grid(new QGridLayout)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(new Label(source, Label::Role::title, tr("Stems")));
    m_grid->setHorizontalSpacing(AppTheme::cardSpacing + 8);
    m_grid->setVerticalSpacing(10);
    column->addLayout(m_grid);
    connect(&state, &AppState::stemSessionChanged, this, &StemControlsView::syncSession);
    connect(&state, &AppState::stemMixChanged, this, &StemControlsView::sync);
    connect(&source, &ThemeSource::themeChanged, this, &StemControlsView::sync);
    syncSession();
}

StemControlsView::Tile StemControlsView::makeTile(const StemSession::Stem& stem)
{
    const QString name = nameOf(stem.key);
    Tile tile{ stem.key,
               new QWidget,
               new Label(m_source, Label::Role::text, {}),
               new Label(m_source, Label::Role::text, name),
               new Label(m_source, Label::Role::number, {}),
               new Fader(m_source, tr("%1 volume").arg(name), colorOf(stem.key)),
               new QPushButton,
               new QPushButton(tr("Solo")) };
    tile.decibels->setFixedWidth(scaled(decibelsWidth));
    tile.decibels->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    for (QPushButton* button : { tile.mute, tile.solo }) {
        button->setCheckable(true);
        button->setFocusPolicy(Qt::TabFocus);
        setButtonKind(*button, ButtonKind::segment);
    }
    tile.solo->setAccessibleName(tr("Solo %1").arg(name));
    auto* first = new QHBoxLayout;
    first->setSpacing(8);
    first->addWidget(tile.symbol);
    first->addWidget(tile.name, 1);
    first->addWidget(tile.mute);
    first->addWidget(tile.solo);
    auto* second = new QHBoxLayout;
    second->setSpacing(8);
    second->addWidget(tile.volume, 1);
    second->addWidget(tile.decibels);
    auto* column = new QVBoxLayout(tile.widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addLayout(first);
    column->addLayout(second);
    connect(tile.mute, &QAbstractButton::clicked, this,
            [this, key = stem.key](bool isMuted) { m_state.setStemMuted(key, isMuted); });
    connect(tile.solo, &QAbstractButton::clicked, this,
            [this, key = stem.key](bool isOn) { m_state.setStemSoloed(key, isOn); });
    tile.volume->onMove([this, key = stem.key](double volume) { m_state.setStemVolume(key, volume); });
    return tile;
}

/// Other stems, or the same ones in another state.
void StemControlsView::syncSession()
{
    const std::vector<StemSession::Stem> stems =
        m_state.stemSession() ? m_state.stemSession()->stems : std::vector<StemSession::Stem>{};
    if (!std::ranges::equal(stems, m_tiles, {}, &StemSession::Stem::key, &Tile::key)) {
        for (const Tile& tile : m_tiles)
            tile.widget->deleteLater();
        m_tiles.clear();
        for (const StemSession::Stem& stem : stems)
            m_tiles.push_back(makeTile(stem));
        m_columns = 0;
        arrange();
    }
    sync();
}

void StemControlsView::sync()
{
    if (!m_state.stemSession())
        return;
    for (std::size_t i = 0; i < m_tiles.size(); ++i) {
        const StemSession::Stem& stem = m_state.stemSession()->stems[i];
        const Tile& tile = m_tiles[i];
        const StemMix::Channel channel = m_state.stemMix().channel(stem.key);
        const bool isHeard = m_state.stemMix().isHeard(stem, *m_state.stemSession());
        const QString name = nameOf(stem.key);
        tile.name->setRole(isHeard ? Label::Role::text : Label::Role::secondary);
        tile.symbol->setPixmap(symbolPixmap(symbolOf(stem.key), symbolSize,
                                            isHeard ? colorOf(stem.key) : m_source.theme().secondaryText, devicePixelRatioF()));
        tile.mute->setChecked(stem.isMuted);
        tile.mute->setText(stem.isMuted ? tr("Unmute") : tr("Mute"));
        tile.mute->setToolTip(stem.isMuted ? tr("Unmute %1").arg(name) : tr("Mute %1").arg(name));
        tile.mute->setAccessibleName(tile.mute->toolTip());
        tile.solo->setChecked(channel.isSoloed);
        tile.solo->setToolTip(channel.isSoloed ? tr("Hear the others again") : tr("Hear %1 alone").arg(name));
        tile.volume->setVolume(channel.volume);
        tile.decibels->setText(decibelLabel(channel.volume));
    }
}

void StemControlsView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void StemControlsView::arrange()
{
    const int columns = width() >= scaled(widthForThreeColumns) ? 3 : width() >= scaled(widthForTwoColumns) ? 2 : 1;
    if (std::exchange(m_columns, columns) == columns)
        return;
    for (int column = 0; column < 3; ++column)
        m_grid->setColumnStretch(column, column < columns ? 1 : 0);
    for (int i = 0; i < static_cast<int>(m_tiles.size()); ++i)
        m_grid->addWidget(m_tiles[static_cast<std::size_t>(i)].widget, i / columns, i % columns);
}

}  // namespace quillet
