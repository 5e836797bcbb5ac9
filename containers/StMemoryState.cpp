#include "containers/StMemoryState.h"

StMemoryState::StMemoryState(unsigned short*) : mLabel(), mState(0) {}

StMemoryState::~StMemoryState() = default;
