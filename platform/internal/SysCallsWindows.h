// SysCallsWindows.h: the Win32 form of the system call table (SysCalls.h).
// Each entry is the Win32 function of the same name, with plain types for
// the system's (a HANDLE is a void*, a DWORD a uint32_t, a BOOL an int):
// a failure gives the function's own failure result and sets the thread's
// last error, as the system does. Internal; never installed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Overlapped.h"

// The system's records, known here by name only.
struct _BY_HANDLE_FILE_INFORMATION;
struct _WIN32_FIND_DATAW;
struct tagOFNW;

namespace vbu::platform {

// What the VirtualAlloc entry gives on failure.
inline void* const kMapFailed = nullptr;
constexpr std::size_t kHugePage = std::size_t{2} << 20;

struct SysCalls {
  void* (*calloc)(std::size_t count, std::size_t size);
  void (*free)(void* block);
  // Committed, zeroed pages (MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE); released whole (MEM_RELEASE).
  void* (*VirtualAlloc)(std::size_t size);
  int (*VirtualFree)(void* block);

  // Text in a code page and in UTF-16.
  int (*MultiByteToWideChar)(uint32_t codePage, uint32_t flags, const char* bytes, int count, wchar_t* out, int room);
  int (*WideCharToMultiByte)(uint32_t codePage, uint32_t flags, const wchar_t* units, int count, char* out, int room,
                             const char* substitute, int* substituted);

  // Files. CreateFileW without security attributes or template.
  void* (*CreateFileW)(const wchar_t* path, uint32_t access, uint32_t share, uint32_t disposition, uint32_t flags);
  int (*CloseHandle)(void* handle);
  int (*ReadFile)(void* file, void* buffer, uint32_t count, uint32_t* got, OVERLAPPED* overlapped);
  int (*WriteFile)(void* file, const void* buffer, uint32_t count, uint32_t* wrote, OVERLAPPED* overlapped);
  int (*GetOverlappedResult)(void* file, OVERLAPPED* overlapped, uint32_t* bytes, int wait);
  int (*SetFilePointerEx)(void* file, int64_t distance, int64_t* position, uint32_t method);
  // SetFileInformationByHandle with FileEndOfFileInfo, and with FileAllocationInfo.
  int (*SetEndOfFileAt)(void* file, int64_t size);
  int (*SetAllocationSize)(void* file, int64_t size);
  int (*FlushFileBuffers)(void* file);
  int (*GetFileSizeEx)(void* file, int64_t* size);
  int (*GetFileInformationByHandle)(void* file, struct ::_BY_HANDLE_FILE_INFORMATION* info);
  // NtQueryInformationFile's mode (FileModeInformation) and access (FileAccessInformation) of a handle.
  int (*GetHandleMode)(void* file, uint32_t* mode);
  int (*GetHandleAccess)(void* file, uint32_t* access);
  // GetFinalPathNameByHandleW: the path of an open file or folder.
  uint32_t (*GetFinalPathNameByHandleW)(void* file, wchar_t* path, uint32_t room, uint32_t flags);
  uint32_t (*GetFileAttributesW)(const wchar_t* path);
  int (*SetFileAttributesW)(const wchar_t* path, uint32_t attributes);
  int (*DeleteFileW)(const wchar_t* path);
  int (*MoveFileExW)(const wchar_t* from, const wchar_t* to, uint32_t flags);
  int (*CreateHardLinkW)(const wchar_t* name, const wchar_t* existing);
  int (*CreateDirectoryW)(const wchar_t* path);
  int (*RemoveDirectoryW)(const wchar_t* path);
  int (*SetCurrentDirectoryW)(const wchar_t* path);
  void* (*FindFirstFileW)(const wchar_t* pattern, struct ::_WIN32_FIND_DATAW* entry);
  int (*FindNextFileW)(void* search, struct ::_WIN32_FIND_DATAW* entry);
  int (*FindClose)(void* search);
  int (*GetDiskFreeSpaceExW)(const wchar_t* path, uint64_t* available, uint64_t* total, uint64_t* free);
  int (*GetVolumePathNameW)(const wchar_t* path, wchar_t* root, uint32_t room);
  uint32_t (*GetDriveTypeW)(const wchar_t* root);
  int (*LockFileEx)(void* file, uint32_t flags, OVERLAPPED* overlapped);

  // The completion port of asynchronous transfers.
  void* (*CreateIoCompletionPort)(void* file, void* port, uintptr_t key, uint32_t threads);
  int (*GetQueuedCompletionStatus)(void* port, uint32_t* bytes, uintptr_t* key, OVERLAPPED** overlapped,
                                   uint32_t milliseconds);
  int (*PostQueuedCompletionStatus)(void* port, uint32_t bytes, uintptr_t key, OVERLAPPED* overlapped);
  // Events and waits.
  void* (*CreateEventW)(int manualReset, int signalled);
  uint32_t (*WaitForSingleObjectEx)(void* object, uint32_t milliseconds, int alertable);

  // Threads. _beginthreadex gives a handle, or 0 with errno set.
  uintptr_t (*_beginthreadex)(unsigned (*start)(void* arg), void* arg);
  uint32_t (*SuspendThread)(void* thread);
  uint32_t (*ResumeThread)(void* thread);
  int (*WaitOnAddress)(volatile void* address, void* expected, std::size_t size, uint32_t milliseconds);
  void (*WakeByAddressAll)(void* address);

  // The application's environment.
  uint32_t (*GetModuleFileNameW)(void* module, wchar_t* path, uint32_t room);
  // GetModuleHandleExW(FROM_ADDRESS | UNCHANGED_REFCOUNT): the module that holds `address`, or null.
  void* (*ModuleOfAddress)(const void* address);
  // SHGetKnownFolderPath: an HRESULT; the path is freed with CoTaskMemFree.
  long (*SHGetKnownFolderPath)(const void* folderId, wchar_t** path);
  void (*CoTaskMemFree)(void* block);
  uint32_t (*GetEnvironmentVariableW)(const wchar_t* name, wchar_t* value, uint32_t room);
  void* (*LoadLibraryW)(const wchar_t* name);
  void* (*GetProcAddress)(void* module, const char* name);
  int (*FreeLibrary)(void* module);
  uint32_t (*GetCurrentProcessId)();
  void* (*GetStdHandle)(uint32_t which);

  // Dialogs and boxes.
  int (*GetOpenFileNameW)(struct ::tagOFNW* request);
  int (*GetSaveFileNameW)(struct ::tagOFNW* request);
  uint32_t (*CommDlgExtendedError)();
  int (*MessageBoxW)(void* owner, const wchar_t* text, const wchar_t* caption, uint32_t type);
};

SysCalls& Sys();
const SysCalls& DefaultSysCalls();

}  // namespace vbu::platform
