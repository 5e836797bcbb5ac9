#include "containers/StMemoryState.h"

StMemoryState::StMemoryState(unsigned short*) : mLabel(), mState(0) {}

StMemoryState::StMemoryState(const unsigned short*) : StMemoryState() {}

StMemoryState::~StMemoryState() = default;
