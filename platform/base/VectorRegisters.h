// The state of the processor's vector registers, on which the speed of libraries that were built without AVX depends.
// Threads: any; a thread has registers of its own.
#pragma once

namespace quillet {

/// Empties the upper halves of the vector registers. While they hold something, every step between code with AVX (the C
/// library's sines and arcs) and code without (Rubber Band) costs some seventy cycles on many processors, and playing slowed
/// down twice as much; a thread may be born so. Takes a nanosecond, and does nothing where there is no AVX.
void emptyUpperVectorHalves() noexcept;

}  // namespace quillet
