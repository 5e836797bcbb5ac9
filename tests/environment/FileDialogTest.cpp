// The open and save dialogs on a scripted chooser: the filter table, start
// names, the last-file rule, extension appending and per-filter folders.
#include <VantoroBasicUtils/environment/CPathFileDialog.h>
#include <VantoroBasicUtils/environment/MFileDialog.h>
#include <VantoroBasicUtils/platform/MessageBox.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ScriptedFileChooser.h"
#include "support/TempFolder.h"

using namespace vbu::literals;
using Chooser = ScriptedFileChooser;

namespace {

std::u16string S(const unsigned short* text) { return Text(text); }
const unsigned short* U(const std::u16string& text) { return reinterpret_cast<const unsigned short*>(text.c_str()); }

// A dialog whose table can be looked at.
class TableDialog : public MFileDialogWin {
 public:
  std::u16string Description(unsigned long i) { return S(GetFileFilter(i)->mDescription); }
  std::u16string Patterns(unsigned long i) { return S(GetFileFilter(i)->mExtension); }
};

class FileDialogs : public ::testing::Test {
 protected:
  void SetUp() override { MFileDialog::sLastFile = MFileSpecWin(); }
  void TearDown() override { MFileDialog::sLastFile = MFileSpecWin(); }
};

std::vector<std::u16string> gMessages;

}  // namespace

TEST_F(FileDialogs, AddFiltersBuildsTheMediaTable) {
  TableDialog all;
  EXPECT_TRUE(all.AddFilters(true, true, true));
  ASSERT_EQ(all.GetFilterCount(), 22u);
  const char16_t* descriptions[] = {
      u"All files (*.*)", u"All Data Files", u"All Video Files", u"  Mpeg1, Mpeg2 Video (mpeg,mpg,mpv)",
      u"  Mpeg1, Mpeg2 Still (mps)", u"All Audio Files", u"  Dolby Digital Audio (ac3)",
      u"  AIFF [PCM,DTS] Audio (aif,aiff)", u"  Digital Theater Sound (dts)", u"  Mpeg1, Mpeg2 Audio (mpa)",
      u"  Windows Wave [PCM] Audio (wav)", u"All Image Files", u"  Windows,OS2 Bitmap (bmp,dib)",
      u"  CompuServe Bitmap (gif)", u"  JPEG Image (jfif,jif,jpeg,jpg)", u"  Kodak Photo CD Image (pcd)",
      u"  Macintosh PICT Image (pct,pic,pict)", u"  Adobe Photoshop Image (psd,8pbs)",
      u"  Silicon Graphics Image (sgi,bw,rgb,rgba)", u"  Truevision Targa Image (tga,tpic)",
      u"  TIFF Bitmap (tif,tiff)", u"  YUV [NTSC,PAL] 4:2:0 Image (yuv)"};
  for (unsigned long i = 0; i < 22; ++i) EXPECT_EQ(all.Description(i + 1), descriptions[i]) << i + 1;
  EXPECT_EQ(all.Patterns(2),
            u"*.ac3;*.aif;*.aiff;*.dts;*.mpa;*.wav;*.bmp;*.dib;*.gif;*.jfif;*.jif;*.jpeg;*.jpg;*.pcd;*.pct;*.pic;"
            u"*.pict;*.psd;*.8pbs;*.sgi;*.bw;*.rgb;*.rgba;*.tga;*.tpic;*.tif;*.tiff;*.yuv;*.mpeg;*.mpg;*.mpv;*.mps");

  struct Case {
    bool audio, image, video;
    unsigned long count;
    std::u16string allData;
  } cases[] = {
      {true, false, false, 8, u"*.ac3;*.aif;*.aiff;*.dts;*.mpa;*.wav;"},
      {false, false, true, 5, u"*.mpeg;*.mpg;*.mpv;*.mps"},
      {true, false, true, 11, u"*.ac3;*.aif;*.aiff;*.dts;*.mpa;*.wav;*.mpeg;*.mpg;*.mpv;*.mps"},
  };
  for (const Case& c : cases) {
    TableDialog dialog;
    dialog.AddFilters(c.audio, c.image, c.video);
    EXPECT_EQ(dialog.GetFilterCount(), c.count);
    EXPECT_EQ(dialog.Patterns(2), c.allData);
  }
}

