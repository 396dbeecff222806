#include "app/ui/SongStrip.h"

#include "app/ui/FileNames.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/SongListModel.h"
#include "app/ui/SongListView.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/SymbolButton.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFrame>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr int symbolSize = 14;
constexpr int placeWidth = 110;
constexpr int popupWidth = 420;
constexpr int popupRows = 14;
constexpr int popupPadding = 6;

/// Has the popup as a child: as a window of its own it would be nowhere for a screen reader that looks around.
class AccessibleStrip final : public QAccessibleWidget {
public:
    explicit AccessibleStrip(SongStrip* strip)
        : QAccessibleWidget(strip, QAccessible::Grouping)
    {
    }

    [[nodiscard]] int childCount() const override { return QAccessibleWidget::childCount() + (popup() != nullptr ? 1 : 0); }
    [[nodiscard]] QAccessibleInterface* child(int index) const override
    {
        const bool isPopup = popup() != nullptr && index == QAccessibleWidget::childCount();
        return isPopup ? QAccessible::queryAccessibleInterface(popup()) : QAccessibleWidget::child(index);
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override
    {
        const bool isPopup = popup() != nullptr && child != nullptr && child->object() == popup();
        return isPopup ? QAccessibleWidget::childCount() : QAccessibleWidget::indexOfChild(child);
    }

private:
    [[nodiscard]] QWidget* popup() const { return static_cast<const SongStrip*>(widget())->popup(); }
};

QAccessibleInterface* accessibleStrip(const QString&, QObject* object)
{
    auto* strip = qobject_cast<SongStrip*>(object);
    return strip != nullptr ? new AccessibleStrip(strip) : nullptr;
}

/// Closes with a choice, at Escape, and when something else is clicked.
class SongPopup final : public QFrame {
public:
    SongPopup(QWidget& button, const AppTheme& theme, SongListView* view)
        : QFrame(&button, Qt::Popup)
    {
        setAttribute(Qt::WA_DeleteOnClose);
        setFrameShape(QFrame::StyledPanel);
        QPalette ground = palette();
        ground.setColor(QPalette::Window, theme.card);
        setPalette(ground);
        setAccessibleName(view->accessibleName());
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(popupPadding, popupPadding, popupPadding, popupPadding);
        column->addWidget(view);
        connect(view, &SongListView::chosen, this, &QWidget::close);
        const QRect screen = button.screen()->availableGeometry();
        const QPoint under = button.mapToGlobal(QPoint(button.width() / 2, button.height() + 2));
        const int height = view->heightOfRows(popupRows) + 2 * (popupPadding + frameWidth());
        const QSize size = QSize(scaled(popupWidth), height).boundedTo(screen.size());
        setGeometry(QRect(QPoint(std::clamp(under.x() - size.width() / 2, screen.left(), screen.right() + 1 - size.width()),
                                 std::clamp(under.y(), screen.top(), screen.bottom() + 1 - size.height())),
                          size));
    }
};

}  // namespace

SongStrip::SongStrip(const AppState& state, SongList& songs, CommandCenter& center, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_songs(songs),
      m_center(center),
      m_source(source),
      m_previous(new SymbolButton(source, QStringLiteral("chevron.left"), tr("Previous song"), ButtonKind::bare, symbolSize)),
      m_place(new QPushButton),
      m_next(new SymbolButton(source, QStringLiteral("chevron.right"), tr("Next song"), ButtonKind::bare, symbolSize))
{
    QAccessible::installFactory(accessibleStrip);
    setAccessibleName(tr("List of songs"));
    setButtonKind(*m_place, ButtonKind::bare);
    m_place->setFocusPolicy(Qt::TabFocus);
    m_place->setMinimumWidth(scaled(placeWidth));
    m_place->setToolTip(tr("All songs of the list"));
    auto* close = new SymbolButton(source, QStringLiteral("xmark.circle"), tr("Close the list"), ButtonKind::bare, symbolSize);
    close->setToolTip(tr("Close the list"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(AppTheme::windowMargin, 4, AppTheme::windowMargin, 0);
    row->setSpacing(4);
    // As wide as what stands at the other end, so that the place is in the middle.
    row->addSpacing(close->sizeHint().width());
    row->addStretch();
    row->addWidget(m_previous);
    row->addWidget(m_place);
    row->addWidget(m_next);
    row->addStretch();
    row->addWidget(close);

    connect(m_previous, &QAbstractButton::clicked, this, [this] { m_center.execute(CommandId::previousSong); });
    connect(m_next, &QAbstractButton::clicked, this, [this] { m_center.execute(CommandId::nextSong); });
    connect(m_place, &QAbstractButton::clicked, this, &SongStrip::showSongs);
    connect(close, &QAbstractButton::clicked, this, [this] { m_songs.forget(); });
    connect(&songs, &SongList::songsChanged, this, &SongStrip::sync);
    connect(&songs, &SongList::placeChanged, this, &SongStrip::sync);
    connect(&state, &AppState::loadingStateChanged, this, &SongStrip::sync);
    sync();
}

void SongStrip::sync()
{
    // The empty screen has a list of its own.
    setVisible(!m_songs.songs().empty() && m_state.loadingState().stage != LoadingState::Stage::idle);
    m_place->setText(placeText(m_songs));
    m_place->setAccessibleName(tr("Songs, %1", "The place in the list").arg(placeText(m_songs)));
    const auto show = [](SymbolButton& button, const FilePath* song) {
        button.setEnabled(song != nullptr);
        button.setToolTip(song != nullptr ? toolTipText(fileName(*song)) : QString());
    };
    show(*m_previous, m_songs.previous());
    show(*m_next, m_songs.next());
}

void SongStrip::showSongs()
{
    auto* view = new SongListView(m_songs, m_center, m_source);
    m_popup = new SongPopup(*m_place, m_source.theme(), view);
    // Of a list that is no longer there nothing can be chosen.
    connect(&m_songs, &SongList::songsChanged, m_popup, &QWidget::close);
    m_popup->show();
    view->setFocus(Qt::PopupFocusReason);
}

}  // namespace quillet
