#include "app/ui/LoopListModel.h"

#include "AppCore/PitchInputParser.h"
#include "AppCore/TimeIntervalComponents.h"

#include <QMimeData>

#include <algorithm>

namespace quillet {
namespace {

const QString rowMime = QStringLiteral("application/x-quillet-loop");

QString timeText(double seconds)
{
    const TimeIntervalComponents time = TimeIntervalComponents::fromSeconds(seconds);
    return QStringLiteral("%1:%2.%3")
        .arg(time.minutes)
        .arg(time.seconds, 2, 10, QLatin1Char('0'))
        .arg(time.milliseconds, 3, 10, QLatin1Char('0'));
}

}  // namespace

LoopListModel::LoopListModel(AppState& state, QObject* parent)
    : QAbstractListModel(parent),
      m_state(state)
{
    connect(&state, &AppState::loopsChanged, this, [this] {
        beginResetModel();
        endResetModel();
    });
}

int LoopListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_state.loops().size());
}

QString LoopListModel::describe(const NamedLoop& loop) const
{
    QString text = tr("%1 – %2, %3%").arg(timeText(loop.region.start), timeText(loop.region.end)).arg(loop.speed);
    const QString pitch = QString::fromStdString(PitchInputParser::describe(loop.pitch));
    if (!pitch.isEmpty())
        text += QStringLiteral(", ") + pitch;
    if (loop.trainer)
        text += QStringLiteral(", ") + tr("with trainer");
    return text;
}

QVariant LoopListModel::data(const QModelIndex& index, int role) const
{
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= m_state.loops().size())
        return {};
    const NamedLoop& loop = m_state.loops()[row];
    const QString name = QString::fromStdString(loop.name);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return name;
    case Qt::AccessibleTextRole:
        return tr("%1, %2", "A loop's name, and what it is").arg(name, describe(loop));
    case Qt::ToolTipRole:
        return describe(loop);
    case colorRole:
        return loop.color;
    case presentRole:
        return m_state.presentLoop() == row;
    case waitingRole:
        return m_state.waitingLoop() == row;
    default:
        return {};
    }
}

bool LoopListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const auto row = static_cast<std::size_t>(index.row());
    if (role != Qt::EditRole || row >= m_state.loops().size())
        return false;
    NamedLoop loop = m_state.loops()[row];
    const std::string name = loopName(value.toString().toStdString());
    if (name.empty())
        return false;
    loop.name = name;
    m_state.setLoop(row, std::move(loop));
    return true;
}

Qt::ItemFlags LoopListModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
}

QStringList LoopListModel::mimeTypes() const { return { rowMime }; }

QMimeData* LoopListModel::mimeData(const QModelIndexList& indexes) const
{
    auto* data = new QMimeData;
    if (!indexes.isEmpty())
        data->setData(rowMime, QByteArray::number(indexes.front().row()));
    return data;
}

bool LoopListModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int, const QModelIndex& parent)
{
    const int from = data->data(rowMime).toInt();
    if (action != Qt::MoveAction || !data->hasFormat(rowMime) || from < 0 || from >= rowCount())
        return false;
    // Between two of them; on one of them: in its place.
    int to = parent.isValid() ? parent.row() : row < 0 ? rowCount() - 1 : row > from ? row - 1 : row;
    to = std::clamp(to, 0, rowCount() - 1);
    if (to != from)
        m_state.moveLoop(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    return true;
}

}  // namespace quillet
