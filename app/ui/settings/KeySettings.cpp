#include "app/ui/settings/KeySettings.h"

#include "AppCore/StemSession.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr int keyWidth = 130;

/// Commands that stand in no menu under a title of their own, by the place in their row of the table.
QString untitled(CommandId id)
{
    const auto placeAfter = [id](CommandId first) { return static_cast<int>(id) - static_cast<int>(first); };
    const auto stem = [](int place) {
        return QCoreApplication::translate(
            "StemControlsView", StemSession::displayName(StemSession::keys.at(static_cast<std::size_t>(place))).c_str());
    };
    if (id >= CommandId::muteVocals && id <= CommandId::muteOther)
        return KeySettings::tr("Mute %1").arg(stem(placeAfter(CommandId::muteVocals)));
    if (id >= CommandId::soloVocals && id <= CommandId::soloOther)
        return KeySettings::tr("Hear %1 Alone").arg(stem(placeAfter(CommandId::soloVocals)));
    if (id >= CommandId::callLoop1 && id <= CommandId::callLoop10)
        return KeySettings::tr("Loop %1").arg(placeAfter(CommandId::callLoop1) + 1);
    if (id >= CommandId::callLoop1AtOnce && id <= CommandId::callLoop10AtOnce)
        return KeySettings::tr("Loop %1 at Once").arg(placeAfter(CommandId::callLoop1AtOnce) + 1);
    return KeySettings::tr("Play / Pause");
}

bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Control:
    case Qt::Key_Shift:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_unknown:
    case 0:
        return true;
    default:
        return false;
    }
}

}  // namespace

QString commandText(const Command& command)
{
    if (command.title == nullptr)
        return untitled(command.id);
    QString title = translated(command.title);
    // The key that a title names is the usual one.
    const auto hint = title.indexOf(QLatin1String(" ["));
    return hint > 0 ? title.left(hint) : title;
}

QString chordText(const KeyChord& chord)
{
    return QKeySequence(chord.modifiers | static_cast<int>(chord.key.key)).toString(QKeySequence::NativeText);
}

KeySettings::KeySettings(const ThemeSource& source, KeyMap& keys, QWidget* parent)
    : QWidget(parent),
      m_keys(keys),
      m_resetAll(new QPushButton(tr("Reset All Keys")))
{
    auto* note =
        new Label(source, Label::Role::secondary,
                  tr("Click a key and press the new one; Escape leaves it as it is. A pedal that sends keys works too. "
                     "Space always plays and pauses."));
    note->setWordWrap(true);
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    for (const Command& command : commands)
        if (KeyMap::canBeChosenFor(command))
            addRow(*grid, command, source);
    m_resetAll->setAutoDefault(false);
    connect(m_resetAll, &QAbstractButton::clicked, this, [this] { m_keys.resetAll(); });
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(10);
    column->addWidget(note);
    column->addLayout(grid);
    column->addWidget(m_resetAll, 0, Qt::AlignRight);
    connect(&keys, &KeyMap::changed, this, &KeySettings::sync);
    sync();
}

KeySettings::~KeySettings() { end(); }

void KeySettings::addRow(QGridLayout& grid, const Command& command, const ThemeSource& source)
{
    const int line = grid.rowCount();
    const Row row{ command.id, new QPushButton, new QPushButton(tr("Reset")), new Label(source, Label::Role::error, {}) };
    row.key->setFixedWidth(scaled(keyWidth));
    for (QPushButton* button : { row.key, row.reset })
        button->setAutoDefault(false);
    row.reset->setAccessibleName(tr("Reset the key of %1").arg(commandText(command)));
    connect(row.key, &QAbstractButton::clicked, this, [this, id = command.id] { begin(id); });
    connect(row.reset, &QAbstractButton::clicked, this, [this, id = command.id] { m_keys.reset(id); });
    grid.addWidget(new Label(source, Label::Role::text, commandText(command)), line, 0);
    grid.addWidget(row.clash, line, 1, Qt::AlignRight);
    grid.addWidget(row.key, line, 2);
    grid.addWidget(row.reset, line, 3);
    m_rows.push_back(row);
}

void KeySettings::begin(CommandId id)
{
    m_waiting = id;
    m_keys.setIsChoosing(true);
    qApp->installEventFilter(this);
    sync();
}

void KeySettings::end()
{
    if (!m_waiting)
        return;
    m_waiting.reset();
    m_keys.setIsChoosing(false);
    qApp->removeEventFilter(this);
}

void KeySettings::hideEvent(QHideEvent* event)
{
    end();
    QWidget::hideEvent(event);
}

bool KeySettings::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // It comes as a press then, and no menu takes it.
        event->accept();
        return true;
    case QEvent::KeyPress:
        take(*static_cast<QKeyEvent*>(event));
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::WindowDeactivate:
        end();
        sync();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void KeySettings::take(const QKeyEvent& event)
{
    if (isModifier(event.key()))
        return;
    const CommandId id = *m_waiting;
    end();
    if (event.key() != Qt::Key_Escape)
        m_keys.choose(id,
                      { { event.nativeScanCode(), static_cast<Qt::Key>(event.key()) },
                        static_cast<int>(event.modifiers()) & KeyChord::modifierMask });
    sync();
}

void KeySettings::sync()
{
    bool hasChosen = false;
    for (const Row& row : m_rows) {
        const auto chord = m_keys.present(commandOf(row.id));
        const QString text = chord ? chordText(*chord) : tr("None");
        row.key->setText(m_waiting == row.id ? tr("Press a key…") : text);
        row.key->setAccessibleName(tr("%1: %2", "A command and its key").arg(commandText(commandOf(row.id)), row.key->text()));
        const bool isChosen = m_keys.chosen(row.id).has_value();
        hasChosen |= isChosen;
        row.reset->setEnabled(isChosen);
        const auto other = isChosen ? m_keys.otherWith(*chord, row.id) : std::nullopt;
        row.clash->setText(other ? tr("also: %1").arg(commandText(commandOf(*other))) : QString());
    }
    m_resetAll->setEnabled(hasChosen);
}

}  // namespace quillet
