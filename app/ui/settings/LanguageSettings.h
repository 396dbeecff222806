// In which language the window speaks: from the choice on, if nothing is under way that the window shows.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QWidget>

#include <functional>

class QComboBox;

namespace quillet {

class Label;

class LanguageSettings final : public QWidget {
    Q_OBJECT

public:
    /// `defaults` outlives the view. `changeLanguage` changes the window's to the chosen one, later, or cannot now.
    LanguageSettings(const ThemeSource& source, DefaultsDomain& defaults, std::function<bool()> changeLanguage,
                     QWidget* parent = nullptr);

    void loadCurrentSettings();

private:
    DefaultsDomain& m_defaults;
    std::function<bool()> m_changeLanguage;
    QComboBox* m_choice;
    Label* m_hint;
};

}  // namespace quillet
