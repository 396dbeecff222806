// Whether a sheet stands before the window, which cannot be used then, or beside it.
// Threads: main thread.
#pragma once

class QDialog;

namespace quillet {

/// Puts a sheet that is in view before the window or beside it; whether that changed anything.
bool setInFront(QDialog& sheet, bool isInFront);

}  // namespace quillet