TEST_F(FileDialogs, TheTableHoldsThirtyTwoFiltersCutsLongTextsAndFindsTheLastOfADescription) {
  TableDialog dialog;
  EXPECT_EQ(dialog.FindFileFilterByDescription(u"All Data Files"_u16), nullptr);
  dialog.AddFilters(true, true, true);
  for (int i = 23; i <= 32; ++i) EXPECT_TRUE(dialog.AddFilter(u"All Data Files"_u16, u"*.x"_u16, nullptr)) << i;
  EXPECT_FALSE(dialog.AddFilter(u"33rd"_u16, u"*.y"_u16, nullptr));
  EXPECT_TRUE(dialog.AddFilters(false, false, false)) << "a full table is no failure of AddFilters";
  EXPECT_EQ(dialog.GetFilterCount(), 32u);
  EXPECT_EQ(dialog.FindFileFilterByDescription(u"All Data Files"_u16),
            dialog.GetFileFilter(32)) << "of equal descriptions the last one";
  EXPECT_EQ(dialog.FindFileFilterByDescription(u"Nothing"_u16), nullptr);

  TableDialog longText;
  std::u16string big(300, u'd');
  longText.AddFilter(U(big), nullptr, u"/start/"_u16);
  EXPECT_EQ(longText.Description(1), big.substr(0, 255));
  EXPECT_EQ(longText.Patterns(1), u"");
  EXPECT_EQ(S(longText.GetFileFilter(1)->mInitialPath), u"/start/");
}

TEST_F(FileDialogs, WithoutAChooserEveryDialogIsCancelled) {
  MFileDialogWin dialog;
  dialog.AddFilters(false, false, true);
  MFileSpecWin start(u"/media/clip.vob"_u16);
  dialog.SetFileSpec(start);
  EXPECT_FALSE(dialog.Execute());
  EXPECT_EQ(S(dialog.GetFileSpec().GetFilePath()), u"/media/clip.vob");
  EXPECT_TRUE(MFileDialog::sLastFile.IsNull());
}

TEST_F(FileDialogs, StartNamesAndTheRequest) {
  struct Case {
    std::u16string path;
    bool filters;
    std::u16string start;
  } cases[] = {
      {u"", true, u"*.mpeg;*.mpg;*.mpv;*.mps"},
      {u"", false, u"*.*"},
      {u"/media/", true, u"/media/*.mpeg;*.mpg;*.mpv;*.mps"},
      {u"/media/clip.vob", true, u"/media/clip.vob"},
      {u"C:", true, u"C:"},  // no drives here: a name like any other
  };
  for (const Case& c : cases) {
    Chooser chooser;
    chooser.answerOk = false;
    MFileDialogWin dialog;
    if (c.filters) dialog.AddFilter(u"All Video Files"_u16, u"*.mpeg;*.mpg;*.mpv;*.mps"_u16, nullptr);
    MFileSpecWin start(U(c.path));
    dialog.SetFileSpec(start);
    EXPECT_FALSE(dialog.Execute());
    ASSERT_EQ(chooser.requests.size(), 1u);
    EXPECT_EQ(chooser.requests[0].fileName, c.start) << std::string(c.path.begin(), c.path.end());
  }

  Chooser chooser;
  chooser.answerOk = false;
  MFileDialogWin open;
  open.AddFilters(false, false, false);
  open.Execute();
  MFileSaveDialogWin save;
  save.Execute();
  ASSERT_EQ(chooser.requests.size(), 2u);
  EXPECT_TRUE(chooser.requests[0].open);
  EXPECT_EQ(chooser.requests[0].flags, 0x81804u);
  EXPECT_EQ(chooser.requests[0].filter, u"All files (*.*)|*.*|All Data Files|||");
  EXPECT_EQ(chooser.requests[0].filterIndex, 1u);
  EXPECT_FALSE(chooser.requests[1].open);
  EXPECT_EQ(chooser.requests[1].flags, 6u);
  EXPECT_EQ(chooser.requests[1].filter, u"|");
}

