#include "environment/CVersionControl.h"

#include "environment/CBrevanderProfile.h"

const short kMajorVersion = 1;
const short kMinorVersion = 2;
const short kBugFixVersion = 0;
const int32_t kBuildVersion = 19980918;
const short kDataFormatVersion0 = 0;
const short kDataFormatVersion1 = 1;
const short kDataFormatVersion2 = 2;
const short kDataFormatVersion3 = 3;
const short kDataFormatVersion4 = 4;
const short kDataFormatVersion5 = 5;
const short kDataFormatVersion = 5;
const int32_t kVantoroStandardID = 200;

CVersionControl* CVersionControl::gVersionControl = nullptr;

CVersionControl::CVersionControl() { gVersionControl = this; }

CVersionControl::CVersionControl(const CVersionControl& other) = default;

CVersionControl& CVersionControl::operator=(const CVersionControl& other) = default;

CVersionControl::~CVersionControl() { gVersionControl = nullptr; }

bool CVersionControl::IsSupportWebConnection() const {
  return CBrevanderProfile::GetProfileIntW(kProfileVantoro2, 1) != 0 && mSupportWebConnection;
}

bool CVersionControl::IsSupportEnhancedDVD() const {
  return CBrevanderProfile::GetProfileIntW(kProfileVantoro3, 1) != 0 && mSupportEnhancedDVD;
}

bool CVersionControl::IsVantoroRunning() {
  return gVersionControl != nullptr && gVersionControl->mEdition == kVantoroStandardID;
}
