// A line of text in one of the theme's roles; it follows the theme.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QLabel>

namespace quillet {

class Label : public QLabel {
    Q_OBJECT

public:
    enum class Role { title, text, secondary, error, number, accentNumber, toolbarTitle, toolbarSecondary };

    Label(const ThemeSource& source, Role role, const QString& text, QWidget* parent = nullptr);

    void setRole(Role role);
    /// Makes it a heading: bold letters of so many pixels, larger where the desktop's text is.
    void setHeading(int pixels);

private:
    void applyTheme();

    const ThemeSource& m_source;
    Role m_role;
    /// 0: no heading.
    int m_headingPixels = 0;
};

}  // namespace quillet
