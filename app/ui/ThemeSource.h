// The theme that is in force: that of the desktop's appearance, and of no other. Views draw with `theme` and draw again when it
// changes. It finds out and tells; it draws nothing.
// Threads: main thread.
#pragma once

#include "app/ui/AppTheme.h"

#include <QDBusVariant>
#include <QObject>
#include <QVariant>

namespace quillet {

class ThemeSource final : public QObject {
    Q_OBJECT

public:
    /// Starts with the appearance of the palette that the desktop gives.
    explicit ThemeSource(QObject* parent = nullptr);

    [[nodiscard]] const AppTheme& theme() const { return m_theme; }
    /// Changes the theme, whatever the desktop says.
    void setAppearance(Appearance appearance);

    /// Asks the desktop's settings (the portal on the session bus) which appearance is preferred, and follows them. The answer
    /// comes later, or never.
    void followDesktop();

Q_SIGNALS:
    void themeChanged();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void takePreference(const QVariant& preference);

    AppTheme m_theme;
    /// The appearance where none is preferred: that of the palette at the start, as long as no preference explains it.
    Appearance m_usual;
};

}  // namespace quillet
