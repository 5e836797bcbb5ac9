// MessageBox.h: how the library shows a blocking message to the user. The
// library has no user interface of its own: a host that has one installs a
// hook that shows the text in its own dialog; without a hook it is the
// desktop's message box where there is a display (shown on the
// user-interface thread while a calling worker waits), else one line on
// standard error.
//
//   struct App { void Alert(const unsigned short* text) { std::printf("%s\n", UStringUtils::TtoA(const_cast<unsigned short*>(text))); } };
//   static App app;
//   vbu::SetMessageBoxHook([](const unsigned short* text, void* host) { static_cast<App*>(host)->Alert(text); }, &app);
//   vbu::ShowMessageBox(u"Folder( /media/cdrom ) is a read-only drive."_u16);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

namespace vbu {

// Shows `text` (terminated 16-bit text) and returns once the user has seen it.
using MessageBoxHook = void (*)(const unsigned short* text, void* context);

// Installs `hook` (null: back to standard error). `context` is handed to it.
VBU_API void SetMessageBoxHook(MessageBoxHook hook, void* context);
// Shows `text` through the hook, or writes it to standard error. Null shows nothing.
VBU_API void ShowMessageBox(const unsigned short* text);

}  // namespace vbu