TEST_F(FileDialogs, ADialogWithoutAStartPathOpensWhereTheLastOneEnded) {
  Chooser chooser;
  std::u16string deep = u"/";  // a chosen path of any length comes back whole
  for (int i = 0; i < 600; ++i) deep += u"folder-" + std::u16string(1, u'a' + i % 26) + u"/";
  chooser.steps = {Chooser::Browse(deep), Chooser::Type(u"take.vob"), Chooser::PickFilter(2)};
  MFileDialogWin first;
  first.AddFilters(false, false, true);
  ASSERT_TRUE(first.Execute());
  EXPECT_EQ(S(first.GetFileSpec().GetFilePath()), deep + u"take.vob");
  EXPECT_EQ(first.GetSelectedFilter(), 2);
  EXPECT_EQ(S(MFileDialog::sLastFile.GetFilePath()), deep + u"take.vob");

  chooser.steps.clear();
  chooser.answerOk = false;
  MFileDialogWin second;
  second.AddFilters(false, false, true);
  EXPECT_FALSE(second.Execute());
  EXPECT_EQ(chooser.requests.back().fileName, deep + u"*.*");
  EXPECT_EQ(S(MFileDialog::sLastFile.GetFilePath()), deep + u"take.vob") << "a cancel keeps the last file";

  MFileDialogWin third;  // a start path of its own wins
  MFileSpecWin own(u"/elsewhere/x.vob"_u16);
  third.SetFileSpec(own);
  third.Execute();
  EXPECT_EQ(chooser.requests.back().fileName, u"/elsewhere/x.vob");
}

TEST_F(FileDialogs, SavingANameWithoutExtensionTakesTheFilters) {
  struct Case {
    std::u16string typed;
    unsigned long filter;
    std::u16string saved;
  } cases[] = {
      {u"clip.x", 5, u"/out/clip.x"},        // has one already ("  Mpeg1, Mpeg2 Still (mps)")
      {u"clip", 8, u"/out/clip.aif"},        // the first of "*.aif;*.aiff"
      {u"clip", 1, u"/out/clip"},            // "*.*" makes no name
      {u"clip", 2, u"/out/clip.ac3"},        // the first pattern of "All Data Files"
  };
  for (const Case& c : cases) {
    Chooser chooser;
    chooser.steps = {Chooser::Browse(u"/out/"), Chooser::Type(c.typed), Chooser::PickFilter(c.filter)};
    MFileSaveDialogWin save;
    save.AddFilters(true, false, true);
    EXPECT_TRUE(save.Execute());
    EXPECT_EQ(S(save.GetFileSpec().GetFilePath()), c.saved);
    EXPECT_EQ(S(MFileDialog::sLastFile.GetFilePath()), c.saved);
  }

  // A cancelled save still completes the caller's name, and returns false.
  MFileDialog::sLastFile = MFileSpecWin();
  Chooser chooser;
  chooser.answerOk = false;
  MFileSaveDialogWin save;
  save.AddFilter(u"Still"_u16, u"*.mps"_u16, nullptr);
  MFileSpecWin start(u"/out/still"_u16);
  save.SetFileSpec(start);
  EXPECT_FALSE(save.Execute());
  EXPECT_EQ(S(save.GetFileSpec().GetFilePath()), u"/out/still.mps");
  EXPECT_TRUE(MFileDialog::sLastFile.IsNull());

  save.AppendFilterExtension(nullptr, save.GetFileFilter(1));
  save.AppendFilterExtension(u"x"_u16, nullptr);
  EXPECT_EQ(S(save.GetFileSpec().GetFilePath()), u"/out/still.mps") << "null arguments change nothing";
  SFileFilter bare{};
  bare.mExtension[0] = 'm';
  bare.mExtension[1] = 'p';
  save.AppendFilterExtension(u"y"_u16, &bare);
  EXPECT_EQ(S(save.GetFileSpec().GetFilePath()), u"ymp") << "patterns without a dot are added as they stand";
}

