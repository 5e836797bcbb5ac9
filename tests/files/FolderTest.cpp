// Folders and file queries: path elements, the current-folder test, free
// space, removal of whole folders, and the order and cycle guard of queries.
#include <VantoroBasicUtils/files/CFileQuery.h>
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/UFileUtils.h>
#include <VantoroBasicUtils/text/MStringList.h>

#include <sys/resource.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/TempFolder.h"

using namespace vbu::literals;

namespace {

std::vector<std::string> Listed(CFileQuery& query) {
  std::vector<std::string> paths;
  for (unsigned long i = 1; i <= query.GetCount(); ++i) {
    MString* path = nullptr;
    query.FetchItemAt(static_cast<long>(i), &path);
    std::string bytes;
    for (int k = 0; k < path->GetLength(); ++k) bytes += static_cast<char>((*path)[k]);
    paths.push_back(bytes);
  }
  return paths;
}

// a, b, s/c and s/t/.hidden under `dir`; with `linkOut`, also s/link, a
// link to the folder "outside", which holds keep.
void MakeTree(const TempFolder& dir, bool linkOut = false) {
  std::filesystem::create_directories(dir.Bytes("s/t"));
  WriteAll(dir.Bytes("b"), "b");
  WriteAll(dir.Bytes("a"), "a");
  WriteAll(dir.Bytes("s/c"), "c");
  WriteAll(dir.Bytes("s/t/.hidden"), "h");
  if (linkOut) {
    std::filesystem::create_directories(dir.Bytes("outside"));
    WriteAll(dir.Bytes("outside/keep"), "keep");
    std::filesystem::create_directory_symlink(dir.Bytes("outside"), dir.Bytes("s/link"));
  }
}

// A chain of `depth` folders of 200-byte names under `root`, with a file in
// the deepest: its path is longer than the system takes. Made step by step
// from the current folder, which is put back.
void MakeDeepTree(const std::string& root, int depth) {
  std::string back = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(root.c_str()), 0);
  std::string name(200, 'd');
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(chdir(name.c_str()), 0);
  }
  WriteAll("deep", "x");
  ASSERT_EQ(chdir(back.c_str()), 0);
}

}  // namespace

TEST(Folders, PathElements) {
  struct Row {
    const char16_t* path;
    const char16_t* withoutLast;
    const char16_t* last;
  };
  const Row rows[] = {
      {u"/a/b", u"/a", u"b"}, {u"/a/", u"/a", u""}, {u"/a/b.txt", u"/a", u"b.txt"}, {u"name", u"name", u"name"},
      {u"", u"", u""},
  };
  for (const Row& row : rows) {
    MString path(reinterpret_cast<const unsigned short*>(row.path));
    MString other = path;
    MDirectory::DeleteOneFolder(path);
    MDirectory::GetFileName(other);
    EXPECT_EQ(Text(path), row.withoutLast);
    EXPECT_EQ(Text(other), row.last);
  }
}

TEST(Folders, ExistsOnDiskLeavesTheProcessInTheFolder) {
  TempFolder dir;
  std::filesystem::path before = std::filesystem::current_path();
  MDirectory folder(dir.Path("sub"));
  EXPECT_FALSE(folder.ExistsOnDisk());
  EXPECT_EQ(std::filesystem::current_path(), before);
  std::filesystem::create_directories(dir.Bytes("sub"));
  EXPECT_TRUE(folder.ExistsOnDisk());
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::path(dir.Bytes("sub")));
  std::filesystem::current_path(before);
  EXPECT_FALSE(MDirectory::ExistsOnDisk(nullptr));
  EXPECT_FALSE(folder.CreateNew());
}

TEST(Folders, FreeSpaceIsTheVolumesInKiB) {
  TempFolder dir;
  struct statvfs volume;
  ASSERT_EQ(statvfs(dir.Bytes("").c_str(), &volume), 0);
  long expected = static_cast<long>(static_cast<uint64_t>(volume.f_bavail) * volume.f_frsize / 1024);
  MDirectory folder(dir.Path(""));
  EXPECT_NEAR(folder.GetDiskFreeSpaceW(), expected, 64 * 1024) << "other engineers write to this disk too";
  MDirectory missing(dir.Path("not/yet/made"));
  EXPECT_NEAR(missing.GetDiskFreeSpaceW(), expected, 64 * 1024) << "the volume it would be on";
  MDirectory relative(u"no-such-folder/below"_u16);
  EXPECT_GE(relative.GetDiskFreeSpaceW(), 0) << "the current folder's volume";
  EXPECT_TRUE(MDirectory::CheckDirectory(dir.Path("")));
}

