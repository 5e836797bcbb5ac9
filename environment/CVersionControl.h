// CVersionControl.h: the record in which the host states what it is: its
// version numbers, the data-format version, which application of the family
// is running and which optional features it has. The host makes one at
// start-up and fills it in before anything asks; gVersionControl finds it.
// Also the library's version constants.
//
//   CVersionControl version;                       // gVersionControl == &version
//   version.SetEdition(kVantoroStandardID);
//   version.SetSupportWebConnection(true);
//   bool online = version.IsSupportWebConnection();   // and the settings file agrees
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>

// The library's version, for the host.
VBU_API extern const short kMajorVersion;        // 1
VBU_API extern const short kMinorVersion;        // 2
VBU_API extern const short kBugFixVersion;       // 0
VBU_API extern const int32_t kBuildVersion;      // 19980918
VBU_API extern const short kDataFormatVersion0;
VBU_API extern const short kDataFormatVersion1;
VBU_API extern const short kDataFormatVersion2;
VBU_API extern const short kDataFormatVersion3;
VBU_API extern const short kDataFormatVersion4;
VBU_API extern const short kDataFormatVersion5;
VBU_API extern const short kDataFormatVersion;   // 5, the current one
// The edition number of Vantoro Standard (see IsVantoroRunning).
VBU_API extern const int32_t kVantoroStandardID; // 200

class VBU_API CVersionControl {
 public:
  // All zero and false; becomes the current record.
  CVersionControl();
  // Copies every field; the current record stays what it was.
  CVersionControl(const CVersionControl& other);
  CVersionControl& operator=(const CVersionControl& other);
  // No record is current any more.
  virtual ~CVersionControl();

  void SetMajorVersion(short version) { mMajorVersion = version; }
  short GetMajorVersion() const { return mMajorVersion; }
  void SetMinorVersion(short version) { mMinorVersion = version; }
  short GetMinorVersion() const { return mMinorVersion; }
  void SetBugFixVersion(short version) { mBugFixVersion = version; }
  short GetBugFixVersion() const { return mBugFixVersion; }
  void SetDataFormatVersion(short version) { mDataFormatVersion = version; }
  short GetDataFormatVersion() const { return mDataFormatVersion; }
  void SetBuildVersion(int32_t version) { mBuildVersion = version; }
  int32_t GetBuildVersion() const { return mBuildVersion; }
  // Which application of the family is running.
  void SetEdition(int32_t edition) { mEdition = edition; }
  int32_t GetEdition() const { return mEdition; }
  // The product number, in the host's numbering.
  void SetProduct(int32_t product) { mProduct = product; }
  int32_t GetProduct() const { return mProduct; }

  void SetSupportAC3Encoder(bool support) { mSupportAC3Encoder = support; }
  bool IsSupportAC3Encoder() const { return mSupportAC3Encoder; }
  // A feature is on when the record says so and the settings file does not
  // turn it off (key "2", resp. "3", of section "Vantoro" set to 0).
  void SetSupportWebConnection(bool support) { mSupportWebConnection = support; }
  bool IsSupportWebConnection() const;
  void SetSupportEnhancedDVD(bool support) { mSupportEnhancedDVD = support; }
  bool IsSupportEnhancedDVD() const;

  // True when a current record exists and its edition is kVantoroStandardID.
  static bool IsVantoroRunning();

  // The current record: the one made last by the default constructor, until
  // a record dies. Null before.
  static CVersionControl* gVersionControl;

 private:
  short mMajorVersion = 0;
  short mMinorVersion = 0;
  short mBugFixVersion = 0;
  short mDataFormatVersion = 0;
  int32_t mBuildVersion = 0;
  int32_t mEdition = 0;
  int32_t mProduct = 0;
  bool mSupportAC3Encoder = false;
  bool mSupportWebConnection = false;
  bool mSupportEnhancedDVD = false;
};
