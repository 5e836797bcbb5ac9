// A single-run class named Render in an unnamed namespace, as in
// HandOverTest.cpp: a distinct type of the same name.
#include "TaskProbe.h"

namespace {

class Render : public taskprobe::Probe {
 public:
  using Probe::Probe;
};

}  // namespace

taskprobe::Probe* MakeRenderOfAnotherFile(taskprobe::Log& log, const std::string& name) {
  return new Render(log, name, true, true, true);
}