TEST_F(FileDialogs, EachFilterMovesTheChooserToItsOwnFolder) {
  Chooser chooser;
  chooser.steps = {Chooser::Browse(u"/v/deeper/"),      // the user moves on in the video folder
                   Chooser::Type(u"sub/take1"),         // and types a name
                   Chooser::PickFilter(2),              // audio: to its folder, the name comes back
                   Chooser::PickFilter(3),              // no folder of its own: stays
                   Chooser::PickFilter(1)};             // video again: where the user left it
  MFileDialogWin dialog;
  dialog.AddFilter(u"Video"_u16, u"*.vob"_u16, u"/v/"_u16);
  dialog.AddFilter(u"Audio"_u16, u"*.ac3"_u16, u"/a"_u16);
  dialog.AddFilter(u"Other"_u16, u"*.*"_u16, nullptr);
  ASSERT_TRUE(dialog.Execute());
  EXPECT_EQ(chooser.foldersShown, (std::vector<std::u16string>{u"/v/", u"/a", u"/v/deeper/"}));
  EXPECT_EQ(S(dialog.GetFileSpec().GetFilePath()), u"/v/deeper/take1") << "the name typed survives each move";
  EXPECT_EQ(dialog.GetSelectedFilter(), 1);

  // Folders last for one run: the next starts from the table again.
  chooser.steps.clear();
  chooser.foldersShown.clear();
  MFileSpecWin none;
  dialog.SetFileSpec(none);
  ASSERT_TRUE(dialog.Execute());
  EXPECT_EQ(chooser.foldersShown, (std::vector<std::u16string>{u"/v/"}));
}

TEST_F(FileDialogs, PathDialogEntriesAndFilterTexts) {
  gMessages.clear();
  vbu::SetMessageBoxHook([](const unsigned short* text, void*) { gMessages.push_back(Text(text)); }, nullptr);
  CPathFileDialog dialog(true, nullptr, nullptr, 0, u"All files (*.*)|*.*|Video (vob)|*.vob;*.mpg||"_u16, nullptr);
  dialog.SetInitialPath(64, u"/last/"_u16);
  dialog.SetInitialPath(1, u"/first/"_u16);
  dialog.SetInitialPath(65, u"/no/"_u16);
  dialog.SetInitialPath(0, u"/no/"_u16);
  vbu::SetMessageBoxHook(nullptr, nullptr);
  EXPECT_EQ(gMessages, (std::vector<std::u16string>(2, u"CPathFileDialog::SetInitialPath out of range")));
  ASSERT_NE(dialog.GetInitialPath(64), nullptr);
  EXPECT_EQ(S(*dialog.GetInitialPath(64)), u"/last/");
  EXPECT_EQ(S(*dialog.GetInitialPath(1)), u"/first/");
  EXPECT_EQ(dialog.GetInitialPath(2), nullptr);
  EXPECT_EQ(dialog.GetInitialPath(65), nullptr);

  struct Case {
    unsigned int position;
    std::u16string text, filter;
  } cases[] = {
      {0, u"All files (*.*)", u"*.*"}, {1, u"All files (*.*)", u"*.*"}, {2, u"*.*", u"*.*"},
      {3, u"Video (vob)", u"vob"},     {4, u"*.vob;*.mpg", u"*.vob;*.mpg"}, {9, u"", u""},
  };
  for (const Case& c : cases) {
    MString text = dialog.FindFilterText(c.position);
    EXPECT_EQ(S(text), c.text) << c.position;
    EXPECT_EQ(S(dialog.GetFilter(text)), c.filter) << c.position;
  }
  MString nested(u"Audio (ac3) (dts)"_u16);
  EXPECT_EQ(S(dialog.GetFilter(nested)), u"dts") << "the last parenthesis";
  MString unopened(u"a)b"_u16);
  EXPECT_EQ(S(dialog.GetFilter(unopened)), u"a");
}
