// In which language the window speaks.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QWidget>

class QComboBox;

namespace quillet {

class Label;

class LanguageSettings final : public QWidget {
    Q_OBJECT

public:
    /// `defaults` outlives the view.
    LanguageSettings(const ThemeSource& source, DefaultsDomain& defaults, QWidget* parent = nullptr);

    void loadCurrentSettings();

private:
    DefaultsDomain& m_defaults;
    QComboBox* m_choice;
    Label* m_hint;
};

}  // namespace quillet
