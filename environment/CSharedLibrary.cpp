#include "environment/CSharedLibrary.h"

#include "platform/internal/Environment.h"

namespace vp = vbu::platform;

CSharedLibrary::CSharedLibrary(const unsigned short* name) : mName(name ? MString(name) : MString()) {}

CSharedLibrary::CSharedLibrary(const CSharedLibrary& other) : mName(other.mName) {
  if (other.mModule) Load();
}

CSharedLibrary& CSharedLibrary::operator=(const CSharedLibrary& other) {
  if (this == &other) return *this;
  Unload();
  mName = other.mName;
  if (other.mModule) Load();
  return *this;
}

CSharedLibrary::~CSharedLibrary() { Unload(); }

bool CSharedLibrary::Load() {
  if (mModule) return true;
  mModule = vp::LoadModule(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(mName)));
  return mModule != nullptr;
}

void CSharedLibrary::Unload() {
  if (!mModule) return;
  vp::FreeModule(mModule);
  mModule = nullptr;
}

CSharedLibrary::Function CSharedLibrary::LoadFunction(const char* name) {
  Load();
  if (!mModule) return nullptr;
  return reinterpret_cast<Function>(vp::FindModuleEntry(mModule, name));
}
