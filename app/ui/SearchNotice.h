// Says that songs are being looked for, which a slow disk or a large folder can make long, with a button that ends it.
// Threads: main thread.
#pragma once

#include "app/ui/Notice.h"

#include <functional>

namespace quillet {

class SearchNotice final : public Notice {
    Q_OBJECT

public:
    SearchNotice(const ThemeSource& source, std::function<void()> stop, QWidget* parent = nullptr);
};

}  // namespace quillet
