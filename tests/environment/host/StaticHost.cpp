// A small host whose objects of static storage read a setting when they are
// made, before main, and save one when they die, at exit: the window state
// a desktop program keeps. main points the profile at the file named by its
// argument and writes a setting of its own.
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>

using namespace vbu::literals;

namespace {

// Made before main without touching the settings: it dies after everything
// that the first settings call of main made.
struct Session {
  ~Session() { CBrevanderProfile::WriteProfileStringW(u"Window"_u16, u"Session"_u16, u"ended"_u16); }
} gSession;

struct Window {
  Window() : zoom(CBrevanderProfile::GetProfileIntW(kProfileZoom, 1)) {}
  ~Window() {
    CBrevanderProfile::WriteProfileInt(kProfileZoom, zoom + 1);
    CBrevanderProfile::WriteProfileStringW(u"Window"_u16, u"State"_u16, u"saved at exit"_u16);
  }
  int zoom;
} gWindow;

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  MString path;
  path.ImportASCII(argv[1], -1);
  CBrevanderProfile::SetProfilePath(path);
  gWindow.zoom = CBrevanderProfile::GetProfileIntW(kProfileZoom, 1);
  CBrevanderProfile::WriteProfileInt(kProfileOpenRecent, 1);
  return 0;
}
