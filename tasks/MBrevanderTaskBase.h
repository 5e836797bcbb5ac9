// MBrevanderTaskBase.h: how a long-running object reads a stop flag (and a
// may-be-killed flag) that somebody else owns, without knowing the owner.
//
//   class Encoder : public MBrevanderTaskBase {
//    public:
//     void EncodeNextFrame() {}
//   };
//   Encoder encoder;
//   bool stop = false;
//   encoder.SetStopFlagPtr(&stop);      // the owner keeps `stop` alive
//   while (!encoder.IsStop()) { encoder.EncodeNextFrame(); stop = true; }
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

// Holds two pointers to flags it does not own; a copy watches the same flags.
class VBU_API MBrevanderTaskBase {
 public:
  MBrevanderTaskBase() = default;
  MBrevanderTaskBase(const MBrevanderTaskBase&) = default;
  MBrevanderTaskBase& operator=(const MBrevanderTaskBase&) = default;
  virtual ~MBrevanderTaskBase();

  virtual void SetStopFlagPtr(bool* stopFlag);
  // The value behind the stop flag; false while there is none. Read without
  // a lock: the owner writes one byte.
  virtual bool IsStop();
  virtual bool* GetStopFlagPtr();
  virtual void SetCanKillPtr(bool* canKillFlag);
  virtual bool* GetCanKillPtr();

 private:
  bool* mStopFlag = nullptr;
  bool* mCanKillFlag = nullptr;
};
