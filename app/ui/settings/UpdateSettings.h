// Which version this is, where newer ones are told of, and the button that asks.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QWidget>

#include <functional>

class QLineEdit;

namespace quillet {

class UpdateSettings final : public QWidget {
    Q_OBJECT

public:
    /// The address of the feed that is asked instead of the program's own.
    static constexpr const char* feedKey = "QLT.updateFeed";

    /// `defaults` outlives the view. `check` asks now.
    UpdateSettings(const ThemeSource& source, DefaultsDomain& defaults, std::function<void()> check, QWidget* parent = nullptr);

    void loadCurrentSettings();

private:
    DefaultsDomain& m_defaults;
    QLineEdit* m_feed;
};

}  // namespace quillet
