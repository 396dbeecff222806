// Lets assistive programs use switches and other buttons that stay down: their action is a click. The toolkit's own would turn
// the button over and tell nobody, so that it showed what is not so.
// Threads: main thread.
#pragma once

namespace quillet {

/// For all such buttons of the program that no assistive program has asked for yet. Once is enough.
void installCheckableAccess();

}  // namespace quillet
