#pragma once

namespace vx {

/// What the attaching of the library to a process does, on the thread that loads it: chooses the
/// primitives' variant for the processor, switches on flush-to-zero (with the underflow exception
/// masked) and denormals-are-zero, and resets the trace.
///
/// Runs by itself when the library is loaded. Programs that link the archive of its objects may
/// call it, again and again without harm.
void attachProcess();

}  // namespace vx
