// GLibMainLoop.h: for a host that runs GLib's main loop (a GTK application)
// instead of pumping the library's queue itself. One call on the
// user-interface thread at start-up makes that thread the library's main
// thread (with its task dispatcher) and adds a source to GLib's default main
// context that pumps the thread's queue whenever something is posted to it:
// the end of worker tasks, WM_THREADBROADCAST and the other hidden-window
// messages run inside gtk_main() with no polling.
//
//   // After gtk_init(), on the user-interface thread:
//   if (!vbu::AttachToGLibMainLoop()) std::fprintf(stderr, "no desktop module\n");
//   // ... build the windows, gtk_main() ...
//   vbu::DetachFromGLibMainLoop();
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

namespace vbu {

// Loads the desktop module and attaches the source to the calling thread's
// loop (GLib's default main context); true if it is attached. Calling it
// again does nothing more.
VBU_API bool AttachToGLibMainLoop();
// Removes the source again; the queue is then the host's to pump.
VBU_API void DetachFromGLibMainLoop();

}  // namespace vbu
