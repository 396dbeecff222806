#include "app/ui/controls/Label.h"

#include "app/ui/controls/Fonts.h"

#include <utility>

namespace quillet {

Label::Label(const ThemeSource& source, Role role, const QString& text, QWidget* parent)
    : QLabel(text, parent),
      m_source(source),
      m_role(role)
{
    setTextFormat(Qt::PlainText);
    connect(&source, &ThemeSource::themeChanged, this, &Label::applyTheme);
    applyTheme();
}

void Label::setRole(Role role)
{
    if (std::exchange(m_role, role) != role)
        applyTheme();
}

void Label::setHeading(int pixels)
{
    m_headingPixels = pixels;
    applyTheme();
}

void Label::applyTheme()
{
    const AppTheme& theme = m_source.theme();
    QColor color = theme.text;
    switch (m_role) {
    case Role::title:
        setFont(titleFont());
        break;
    case Role::text:
        setFont(controlFont());
        break;
    case Role::secondary:
        setFont(secondaryFont());
        color = theme.secondaryText;
        break;
    case Role::toolbarTitle:
    case Role::toolbarSecondary:
        setFont(m_role == Role::toolbarTitle ? titleFont() : secondaryFont());
        color = AppTheme::onToolbar;
        break;
    case Role::error:
        setFont(controlFont());
        color = theme.redText;
        break;
    case Role::number:
    case Role::accentNumber:
        setFont(numberFont(AppTheme::secondaryPixels));
        color = m_role == Role::number ? theme.secondaryText : theme.accentText;
        break;
    }
    if (m_headingPixels > 0) {
        QFont heading = titleFont();
        heading.setPixelSize(scaled(m_headingPixels));
        heading.setWeight(QFont::Bold);
        setFont(heading);
    }
    QPalette palette;
    palette.setColor(QPalette::WindowText, color);
    setPalette(palette);
}

}  // namespace quillet
