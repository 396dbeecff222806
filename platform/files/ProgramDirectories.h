// Where the program itself lies.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

/// The directory of the running executable, links resolved: what belongs to the program lies beside it. Empty where that cannot
/// be found out.
[[nodiscard]] FilePath executableDirectory();

}  // namespace quillet
