// The program with its window: makes every object that lives as long as it does, and puts them together. The only place that
// names concrete classes of the platform and shared instances.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/process/SingleInstance.h"

#include <vector>

namespace quillet {

/// Shows the window, opens `files` (and folders) in it, and later what other starts of the program hand over by `instance`;
/// returns the exit status when it has been closed. `argumentCount` and `arguments` are the program's, for the toolkit.
[[nodiscard]] int runWindow(int& argumentCount, char** arguments, const std::vector<FilePath>& files, SingleInstance& instance);

}  // namespace quillet
