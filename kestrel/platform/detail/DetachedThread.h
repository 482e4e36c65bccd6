// kestrel/platform/detail/DetachedThread.h - a thread that nobody joins, with a pool of its own.
#pragma once

namespace kestrel::detail {

/// Runs function(argument) on a new detached thread, inside an AutoreleasePool that ends with it; a null
/// function runs nothing. False when the thread could not be made.
bool startDetachedThread(void (*function)(void*), void* argument);

}  // namespace kestrel::detail
