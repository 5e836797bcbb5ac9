// Thread.h (internal): thread ids and type names for the layer and the task
// classes. Never installed.
//
//   unsigned long id = vbu::platform::ReserveThreadId();   // before the thread runs
//   ...on the new thread: vbu::platform::AdoptThreadId(id);
#pragma once

#include <string>
#include <typeinfo>

namespace vbu::platform {

// The calling thread's id: small numbers from 1, given out on first use and never reused.
unsigned long CurrentThreadId();
// A fresh id for a thread that does not run yet.
unsigned long ReserveThreadId();
// Makes `id` the calling thread's id; only before the thread has asked for its id.
void AdoptThreadId(unsigned long id);

// The name of `type` as its source spells it ("Joiner", "ns::Task<int>"),
// or the compiler's own name if it cannot be demangled.
std::string TypeName(const std::type_info& type);

}  // namespace vbu::platform
