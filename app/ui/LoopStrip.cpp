#include "app/ui/LoopStrip.h"

#include "app/ui/LoopListModel.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/Fonts.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>

#include <algorithm>

namespace quillet {
namespace {

constexpr int chipHeight = 28;
constexpr int chipPadding = 10;
constexpr int dotSize = 9;
constexpr int dotSpace = 7;
constexpr int maxNameWidth = 180;
constexpr int minChipWidth = 84;
constexpr std::int64_t timesOffered[] = { 1, 2, 3, 4, 6, 8, 12, 16 };

/// A chip: a dot in the loop's colour, and its name. The present loop's is tinted, that of one that waits has a line around it.
class ChipDelegate final : public QStyledItemDelegate {
public:
    ChipDelegate(const ThemeSource& source, QObject* parent)
        : QStyledItemDelegate(parent),
          m_source(source)
    {
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const int name = QFontMetrics(option.font).horizontalAdvance(index.data().toString());
        // With the line around it, and a little for letters that reach beyond their place.
        constexpr int around = 6;
        const int width =
            std::max(std::min(name, scaled(maxNameWidth)) + 2 * chipPadding + dotSize + dotSpace + around, minChipWidth);
        return { width + chipGap, scaled(chipHeight) };
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const AppTheme& theme = m_source.theme();
        const bool isPresent = index.data(LoopListModel::presentRole).toBool();
        const bool isWaiting = index.data(LoopListModel::waitingRole).toBool();
        const QColor color = AppTheme::loopColors[static_cast<std::size_t>(index.data(LoopListModel::colorRole).toInt())];
        const QRectF chip = QRectF(option.rect).adjusted(1, 1, -chipGap - 1, -1);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setBrush(isPresent                                           ? withOpacity(color, AppTheme::tintOpacity)
                              : (option.state & QStyle::State_MouseOver) != 0 ? theme.fieldHover
                                                                              : theme.field);
        painter->setPen(QPen(isPresent || isWaiting ? color : theme.fieldLine, isWaiting ? 2 : 1,
                             isWaiting ? Qt::DashLine : Qt::SolidLine));
        painter->drawRoundedRect(chip, chip.height() / 2, chip.height() / 2);
        painter->setPen(Qt::NoPen);
        painter->setBrush(color);
        painter->drawEllipse(QRectF(chip.left() + chipPadding, chip.center().y() - dotSize / 2.0, dotSize, dotSize));
        painter->setPen(theme.text);
        painter->setFont(option.font);
        const QRectF text = chip.adjusted(chipPadding + dotSize + dotSpace, 0, -chipPadding, 0);
        painter->drawText(
            text, Qt::AlignLeft | Qt::AlignVCenter,
            option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, static_cast<int>(text.width())));
        const bool showsFocus = (option.state & QStyle::State_HasFocus) != 0 && (option.state & QStyle::State_Active) != 0;
        if (showsFocus) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(QPen(theme.accentText, AppTheme::focusRingWidth));
            painter->drawRoundedRect(chip, chip.height() / 2, chip.height() / 2);
        }
        painter->restore();
    }

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        auto* editor = new QLineEdit(parent);
        editor->setMaxLength(static_cast<int>(NamedLoop::maxNameLength));
        editor->setAccessibleName(LoopStrip::tr("Name of the loop"));
        editor->setContextMenuPolicy(Qt::NoContextMenu);
        return editor;
    }

    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        editor->setGeometry(option.rect.adjusted(0, 0, -chipGap, 0));
    }

    static constexpr int chipGap = 8;

private:
    const ThemeSource& m_source;
};

}  // namespace

