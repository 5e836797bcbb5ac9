#include "platform/MessageBox.h"

#include <mutex>
#include <string>

#include "platform/internal/CodePage.h"
#include "platform/internal/DesktopModule.h"
#include "platform/internal/WideText.h"

namespace {

// The hook and its context change together; the guard is never held while the hook runs.
std::mutex gHookGuard;
vbu::MessageBoxHook gHook = nullptr;
void* gHookContext = nullptr;

void WriteToStandardError(const unsigned short* text) {
  const std::size_t length = vbu::wtext::Length(text);
  std::string bytes(length * 3 + 1, '\0');  // three bytes at most for each unit
  long n = vbu::platform::UnitsToBytes(text, length, bytes.data(), bytes.size(), vbu::platform::CodePage::kSystem);
  bytes.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
  vbu::platform::WriteErrorLine(bytes.c_str());  // nowhere to show it: the message is dropped
}

}  // namespace

namespace vbu {

void SetMessageBoxHook(MessageBoxHook hook, void* context) {
  std::lock_guard<std::mutex> guard(gHookGuard);
  gHook = hook;
  gHookContext = hook ? context : nullptr;
}

void ShowMessageBox(const unsigned short* text) {
  if (!text) return;
  MessageBoxHook hook;
  void* context;
  {
    std::lock_guard<std::mutex> guard(gHookGuard);
    hook = gHook;
    context = gHookContext;
  }
  if (hook) {
    hook(text, context);
    return;
  }
  // The desktop's message box where there is a display, else standard error.
  if (const platform::DesktopModule* desktop = platform::Desktop(true, nullptr)) {
    char why[512] = {};
    if (desktop->ShowMessage(text, why, sizeof why) == 1) return;
    WriteToStandardError(text);
    platform::WriteErrorLine((std::string("VantoroBasicUtils: the message above could not be shown in a box: ") + why).c_str());
    return;
  }
  WriteToStandardError(text);
}

}  // namespace vbu
