#include "app/ui/settings/FolderRow.h"

#include "app/ui/FileNames.h"
#include "app/ui/controls/ElidedLabel.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <utility>

namespace quillet {

FolderRow::FolderRow(const ThemeSource& source, const QString& name, Handlers handlers, QWidget* parent)
    : QWidget(parent),
      m_name(name),
      m_handlers(std::move(handlers)),
      m_path(new ElidedLabel(source, Label::Role::secondary))
{
    m_path->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* select = new QPushButton(tr("Select"));
    select->setAccessibleName(tr("Select: %1").arg(name));
    auto* reset = new QPushButton(tr("Reset to Default"));
    reset->setAccessibleName(tr("Reset to default: %1").arg(name));
    connect(select, &QAbstractButton::clicked, this, &FolderRow::choose);
    connect(reset, &QAbstractButton::clicked, this, [this] { m_handlers.reset(); });
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(new Label(source, Label::Role::text, name));
    row->addWidget(m_path, 1);
    row->addWidget(select);
    row->addWidget(reset);
    for (QPushButton* button : { select, reset })
        button->setAutoDefault(false);
}

void FolderRow::setFolder(const FilePath& folder)
{
    m_folder = folder;
    const QString path = abbreviatedPath(folder);
    m_path->setWholeText(path, m_name + QLatin1Char(' ') + path);
}

void FolderRow::choose()
{
    if (m_panel) {
        m_panel->raise();
        return;
    }
    const auto take = [this](const std::vector<FilePath>& folders) { m_handlers.chosen(folders.front()); };
    m_panel = new FilePanel(*this, { m_name, m_folder, true, tr("Select"), {} }, take, openPanel);
}

}  // namespace quillet
