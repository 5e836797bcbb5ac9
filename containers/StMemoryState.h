// StMemoryState.h: an inert record that once took part in memory checking;
// it holds a label and a state word that nothing reads.
//
//   StMemoryState state;                 // label empty, state 0
//   StMemoryState copy(state);
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class VBU_API StMemoryState {
 public:
  // The label argument is dropped: the label starts empty.
  explicit StMemoryState(unsigned short* label = nullptr);
  explicit StMemoryState(const unsigned short* label);
  explicit StMemoryState(decltype(nullptr)) : StMemoryState() {}
  StMemoryState(const StMemoryState& other) = default;
  StMemoryState& operator=(const StMemoryState& other) = default;
  ~StMemoryState();

 private:
  MString mLabel;
  [[maybe_unused]] uint32_t mState;  // kept for the record's layout; nothing reads it
};
