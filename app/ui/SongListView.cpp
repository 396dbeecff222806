#include "app/ui/SongListView.h"

#include "app/ui/SongListModel.h"
#include "app/ui/Symbol.h"
#include "app/ui/controls/Fonts.h"

#include <QHideEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace quillet {
namespace {

constexpr int rowHeight = 30;
constexpr int symbolSize = 16;
constexpr int symbolSpace = 32;

/// A song: its name, a note before the current one, and a cross before one that could not be opened.
class SongDelegate final : public QStyledItemDelegate {
public:
    SongDelegate(const ThemeSource& source, QObject* parent)
        : QStyledItemDelegate(parent),
          m_source(source)
    {
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        return { symbolSpace, scaled(rowHeight) };
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const AppTheme& theme = m_source.theme();
        const bool isCurrent = index.data(SongListModel::currentRole).toBool();
        const bool isUnreadable = index.data(SongListModel::unreadableRole).toBool();
        const bool isUnderKeys = (option.state & QStyle::State_HasFocus) != 0;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        if (isUnderKeys || (option.state & QStyle::State_MouseOver) != 0) {
            painter->setBrush(isUnderKeys ? theme.fieldPressed : theme.fieldHover);
            painter->drawRoundedRect(option.rect, AppTheme::controlRadius, AppTheme::controlRadius);
        }
        const QRectF symbol(option.rect.left() + 8.0, option.rect.center().y() - symbolSize / 2.0, symbolSize, symbolSize);
        if (isUnreadable)
            paintSymbol(*painter, QStringLiteral("xmark.circle"), symbol, theme.redText);
        else if (isCurrent)
            paintSymbol(*painter, QStringLiteral("music.note"), symbol, theme.accentText);
        QFont font = option.font;
        font.setBold(isCurrent);
        painter->setFont(font);
        painter->setPen(isUnreadable ? theme.secondaryText : theme.text);
        const QRect text = option.rect.adjusted(symbolSpace, 0, -8, 0);
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(font).elidedText(index.data().toString(), Qt::ElideMiddle, text.width()));
        painter->restore();
    }

private:
    const ThemeSource& m_source;
};

}  // namespace

SongListView::SongListView(const SongList& songs, CommandCenter& center, const ThemeSource& source, QWidget* parent)
    : QListView(parent),
      m_songs(songs),
      m_center(center),
      m_model(new SongListModel(songs, this))
{
    setItemDelegate(new SongDelegate(source, this));
    setAccessibleName(tr("Songs of the list"));
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    setMouseTracking(true);
    setFocusPolicy(Qt::TabFocus);
    setEditTriggers(NoEditTriggers);
    connect(this, &QListView::clicked, this, &SongListView::choose);
    connect(&source, &ThemeSource::themeChanged, viewport(), qOverload<>(&QWidget::update));
}

int SongListView::heightOfRows(int most) const { return std::min(most, m_model->rowCount()) * scaled(rowHeight); }

void SongListView::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    if (model() == m_model)
        return;
    setModel(m_model);
    const QModelIndex current = m_model->index(static_cast<int>(m_songs.current().value_or(0)));
    setCurrentIndex(current);
    scrollTo(current, PositionAtCenter);
}

void SongListView::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous())
        setModel(nullptr);
    QListView::hideEvent(event);
}

void SongListView::keyPressEvent(QKeyEvent* event)
{
    const bool chooses = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space;
    if (chooses && currentIndex().isValid())
        choose(currentIndex());
    else
        QListView::keyPressEvent(event);
}

void SongListView::choose(const QModelIndex& index)
{
    const FilePath song = m_songs.songs().at(static_cast<std::size_t>(index.row()));
    // Before the window shows what comes of it.
    Q_EMIT chosen();
    m_center.execute(CommandId::openSong, song);
}

}  // namespace quillet
