#include "tasks/MBrevanderTaskBase.h"

#include <atomic>

MBrevanderTaskBase::~MBrevanderTaskBase() = default;

void MBrevanderTaskBase::SetStopFlagPtr(bool* stopFlag) { mStopFlag = stopFlag; }

bool MBrevanderTaskBase::IsStop() {
  // The owner sets the byte on another thread; read it as one indivisible load.
  return mStopFlag && std::atomic_ref<bool>(*mStopFlag).load(std::memory_order_relaxed);
}

bool* MBrevanderTaskBase::GetStopFlagPtr() { return mStopFlag; }

void MBrevanderTaskBase::SetCanKillPtr(bool* canKillFlag) { mCanKillFlag = canKillFlag; }

bool* MBrevanderTaskBase::GetCanKillPtr() { return mCanKillFlag; }
