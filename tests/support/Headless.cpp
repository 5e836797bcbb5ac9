// The test programs run headless, display or not: a dialog or message box
// that a test does not script must not open a window and wait for a user.
// The tests in real windows (tests/desktop) run their own host instead.
#include <cstdlib>

namespace {

const bool kHeadless = [] {
#if defined(_WIN32)
  ::_putenv("DISPLAY=");
  ::_putenv("WAYLAND_DISPLAY=");
#else
  ::unsetenv("DISPLAY");
  ::unsetenv("WAYLAND_DISPLAY");
#endif
  return true;
}();

}  // namespace
