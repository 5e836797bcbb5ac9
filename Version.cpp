// The run-time version: compiled into the library, so that a host can tell
// the library it loaded from the headers it was built with.
#include <VantoroBasicUtils/Version.h>

namespace vbu {

const char* GetLibraryVersion() { return VBU_VERSION_STRING; }

int GetLibraryVersionNumber() { return VBU_VERSION_NUMBER; }

}  // namespace vbu
