// Several files from one open dialog, and the extension a bare name takes
// from a filter, as the desktop chooser completes a name before it asks
// about replacing a file.
#include <VantoroBasicUtils/environment/CPathFileDialog.h>
#include <VantoroBasicUtils/environment/MFileDialog.h>
#include <VantoroBasicUtils/platform/FileChooser.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

// Answers OK with the paths it is given, and keeps the flags it was asked with.
class SeveralChooser : public vbu::FileChooser {
 public:
  explicit SeveralChooser(std::vector<std::u16string> paths) : mPaths(std::move(paths)) {}
  bool Run(const vbu::FileChooserRequest& request, vbu::FileChooserClient&, vbu::FileChooserResult& result) override {
    flags = request.flags;
    for (std::size_t i = 0; i < mPaths.size(); ++i) {
      const auto* path = reinterpret_cast<const unsigned short*>(mPaths[i].c_str());
      if (i == 0) {
        result.SetPathName(path);
      } else {
        result.AddPathName(path);
      }
    }
    result.filterIndex = 2;
    return !mPaths.empty();
  }
  unsigned long flags = 0;

 private:
  std::vector<std::u16string> mPaths;
};

struct Installed {
  explicit Installed(vbu::FileChooser* chooser) { vbu::SetFileChooser(chooser); }
  ~Installed() { vbu::SetFileChooser(nullptr); }
};

// An open dialog asks for several files where the host wants them and gives
// each in order; a save dialog never asks for several.
TEST(SeveralFiles, TheOpenDialogGivesEachFileInOrder) {
  struct Case {
    bool save, several;
    std::vector<std::u16string> chosen;
  };
  const Case cases[] = {
      {false, true, {u"/media/VTS_01_1.VOB", u"/media/VTS_01_2.VOB", u"/media/VTS_01_3.VOB"}},
      {false, true, {u"/media/VTS_01_1.VOB"}},
      {false, false, {u"/media/menu.vob"}},
      {true, true, {u"/media/title.vob"}},
  };
  for (const Case& c : cases) {
    SeveralChooser chooser(c.chosen);
    Installed installed(&chooser);
    MFileDialogWin open;
    MFileSaveDialogWin save;
    MFileDialogWin& dialog = c.save ? save : open;
    dialog.AddFilters(false, false, true);
    dialog.SetMultipleSelection(c.several);
    ASSERT_TRUE(dialog.Execute());
    EXPECT_EQ((chooser.flags & vbu::kFileChooserAllowMultiSelect) != 0, c.several && !c.save);
    ASSERT_EQ(dialog.GetFileCount(), static_cast<int>(c.chosen.size()));
    for (std::size_t i = 0; i < c.chosen.size(); ++i) {
      EXPECT_EQ(Text(dialog.GetFile(static_cast<int>(i)).GetFilePath()), c.chosen[i]);
    }
    EXPECT_EQ(Text(dialog.GetFileSpec().GetFilePath()), c.chosen[0]);  // the first is the file chosen
    EXPECT_EQ(dialog.GetSelectedFilter(), 2);
    EXPECT_TRUE(dialog.GetFile(-1).IsNull());
    EXPECT_TRUE(dialog.GetFile(dialog.GetFileCount()).IsNull());
  }
}

TEST(SeveralFiles, ResultKeepsEveryPath) {
  vbu::FileChooserResult result;
  EXPECT_EQ(result.GetPathCount(), 0u);
  EXPECT_EQ(Text(result.GetPathName()), u"");
  result.AddPathName(u"/a"_u16);
  result.AddPathName(nullptr);  // null is empty
  ASSERT_EQ(result.GetPathCount(), 2u);
  EXPECT_EQ(Text(result.GetPathNameAt(1)), u"");
  EXPECT_EQ(Text(result.GetPathNameAt(2)), u"") << "past the end";
  result.SetPathName(u"/c"_u16);  // one path again
  ASSERT_EQ(result.GetPathCount(), 1u);
  EXPECT_EQ(Text(result.GetPathName()), u"/c");
}

TEST(SeveralFiles, FilterExtensionOfPatterns) {
  struct Case {
    const char16_t* patterns;
    const char16_t* extension;
  };
  const Case cases[] = {
      {u"*.aif;*.aiff", u".aif"}, {u"*.mps", u".mps"},  {u"*.*", u""},     {u"*.mp?", u""},
      {u"vob", u"vob"},           {u"abc;*.x", u".x"}, {u"", u""},        {u"*.tar.gz", u".tar.gz"},
  };
  for (const Case& c : cases) {
    unsigned short extension[16] = {};
    const unsigned long length =
        vbu::FileChooserFilterExtension(reinterpret_cast<const unsigned short*>(c.patterns), extension, 16);
    EXPECT_TRUE(Text(extension) == std::u16string(c.extension)) << "case " << (&c - cases);
    EXPECT_EQ(length, std::u16string(c.extension).size());
  }
  // Cut to the room given, terminated; the length is the whole one.
  unsigned short small[3] = {1, 1, 1};
  EXPECT_EQ(vbu::FileChooserFilterExtension(u"*.aiff"_u16, small, 3), 5u);
  EXPECT_EQ(Text(small), u".a");
  EXPECT_EQ(vbu::FileChooserFilterExtension(nullptr, nullptr, 0), 0u);
}

}  // namespace