LoopStrip::LoopStrip(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_source(source),
      m_model(new LoopListModel(state, this)),
      m_chips(new QListView),
      m_playList(new QPushButton(tr("Play List")))
{
    auto* delegate = new ChipDelegate(source, this);
    m_chips->setModel(m_model);
    m_chips->setItemDelegate(delegate);
    m_chips->setAccessibleName(tr("Saved loops"));
    m_chips->setFlow(QListView::LeftToRight);
    m_chips->setWrapping(false);
    m_chips->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_chips->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_chips->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_chips->setFrameShape(QFrame::NoFrame);
    m_chips->viewport()->setAutoFillBackground(false);
    m_chips->setFixedHeight(scaled(chipHeight));
    m_chips->setMouseTracking(true);
    m_chips->setFocusPolicy(Qt::TabFocus);
    m_chips->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_chips->setDragDropMode(QAbstractItemView::InternalMove);
    m_chips->setDropIndicatorShown(true);
    m_chips->setContextMenuPolicy(Qt::CustomContextMenu);
    m_chips->installEventFilter(this);
    m_playList->setCheckable(true);
    setButtonKind(*m_playList, ButtonKind::segment);
    m_playList->setFocusPolicy(Qt::TabFocus);
    m_playList->setToolTip(tr("Play the loops one after the other, each as often as its menu says"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(m_chips, 1);
    row->addWidget(m_playList);

    connect(m_chips, &QListView::clicked, this, &LoopStrip::call);
    connect(m_chips, &QWidget::customContextMenuRequested, this, &LoopStrip::showMenu);
    connect(m_playList, &QAbstractButton::clicked, this,
            [this](bool plays) { plays ? m_state.playLoopList() : m_state.leaveLoopList(); });
    // Whoever has named a loop goes on playing.
    connect(delegate, &QAbstractItemDelegate::closeEditor, m_chips, &QWidget::clearFocus, Qt::QueuedConnection);
    connect(&state, &AppState::loopsChanged, this, &LoopStrip::sync);
    connect(&state, &AppState::listPlaceChanged, this, &LoopStrip::sync);
    connect(&state, &AppState::loopSaved, this, &LoopStrip::nameLoop);
    const auto repaint = qOverload<>(&QWidget::update);
    connect(&source, &ThemeSource::themeChanged, m_chips->viewport(), repaint);
    // Not by the model: it would take a name back that is being edited.
    for (const auto changed : { &AppState::regionChanged, &AppState::waitingLoopChanged, &AppState::listPlaceChanged })
        connect(&state, changed, m_chips->viewport(), repaint);
    sync();
}

void LoopStrip::sync()
{
    setVisible(!m_state.loops().empty());
    m_playList->setVisible(m_state.loops().size() > 1);
    m_playList->setChecked(m_state.listPlace().has_value());
    if (const auto present = m_state.presentLoop())
        m_chips->scrollTo(m_model->index(static_cast<int>(*present)));
}

bool LoopStrip::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_chips && m_toBeNamed && (event->type() == QEvent::Resize || event->type() == QEvent::Show))
        QMetaObject::invokeMethod(this, &LoopStrip::openName, Qt::QueuedConnection);
    // Keys of a name that is edited come by here too.
    const bool isForChip = watched == m_chips && m_chips->hasFocus() && m_chips->currentIndex().isValid();
    if (isForChip && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
            call(m_chips->currentIndex());
            return true;
        }
        if (key == Qt::Key_Delete) {
            remove(m_chips->currentIndex());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void LoopStrip::call(const QModelIndex& index)
{
    const bool atOnce = (QApplication::keyboardModifiers() & Qt::AltModifier) != 0;
    m_state.callLoop(static_cast<std::size_t>(index.row()), atOnce ? AppState::CallUp::atOnce : AppState::CallUp::atJoint);
}

void LoopStrip::remove(const QModelIndex& index) { m_state.removeLoop(static_cast<std::size_t>(index.row())); }

/// A loop that has just been saved is named at once, or keeps the name that it has.
void LoopStrip::nameLoop(std::size_t loop)
{
    m_toBeNamed = loop;
    openName();
}

/// Once its chip has a place: the first one has none before the strip is laid out.
void LoopStrip::openName()
{
    if (!m_toBeNamed || !m_chips->isVisible())
        return;
    m_chips->doItemsLayout();
    const QModelIndex index = m_model->index(static_cast<int>(*m_toBeNamed));
    if (m_chips->viewport()->width() < minChipWidth || (index.isValid() && m_chips->visualRect(index).isEmpty()))
        return;
    m_toBeNamed.reset();
    if (!index.isValid())
        return;
    m_chips->scrollTo(index);
    m_chips->setCurrentIndex(index);
    m_chips->edit(index);
}

void LoopStrip::showMenu(const QPoint& place)
{
    const QModelIndex index = m_chips->indexAt(place);
    if (!index.isValid())
        return;
    const auto loop = static_cast<std::size_t>(index.row());
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const QString& text, auto action) { menu->addAction(text, this, action); };
    add(tr("Rename"), [this, loop] { nameLoop(loop); });
    addColors(*menu->addMenu(tr("Color")), loop);
    addTimes(*menu->addMenu(tr("Times in the List")), loop);
    add(tr("Replace by the Present Region"), [this, loop] { m_state.replaceLoop(loop); });
    menu->addSeparator();
    add(tr("Delete"), [this, loop] { m_state.removeLoop(loop); });
    menu->popup(m_chips->viewport()->mapToGlobal(place));
}

void LoopStrip::addColors(QMenu& menu, std::size_t loop)
{
    const QString names[NamedLoop::colorCount] = { tr("Purple"), tr("Orange"), tr("Green"), tr("Blue"),
                                                   tr("Pink"),   tr("Yellow"), tr("Teal"),  tr("Gray") };
    for (int color = 0; color < NamedLoop::colorCount; ++color) {
        QPixmap dot(dotSize, dotSize);
        dot.fill(AppTheme::loopColors[static_cast<std::size_t>(color)]);
        QAction* action = menu.addAction(dot, names[color], this, [this, loop, color] {
            NamedLoop changed = m_state.loops().at(loop);
            changed.color = color;
            m_state.setLoop(loop, std::move(changed));
        });
        action->setCheckable(true);
        action->setChecked(m_state.loops().at(loop).color == color);
    }
}

void LoopStrip::addTimes(QMenu& menu, std::size_t loop)
{
    for (const std::int64_t times : timesOffered) {
        QAction* action = menu.addAction(QString::number(times) + QStringLiteral("×"), this, [this, loop, times] {
            NamedLoop changed = m_state.loops().at(loop);
            changed.times = times;
            m_state.setLoop(loop, std::move(changed));
        });
        action->setCheckable(true);
        action->setChecked(m_state.loops().at(loop).times == times);
    }
}

}  // namespace quillet
