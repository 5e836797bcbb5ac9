// CSharedLibrary.h: a plug-in module, loaded on first use. The name is a
// path, or a bare file name, looked for beside the executable first and
// then where the system's loader searches.
//
//   CSharedLibrary plugin(u"/opt/tool/plugins/libmux.so"_u16);
//   using MuxStart = int (*)(int);
//   auto start = reinterpret_cast<MuxStart>(reinterpret_cast<void*>(plugin.LoadFunction("MuxStart")));
//   if (start) start(3);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class VBU_API CSharedLibrary {
 public:
  // The entry of a module, to be cast to its real type.
  using Function = int (*)();

  // Stores the name; nothing is loaded yet.
  explicit CSharedLibrary(const unsigned short* name);
  // The copy names the same module, and holds a load of its own when the
  // other is loaded, so each frees only its own.
  CSharedLibrary(const CSharedLibrary& other);
  CSharedLibrary& operator=(const CSharedLibrary& other);
  // Unload().
  virtual ~CSharedLibrary();

  // Loads the module unless it is loaded; true when it is. A failed load
  // leaves it unloaded, and the next call tries again.
  virtual bool Load();
  // Frees the module if it is loaded.
  void Unload();
  // The entry `name` (8-bit, as the module exports it), loading the module
  // first; null if it cannot be loaded or has no such entry.
  Function LoadFunction(const char* name);

  // True while the module is loaded.
  bool IsLoaded() const { return mModule != nullptr; }

 private:
  void* mModule = nullptr;
  MString mName;
};
