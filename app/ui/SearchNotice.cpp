#include "app/ui/SearchNotice.h"

#include <QPushButton>

#include <utility>

namespace quillet {

SearchNotice::SearchNotice(const ThemeSource& source, std::function<void()> stop, QWidget* parent)
    : Notice(source, tr("Looking for songs…"), parent)
{
    connect(&addButton(tr("Stop")), &QAbstractButton::clicked, this, std::move(stop));
}

}  // namespace quillet
