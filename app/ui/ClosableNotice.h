// A sentence on a strip until the user closes it.
// Threads: main thread.
#pragma once

#include "app/ui/Notice.h"

namespace quillet {

class ClosableNotice final : public Notice {
    Q_OBJECT

public:
    /// Destroys itself when it is closed.
    ClosableNotice(const ThemeSource& source, const QString& sentence, QWidget* parent = nullptr);
};

}  // namespace quillet
