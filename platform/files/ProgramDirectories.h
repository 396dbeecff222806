// Where the program itself lies.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"

namespace quillet {

/// The directory of the running executable, links resolved: what belongs to the program lies beside it. Empty where that cannot
/// be found out.
[[nodiscard]] FilePath executableDirectory();

/// The directory of what belongs to the program and is no program: the same in the build tree and where it is installed. Empty
/// like that of the executable.
[[nodiscard]] FilePath resourcesDirectory();

}  // namespace quillet
