// The folder functions on random trees against a walk of their own: odd
// names (bytes that are not UTF-8, '#', blanks, line ends), links to files,
// to folders inside and outside the tree, back up to an ancestor and to
// nowhere, and locked folders (which the system refuses to open). A query
// lists what the walk finds; the deletes remove what lies in the tree and
// nothing outside it, and fail exactly when a locked folder keeps files.
// A short run here; VBU_LONG_TESTS=1 makes it long.
#include <VantoroBasicUtils/files/CFileQuery.h>
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/UFileUtils.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <set>

#include "platform/FaultInjection.h"
#include "support/TempFolder.h"

namespace fs = std::filesystem;
namespace vp = vbu::platform;

namespace {

const char* const kNames[] = {"a", "bad\xFF\xFE.txt", "#hash", "sp ace", "new\nline", "\xC3\xA9t\xC3\xA9", ".hidden",
                              "-dash", "b\\c", "locked"};

bool Locked(const char* path) { return std::strstr(path, "locked") != nullptr; }

// Folders whose name holds "locked" cannot be opened.
class StLockedFolders : public StSysCallTable {
 public:
  StLockedFolders() {
    vp::Sys().opendir = [](const char* path) -> void* {
      return Locked(path) ? (errno = EACCES, nullptr) : vp::DefaultSysCalls().opendir(path);
    };
    vp::Sys().openat = [](int folder, const char* path, int flags, unsigned mode) {
      if (Locked(path) && (flags & O_DIRECTORY)) return errno = EACCES, -1;
      return vp::DefaultSysCalls().openat(folder, path, flags, mode);
    };
  }
};

// A random tree under `root`: files hold their own path, so a listed path
// is known by what it reads; a locked folder always holds a file.
void Grow(std::mt19937& random, const fs::path& root, const fs::path& folder, const fs::path& outside, int depth) {
  int entries = static_cast<int>(random() % 5) + (depth == 0 ? 2 : 0);
  for (int i = 0; i < entries; ++i) {
    fs::path entry = folder / (std::string(kNames[random() % std::size(kNames)]) + std::to_string(i));
    int kind = static_cast<int>(random() % 10);
    bool locked = entry.filename().string().find("locked") != std::string::npos;
    if (locked || (kind < 3 && depth < 3)) {
      fs::create_directory(entry);
      if (locked) WriteAll((entry / "kept").string(), (entry / "kept").string());
      Grow(random, root, entry, outside, depth + 1);
    } else if (kind < 6) {
      WriteAll(entry.string(), entry.string());
    } else if (kind == 6) {
      fs::create_directory_symlink(outside, entry);
    } else if (kind == 7) {
      fs::create_directory_symlink(random() % 2 ? root : folder, entry);  // a cycle
    } else if (kind == 8) {
      fs::create_symlink(outside / "keep", entry);
    } else {
      fs::create_symlink(root / "nowhere", entry);
    }
  }
}

// What a query on `folder` must read: each file's content, a link followed
// into folders that are not on the walk already, nothing from a locked folder.
void Walk(const fs::path& folder, std::vector<fs::path>& walking, std::multiset<std::string>& found) {
  if (folder.filename().string().find("locked") != std::string::npos) return;
  for (const auto& entry : fs::directory_iterator(folder)) {
    std::error_code error;
    if (fs::is_directory(entry.path(), error)) {
      bool cycle = std::any_of(walking.begin(), walking.end(),
                               [&](const fs::path& p) { return fs::equivalent(p, entry.path()); });
      if (cycle) continue;
      walking.push_back(entry.path());
      Walk(entry.path(), walking, found);
      walking.pop_back();
    } else {
      found.insert(fs::exists(entry.path()) ? ReadAll(entry.path().string()) : "<nowhere>");
    }
  }
}

std::multiset<std::string> Read(CFileQuery& query) {
  std::multiset<std::string> contents;
  for (unsigned long i = 1; i <= query.GetCount(); ++i) {
    MString* path = nullptr;
    query.FetchItemAt(static_cast<long>(i), &path);
    MFileUniv file;
    if (file.FOpen(*path, MFile::file_read_binary) != 0) {
      contents.insert("<nowhere>");
      continue;
    }
    std::string bytes(8192, '\0');
    bytes.resize(static_cast<std::size_t>(std::max(0, file.FRead(bytes.data(), 8192))));
    contents.insert(bytes);
  }
  return contents;
}

std::map<std::string, std::string> Snapshot(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    files[entry.path().string()] = entry.is_regular_file() ? ReadAll(entry.path().string()) : "";
  }
  return files;
}

// True when a locked folder that holds something lies in the tree (links not followed).
bool HoldsLocked(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_directory() || entry.is_symlink()) continue;
    if (entry.path().filename().string().find("locked") != std::string::npos) return true;
    if (HoldsLocked(entry.path())) return true;
  }
  return false;
}

MString PathOf(const fs::path& path) {
  MString text;
  text.ImportASCII(path.string().c_str(), -1);  // the tree's root has plain names
  return text;
}

}  // namespace

TEST(FolderModel, RandomTreesWithLinksOddNamesAndLockedFolders) {
  const char* longRun = std::getenv("VBU_LONG_TESTS");
  const int rounds = longRun && std::string(longRun) == "1" ? 1500 : 60;
  std::mt19937 random(424242);
  int failedDeletes = 0, listed = 0;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    TempFolder dir;
    fs::path root = dir.Bytes("tree"), outside = dir.Bytes("outside");
    fs::create_directories(root);
    fs::create_directories(outside / "in");
    WriteAll((outside / "keep").string(), "outside keep");
    WriteAll((outside / "in" / "deep").string(), "outside deep");
    Grow(random, root, root, outside, 0);
    const auto outsideBefore = Snapshot(outside);
    Hearing hearing;
    StLockedFolders locked;
    MString tree = PathOf(root);
    switch (round % 3) {
      case 0: {
        std::vector<fs::path> walking{root};
        std::multiset<std::string> expected;
        Walk(root, walking, expected);
        CFileQuery query(tree);
        EXPECT_EQ(Read(query), expected);
        listed += static_cast<int>(expected.size());
        break;
      }
      case 1: {
        bool kept = HoldsLocked(root);
        EXPECT_EQ(UFileUtils::DeleteAllFilesUnderDir(tree), !kept);
        failedDeletes += kept;
        // Only folders stay, and the files in locked ones.
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
          bool inLocked = entry.path().string().find("locked") != std::string::npos;
          EXPECT_TRUE((entry.is_directory() && !entry.is_symlink()) || inLocked) << entry.path();
        }
        break;
      }
      default: {
        bool kept = HoldsLocked(root);
        EXPECT_EQ(DeleteDirectory(tree), kept ? -1 : 0);
        EXPECT_EQ(fs::exists(root), kept);
        failedDeletes += kept;
        break;
      }
    }
    EXPECT_EQ(Snapshot(outside), outsideBefore) << "nothing outside the tree is touched";
  }
  EXPECT_GT(failedDeletes, 0);
  EXPECT_GT(listed, rounds);
  RecordProperty("rounds", rounds);
  RecordProperty("files_listed", listed);
  RecordProperty("failed_deletes", failedDeletes);
}
