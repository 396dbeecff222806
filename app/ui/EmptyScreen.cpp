#include "app/ui/EmptyScreen.h"

#include "app/ui/FileNames.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/SongListModel.h"
#include "app/ui/SongListView.h"
#include "app/ui/Symbol.h"
#include "app/ui/controls/Card.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QStyleOptionButton>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int symbolSize = 52;
constexpr int titlePixels = 32;
constexpr QSize openButtonSize(142, 38);
constexpr int recentWidth = 440;
constexpr int rowHeight = 38;
constexpr int rowSymbolSize = 18;
/// Of the list of songs, more are scrolled to.
constexpr int songRows = 10;

class LargeSymbol final : public QWidget {
public:
    explicit LargeSymbol(const ThemeSource& source)
        : m_source(source)
    {
        setFixedSize(symbolSize, symbolSize);
        connect(&source, &ThemeSource::themeChanged, this, qOverload<>(&QWidget::update));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        paintSymbol(painter, QStringLiteral("waveform"), rect(), m_source.theme().accentText);
    }

private:
    const ThemeSource& m_source;
};

/// One recent file: a note and its name.
class RecentRow final : public QPushButton {
public:
    RecentRow(const ThemeSource& source, const FilePath& file, const QString& name)
        : QPushButton(menuText(name)),
          m_source(source),
          m_name(name)
    {
        setButtonKind(*this, ButtonKind::bare);
        setFixedHeight(scaled(rowHeight));
        setFocusPolicy(Qt::TabFocus);
        setToolTip(toolTipText(pathText(file)));
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
                         fontMetrics().elidedText(m_name, Qt::ElideMiddle, place.width()));
    }

private:
    const ThemeSource& m_source;
    QString m_name;
};

}  // namespace

EmptyScreen::EmptyScreen(AppState& state, SongList& songs, CommandCenter& center, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_center(center),
      m_source(source),
      m_recent(new Card(source)),
      m_rows(new QVBoxLayout),
      m_invitation(new Label(source, Label::Role::secondary, tr("Open a song to practise, or drop songs or a folder here.")))
{
    auto* title = new Label(source, Label::Role::title, QStringLiteral("Quillet"));
    title->setHeading(titlePixels);
    auto* open = new QPushButton(tr("Open File..."));
    setButtonKind(*open, ButtonKind::accent);
    open->setFocusPolicy(Qt::TabFocus);
    connect(open, &QAbstractButton::clicked, this, [this] { m_center.execute(CommandId::openFile); });
    auto* openFromURL = new QPushButton(tr("Open from URL…"));
    // As wide as the wider text.
    const QSize size = QSize(scaled(openButtonSize.width()), scaled(openButtonSize.height()))
                           .expandedTo(open->sizeHint())
                           .expandedTo(openFromURL->sizeHint());
    open->setFixedSize(size);
    openFromURL->setFixedSize(size);
    openFromURL->setFocusPolicy(Qt::TabFocus);
    connect(openFromURL, &QAbstractButton::clicked, this, [this] { m_center.execute(CommandId::openFromURL); });
    auto* openings = new QHBoxLayout;
    openings->setSpacing(AppTheme::cardSpacing);
    openings->addStretch();
    openings->addWidget(open);
    openings->addWidget(openFromURL);
    openings->addStretch();

    auto* clear = new QPushButton(tr("Clear Recents"));
    clear->setFocusPolicy(Qt::TabFocus);
    connect(clear, &QAbstractButton::clicked, this, [this] { m_center.execute(CommandId::clearRecents); });
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

    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin, AppTheme::windowMargin);
    column->addStretch(2);
    column->addWidget(new LargeSymbol(source), 0, Qt::AlignHCenter);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addSpacing(16);
    column->addLayout(openings);
    column->addSpacing(16);
    column->addWidget(m_invitation, 0, Qt::AlignHCenter);
    column->addSpacing(8);
    auto* centred = new QHBoxLayout;
    centred->setSpacing(AppTheme::cardSpacing);
    centred->addStretch(1);
    centred->addWidget(makeSongCard(songs), 1000, Qt::AlignTop);
    centred->addWidget(m_recent, 1000, Qt::AlignTop);
    centred->addStretch(1);
    column->addLayout(centred);
    column->addStretch(3);
    page->setAutoFillBackground(false);
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->viewport()->setAutoFillBackground(false);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scroll);

    connect(&state, &AppState::recentFilesChanged, this, &EmptyScreen::listRecentFiles);
    listRecentFiles();
}

Card* EmptyScreen::makeSongCard(SongList& songs)
{
    auto* card = new Card(m_source);
    auto* caption = new Label(m_source, Label::Role::secondary, {});
    auto* close = new QPushButton(tr("Close List"));
    close->setFocusPolicy(Qt::TabFocus);
    connect(close, &QAbstractButton::clicked, &songs, &SongList::forget);
    auto* header = new QHBoxLayout;
    header->addSpacing(8);
    header->addWidget(caption);
    header->addStretch();
    header->addWidget(close);
    auto* view = new SongListView(songs, m_center, m_source);
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(12, 12, 12, 12);
    column->addLayout(header);
    column->addSpacing(4);
    column->addWidget(view);
    card->setMaximumWidth(recentWidth);
    card->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);
    const auto sync = [card, caption, view, &songs] {
        caption->setText(tr("Songs, %1", "The place in the list").arg(placeText(songs)));
        view->setFixedHeight(view->heightOfRows(songRows));
        card->setVisible(!songs.songs().empty());
    };
    for (const auto changed : { &SongList::songsChanged, &SongList::placeChanged })
        connect(&songs, changed, card, sync);
    sync();
    return card;
}

void EmptyScreen::listRecentFiles()
{
    while (QLayoutItem* row = m_rows->takeAt(0)) {
        row->widget()->deleteLater();
        delete row;
    }
    const auto names = listNames(m_state.recentFiles());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const FilePath& file = m_state.recentFiles()[i];
        auto* row = new RecentRow(m_source, file, names[i]);
        connect(row, &QAbstractButton::clicked, this, [this, file] { m_center.execute(CommandId::openRecent, file); });
        m_rows->addWidget(row);
    }
    m_recent->setVisible(!m_state.recentFiles().empty());
    m_invitation->setVisible(m_state.recentFiles().empty());
}

}  // namespace quillet
