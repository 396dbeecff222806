#include "app/ui/ClosableNotice.h"

#include <QPushButton>

namespace quillet {

ClosableNotice::ClosableNotice(const ThemeSource& source, const QString& sentence, QWidget* parent)
    : Notice(source, sentence, parent)
{
    connect(&addButton(tr("Close")), &QAbstractButton::clicked, this, &QObject::deleteLater);
}

}  // namespace quillet