// Nothing outside the named tree is touched: a link given as the tree goes
// as a link; depth is no limit. (Odd names, links inside and locked folders
// are the random trees' of FolderModelTest.cpp.)
TEST(Folders, DeletesStayInsideTheTreeAndReachAllOfIt) {
  TempFolder dir;
  MakeTree(dir, true);
  std::filesystem::create_directory_symlink(dir.Bytes("outside"), dir.Bytes("tolink"));
  Hearing hearing;
  EXPECT_EQ(DeleteDirectory(dir.Path("tolink/")), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(dir.Bytes("tolink")));
  EXPECT_EQ(ReadAll(dir.Bytes("outside/keep")), "keep");
  // Through a link, the folder it names is emptied; the link stays.
  std::filesystem::create_directory_symlink(dir.Bytes("s"), dir.Bytes("tos"));
  EXPECT_TRUE(UFileUtils::DeleteAllFilesUnderDir(dir.Path("tos")));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.Bytes("tos")));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s/c")));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s/link"))) << "a link inside goes as a link";
  EXPECT_EQ(ReadAll(dir.Bytes("outside/keep")), "keep");
  // Deeper than the system's path limit, with fewer descriptors to spare than levels.
  std::filesystem::create_directories(dir.Bytes("odd"));
  MakeDeepTree(dir.Bytes("odd"), 25);
  auto open = std::filesystem::directory_iterator("/proc/self/fd");
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  rlimit few = limit;
  few.rlim_cur = static_cast<rlim_t>(std::distance(begin(open), end(open)) + 8);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  bool filesGone = UFileUtils::DeleteAllFilesUnderDir(dir.Path("odd"));
  int treeGone = DeleteDirectory(dir.Path("odd"));
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_TRUE(filesGone);
  EXPECT_EQ(treeGone, 0);
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("odd")));
  EXPECT_EQ(DeleteDirectory(dir.Path("odd")), 0) << "not there: nothing to do";
  EXPECT_EQ(DeleteDirectory(nullptr), -1);
  EXPECT_TRUE(hearing.messages.empty());
}

TEST(Folders, DeleteDirKeepsSubfolders) {
  TempFolder dir;
  MakeTree(dir, true);
  std::filesystem::create_directories(dir.Bytes("s/empty"));
  Hearing hearing;
  EXPECT_FALSE(UFileUtils::DeleteDir(dir.Path("s")));
  EXPECT_TRUE(hearing.messages.empty());
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s/c")));
  EXPECT_TRUE(std::filesystem::exists(dir.Bytes("s/empty")));
  std::filesystem::remove_all(dir.Bytes("s/t"));
  std::filesystem::remove_all(dir.Bytes("s/empty"));
  EXPECT_TRUE(UFileUtils::DeleteDir(dir.Path("s")));
  EXPECT_FALSE(std::filesystem::exists(dir.Bytes("s")));
  EXPECT_EQ(ReadAll(dir.Bytes("outside/keep")), "keep") << "the link went, not what it led to";
}

TEST(FileQuery, OnePathAFolderOrNothing) {
  TempFolder dir;
  MakeTree(dir);
  std::filesystem::create_directories(dir.Bytes("empty"));
  CFileQuery file(dir.Path("a"));
  EXPECT_EQ(Listed(file), std::vector<std::string>{dir.Bytes("a")});
  CFileQuery empty(dir.Path("empty"));
  EXPECT_EQ(empty.GetCount(), 0u);
  CFileQuery missing(u"/nonexistent/vbu-query"_u16);  // a literal: the path is only read
  EXPECT_EQ(missing.GetCount(), 0u);
  // Names in order; a subfolder's files where the subfolder stands; hidden
  // files and dangling links too; a link back up is not walked again.
  std::filesystem::create_directory_symlink(dir.Bytes("s"), dir.Bytes("s/t/back"));
  std::filesystem::create_symlink(dir.Bytes("nowhere"), dir.Bytes("s/dangling"));
  CFileQuery tree(dir.Path(""));
  std::string root = dir.Bytes("");
  EXPECT_EQ(Listed(tree), (std::vector<std::string>{root + "/a", root + "/b", root + "/s/c", root + "/s/dangling",
                                                    root + "/s/t/.hidden"}));
}

TEST(FileQuery, ADropListsInTheOrderOfTheDrop) {
  TempFolder dir;
  MakeTree(dir);
  MStringList dropped;
  dropped.Add(dir.Path("b"));
  dropped.Add(u""_u16);
  dropped.Add(dir.Path("s"));
  dropped.Add(dir.Path("a"));
  CFileQuery query(&dropped);
  EXPECT_EQ(Listed(query), (std::vector<std::string>{dir.Bytes("b"), dir.Bytes("s/c"), dir.Bytes("s/t/.hidden"),
                                                     dir.Bytes("a")}));
  CFileQuery none(static_cast<MStringList*>(nullptr));
  EXPECT_EQ(none.GetCount(), 0u);
  // A folder given again, or its subfolder, is listed again, as a file is.
  MStringList twice;
  twice.Add(dir.Path("s"));
  twice.Add(dir.Path("s/t"));
  twice.Add(dir.Path("s/c"));
  CFileQuery again(&twice);
  EXPECT_EQ(Listed(again), (std::vector<std::string>{dir.Bytes("s/c"), dir.Bytes("s/t/.hidden"),
                                                     dir.Bytes("s/t/.hidden"), dir.Bytes("s/c")}));
}
