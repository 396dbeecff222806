#include "app/ui/ToolBar.h"

#include "app/ui/BusyIndicator.h"
#include "app/ui/FileNames.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/Symbol.h"
#include "app/ui/controls/ElidedLabel.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/SymbolButton.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>

namespace quillet {
namespace {

constexpr int barHeight = 54;
constexpr int symbolSize = 20;
constexpr int chevronSize = 12;
constexpr int busySize = 18;
/// Of a file in a menu, points.
constexpr int maxNameWidth = 480;

/// A button whose menu drops down, with a chevron after its text.
class MenuButton final : public QPushButton {
public:
    explicit MenuButton(const QString& text)
        : QPushButton(text)
    {
        setButtonKind(*this, ButtonKind::toolbar);
    }

    [[nodiscard]] QSize sizeHint() const override { return QPushButton::sizeHint() + QSize(chevronSize + 4, 0); }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        QPainter painter(this);
        style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
        option.rect.adjust(0, 0, -chevronSize - 4, 0);
        style()->drawControl(QStyle::CE_PushButtonLabel, &option, &painter, this);
        const double x = width() - 12.0 - chevronSize;
        paintSymbol(painter, QStringLiteral("chevron.down"),
                    QRectF(x, (height() - chevronSize) / 2.0, chevronSize, chevronSize), AppTheme::onToolbar);
    }
};

}  // namespace

void fillRecentMenu(QMenu& menu, const AppState& state, CommandCenter& center)
{
    menu.clear();
    if (state.recentFiles().empty()) {
        menu.addAction(ToolBar::tr("No Recent Files"))->setEnabled(false);
        return;
    }
    menu.setToolTipsVisible(true);
    const auto names = listNames(state.recentFiles());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const FilePath& file = state.recentFiles()[i];
        QAction* action = menu.addAction(menuText(menu.fontMetrics().elidedText(names[i], Qt::ElideMiddle, maxNameWidth)));
        action->setToolTip(toolTipText(pathText(file)));
        QObject::connect(action, &QAction::triggered, &menu, [&center, file] { center.execute(CommandId::openRecent, file); });
    }
    menu.addSeparator();
    QObject::connect(menu.addAction(ToolBar::tr("Clear Recents")), &QAction::triggered, &menu,
                     [&center] { center.execute(CommandId::clearRecents); });
}

ToolBar::ToolBar(AppState& state, CommandCenter& center, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_open(new QPushButton(tr("Open File..."))),
      m_stems(new QPushButton),
      m_recent(new MenuButton(tr("Recent"))),
      m_busy(new BusyIndicator(source, AppTheme::onToolbar, busySize)),
      m_title(new ElidedLabel(source, Label::Role::toolbarTitle))
{
    setFixedHeight(scaled(barHeight));
    setButtonKind(*m_open, ButtonKind::toolbar);
    m_recent->setAccessibleName(tr("Recent files"));
    auto* menu = new QMenu(m_recent);
    connect(menu, &QMenu::aboutToShow, this, [this, menu, &center] { fillRecentMenu(*menu, m_state, center); });
    m_recent->setMenu(menu);
    auto* settings = new SymbolButton(source, QStringLiteral("gearshape"), tr("Settings"), ButtonKind::toolbar, symbolSize);
    settings->setToolTip(tr("Settings"));
    auto* help = new SymbolButton(source, QStringLiteral("questionmark.circle"), tr("Help"), ButtonKind::toolbar, symbolSize);
    help->setToolTip(tr("Help"));
    m_title->setAlignment(Qt::AlignCenter);
    for (QPushButton* button : { m_open, m_stems, m_recent })
        button->setFocusPolicy(Qt::TabFocus);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(16, 0, 16, 0);
    row->setSpacing(8);
    row->addWidget(m_open);
    row->addWidget(m_stems);
    row->addWidget(m_recent);
    row->addSpacing(8);
    row->addWidget(m_busy);
    row->addWidget(m_title, 1);
    row->addSpacing(8);
    row->addWidget(settings);
    row->addWidget(help);

    connect(m_open, &QAbstractButton::clicked, this, [&center] { center.execute(CommandId::openFile); });
    connect(m_stems, &QAbstractButton::clicked, this,
            [this, &center] { center.execute(m_state.stemSession() ? CommandId::cleanupStems : CommandId::separateStems); });
    connect(settings, &QAbstractButton::clicked, this, [&center] { center.execute(CommandId::showSettings); });
    connect(help, &QAbstractButton::clicked, this, [&center] { center.execute(CommandId::showHelp); });
    connect(&state, &AppState::loadingStateChanged, this, &ToolBar::syncLoading);
    connect(&state, &AppState::audioFileURLChanged, this, &ToolBar::syncLoading);
    connect(&state, &AppState::loadingStateChanged, this, &ToolBar::syncStems);
    connect(&state, &AppState::stemSessionChanged, this, &ToolBar::syncStems);
    syncLoading();
    syncStems();
}

void ToolBar::syncStems()
{
    m_stems->setVisible(m_state.isLoaded());
    const bool hasStems = m_state.stemSession().has_value();
    m_stems->setText(hasStems ? tr("Cleanup Stems") : tr("Separate Stems…"));
    setButtonKind(*m_stems, hasStems ? ButtonKind::toolbarDanger : ButtonKind::toolbar);
    m_stems->update();
}

void ToolBar::syncLoading()
{
    const LoadingState& loading = m_state.loadingState();
    const bool isLoading = loading.stage == LoadingState::Stage::loading;
    m_open->setEnabled(!isLoading);
    m_busy->setVisible(isLoading);
    m_title->setRole(isLoading ? Label::Role::toolbarSecondary : Label::Role::toolbarTitle);
    m_title->setWholeText(isLoading                    ? QString::fromStdString(loading.message)
                              : m_state.audioFileURL() ? fileName(*m_state.audioFileURL())
                                                       : QString());
    // Where the file lies.
    m_title->setToolTip(m_state.audioFileURL() ? toolTipText(pathText(*m_state.audioFileURL())) : QString());
}

void ToolBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), AppTheme::navy);
    if (rect().height() > 0)
        painter.fillRect(QRectF(0, height() - 1, width(), 1), withOpacity(AppTheme::onToolbar, 0.08));
}

}  // namespace quillet
