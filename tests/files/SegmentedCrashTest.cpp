// Crash safety of the segmented file: a child process writes a segmented
// file with a small limit and is killed (SIGKILL) at a random moment. Each
// time, the info file on disk opens, every segment it lists exists, and the
// logical content is a prefix of what the child wrote.
#include <VantoroBasicUtils/files/MFiles.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "support/LogicalFile.h"
#include "support/TempFolder.h"

namespace {

// The child: writes `data` in pieces of 1 to 4096 bytes with a limit of 4096, then exits.
[[noreturn]] void WriteAndExit(const MString& path, const std::string& data, unsigned seed) {
  MFiles file;
  if (file.FOpen(path, MFile::file_create_binary) != 0) _exit(2);
  file.SetMaxFileSize(4096);
  std::mt19937 random(seed);
  for (std::size_t at = 0; at < data.size();) {
    int piece = static_cast<int>(std::min<std::size_t>(random() % 4096 + 1, data.size() - at));
    if (file.FWrite(data.data() + at, piece) != piece) _exit(3);
    at += static_cast<std::size_t>(piece);
  }
  _exit(file.FClose() == 0 ? 0 : 4);
}

}  // namespace

TEST(SegmentedCrash, AKilledWriterLeavesAPrefixAndEveryListedSegment) {
  const std::string data = Pattern(3u << 20, 7);
  std::mt19937 random(std::random_device{}());
  std::vector<std::size_t> reached;  // how far each child got, as a reader sees it
  int finished = 0;
  for (int round = 0; round < 25; ++round) {
    SCOPED_TRACE(round);
    TempFolder dir;
    MString name = dir.Path("title.vob");
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) WriteAndExit(name, data, static_cast<unsigned>(round));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 80000));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status)) {
      ASSERT_EQ(WEXITSTATUS(status), 0) << "the child failed on its own";
      ++finished;
    }
    if (!std::filesystem::exists(dir.Bytes("title.vob"))) {
      reached.push_back(0);
      continue;
    }
    std::vector<MString> listed = ListedSegments(name);
    for (MString& segment : listed) EXPECT_TRUE(MFile::FileExist(segment));
    // A segment that holds data is listed: one made but not yet listed is empty.
    for (const auto& entry : std::filesystem::directory_iterator(dir.Bytes(""))) {
      const std::string file = entry.path().filename().string();
      if (file.rfind("title.vob.cfx.", 0) != 0 || file == "title.vob.cfx.new") continue;
      bool isListed = false;
      for (MString& segment : listed) isListed = isListed || Text(segment) == Text(dir.Path(file));
      // (The first segment is a second name of the plain file for a moment.)
      if (!isListed && !std::filesystem::equivalent(entry.path(), dir.Bytes("title.vob"))) {
        EXPECT_EQ(entry.file_size(), 0u) << file << " holds data but is not listed";
      }
    }
    std::string content = ReadLogical(name);
    ASSERT_NE(content, "<unreadable>");
    ASSERT_LE(content.size(), data.size());
    EXPECT_TRUE(content == data.substr(0, content.size())) << "not a prefix, " << content.size() << " bytes";
    if (WIFEXITED(status)) {
      EXPECT_EQ(content.size(), data.size());
    }
    reached.push_back(content.size());
  }
  std::string progress;
  for (std::size_t bytes : reached) progress += std::to_string(bytes) + " ";
  RecordProperty("bytes_reached", progress);
  std::printf("bytes reached by killed writers: %s(%d finished)\n", progress.c_str(), finished);
}
