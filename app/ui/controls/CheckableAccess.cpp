#include "app/ui/controls/CheckableAccess.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleWidget>

namespace quillet {
namespace {

class AccessibleCheckable final : public QAccessibleWidget {
public:
    explicit AccessibleCheckable(QAbstractButton* button)
        : QAccessibleWidget(button, QAccessible::CheckBox)
    {
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = button().isChecked();
        state.pressed = button().isDown();
        return state;
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        const QString text = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && text.isEmpty() ? button().text() : text;
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (button().isEnabled())
            names.prepend(toggleAction());
        return names;
    }

    void doAction(const QString& name) override
    {
        if (name == toggleAction())
            button().click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] QAbstractButton& button() const { return *static_cast<QAbstractButton*>(widget()); }
};

QAccessibleInterface* accessibleCheckable(const QString&, QObject* object)
{
    auto* button = qobject_cast<QAbstractButton*>(object);
    return button != nullptr && button->isCheckable() ? new AccessibleCheckable(button) : nullptr;
}

}  // namespace

void installCheckableAccess() { QAccessible::installFactory(accessibleCheckable); }

}  // namespace quillet
