#include "app/ui/EmptyScreen.h"

#include "app/core/Commands.h"
#include "app/ui/FileNames.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/Symbol.h"
#include "app/ui/controls/Card.h"
#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int symbolSize = 80;
constexpr int titlePixels = 32;
constexpr QSize openButtonSize(142, 38);
constexpr int recentWidth = 440;
constexpr int rowHeight = 38;
constexpr int rowSymbolSize = 18;

/// One recent file: a note and its name.
class RecentRow final : public QPushButton {
public:
    RecentRow(const ThemeSource& source, const FilePath& file)
        : QPushButton(fileName(file)),
          m_source(source)
    {
        setButtonKind(*this, ButtonKind::bare);
        setFixedHeight(rowHeight);
        setFocusPolicy(Qt::TabFocus);
        setToolTip(pathText(file));
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        QPainter painter(this);
        style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
        const AppTheme& theme = m_source.theme();
        paintSymbol(painter, QStringLiteral("music.note"),
                    QRectF(8, (height() - rowSymbolSize) / 2.0, rowSymbolSize, rowSymbolSize), theme.accentText);
        painter.setPen(theme.text);
        const QRect place = rect().adjusted(38, 0, -8, 0);
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                         fontMetrics().elidedText(text(), Qt::ElideMiddle, place.width()));
    }

private:
    const ThemeSource& m_source;
};

}  // namespace

EmptyScreen::EmptyScreen(AppState& state, Notifications& notifications, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_notifications(notifications),
      m_source(source),
      m_symbol(new QWidget),
      m_recent(new Card(source)),
      m_rows(new QVBoxLayout)
{
    m_symbol->setFixedSize(symbolSize, symbolSize);
    auto* title = new Label(source, Label::Role::title, QStringLiteral("Quillet"));
    title->setHeading(titlePixels);
    auto* open = new QPushButton(tr("Open File..."));
    setButtonKind(*open, ButtonKind::accent);
    open->setFixedSize(openButtonSize);
    open->setFocusPolicy(Qt::TabFocus);
    connect(open, &QAbstractButton::clicked, this, [this] { m_notifications.post(openFileName); });
    auto* openFromURL = new QPushButton(tr("Open from URL…"));
    openFromURL->setFixedSize(openButtonSize);
    openFromURL->setFocusPolicy(Qt::TabFocus);
    connect(openFromURL, &QAbstractButton::clicked, this, [this] { m_notifications.post(openFromURLName); });
    auto* openings = new QHBoxLayout;
    openings->setSpacing(AppTheme::cardSpacing);
    openings->addStretch();
    openings->addWidget(open);
    openings->addWidget(openFromURL);
    openings->addStretch();

    auto* clear = new QPushButton(tr("Clear Recents"));
    clear->setFocusPolicy(Qt::TabFocus);
    connect(clear, &QAbstractButton::clicked, this, [this] { m_notifications.post(clearRecentsName); });
    auto* header = new QHBoxLayout;
    auto* caption = new Label(source, Label::Role::secondary, tr("Recent Files"));
    header->addSpacing(8);
    header->addWidget(caption);
    header->addStretch();
    header->addWidget(clear);
    m_rows->setSpacing(0);
    auto* list = new QVBoxLayout(m_recent);
    list->setContentsMargins(12, 12, 12, 12);
    list->addLayout(header);
    list->addSpacing(4);
    list->addLayout(m_rows);
    m_recent->setMaximumWidth(recentWidth);
    m_recent->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->addStretch(2);
    column->addWidget(m_symbol, 0, Qt::AlignHCenter);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addSpacing(16);
    column->addLayout(openings);
    column->addSpacing(24);
    auto* centred = new QHBoxLayout;
    centred->addStretch(1);
    centred->addWidget(m_recent, 1000);
    centred->addStretch(1);
    column->addLayout(centred);
    column->addStretch(3);

    connect(&state, &AppState::recentFilesChanged, this, &EmptyScreen::listRecentFiles);
    connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
    listRecentFiles();
}

void EmptyScreen::listRecentFiles()
{
    while (QLayoutItem* row = m_rows->takeAt(0)) {
        row->widget()->deleteLater();
        delete row;
    }
    for (const FilePath& file : m_state.recentFiles()) {
        auto* row = new RecentRow(m_source, file);
        connect(row, &QAbstractButton::clicked, this, [this, file] { m_notifications.post(openRecentName, file); });
        m_rows->addWidget(row);
    }
    m_recent->setVisible(!m_state.recentFiles().empty());
}

void EmptyScreen::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintSymbol(painter, QStringLiteral("waveform"), m_symbol->geometry(), m_source.theme().accentText);
}

}  // namespace quillet
