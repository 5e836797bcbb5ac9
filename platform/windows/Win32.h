// The Win32 headers, as every system file here includes them: without the
// parts that turn common names into macros (min, max, the GDI).
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// Macros of <windows.h> that would rename the library's own functions.
#undef FreeModule
#undef GetMessage
#undef DispatchMessage
#undef PostMessage
#undef SendMessage
#undef PeekMessage
#undef CreateEvent
#undef GetObject
#undef DeleteFile
#undef MoveFile
#undef CreateDirectory
#undef RemoveDirectory
#undef GetCurrentDirectory
#undef SetCurrentDirectory
#undef LoadLibrary
#undef MessageBox
#undef GetModuleFileName
#undef GetTempPath
#undef CopyFile
#undef FindFirstFile
#undef FindNextFile
#undef GetUserName
#undef ERROR

#include <cstdint>
#include <string>

#include "platform/internal/SysCalls.h"

namespace vbu::platform::win {

// A descriptor of the layer is the handle's value: the system keeps handles
// within 32 bits so that they pass between 32- and 64-bit programs.
inline HANDLE ToHandle(int fd) { return reinterpret_cast<HANDLE>(static_cast<intptr_t>(fd)); }
inline int FromHandle(HANDLE handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle)); }

// The layer's UTF-8 names as the system's UTF-16 ones, and back; empty
// (with the last error set) when they cannot be.
inline std::wstring Wide(const char* bytes) {
  if (!bytes || !*bytes) return {};
  int room = Sys().MultiByteToWideChar(CP_UTF8, 0, bytes, -1, nullptr, 0);
  if (room <= 0) return {};
  std::wstring out(static_cast<std::size_t>(room), L'\0');
  if (Sys().MultiByteToWideChar(CP_UTF8, 0, bytes, -1, out.data(), room) <= 0) return {};
  out.resize(static_cast<std::size_t>(room - 1));
  return out;
}

inline std::string Narrow(const wchar_t* units, int count = -1) {
  if (!units || count == 0) return {};
  int room = Sys().WideCharToMultiByte(CP_UTF8, 0, units, count, nullptr, 0, nullptr, nullptr);
  if (room <= 0) return {};
  std::string out(static_cast<std::size_t>(room), '\0');
  if (Sys().WideCharToMultiByte(CP_UTF8, 0, units, count, out.data(), room, nullptr, nullptr) <= 0) return {};
  if (count < 0) out.resize(static_cast<std::size_t>(room - 1));
  return out;
}

// 0 when a call that gives a BOOL succeeded, else the thread's last error.
inline uint32_t Result(int ok) {
  if (ok) return 0;
  uint32_t error = ::GetLastError();
  return error != 0 ? error : ERROR_GEN_FAILURE;
}

}  // namespace vbu::platform::win
