#pragma once

// Marks the definition of a function of the public interface; all else in the library is hidden.
#define VX_EXPORT extern "C" __attribute__((visibility("default")))
