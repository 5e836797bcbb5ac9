// A random run of MFiles against a model: the logical file as one string,
// the segment sizes as a list. Opens in every mode, limits set, raised,
// lowered and dropped, seeks inside, to the end and past it, reads, writes
// inside, over segment ends and at the end, FGets over segment ends, closes
// and reopens, overlapped reads, and a segment or the info file moved away
// behind the object's back. Every result and every byte is compared; where
// the model says a call fails, it fails and nothing on disk changes.
// A short run here; VBU_LONG_TESTS=1 makes it long.
#include <VantoroBasicUtils/files/MFiles.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>

#include "support/AlignedBlock.h"
#include "support/LogicalFile.h"
#include "support/TempFolder.h"

namespace {

constexpr long long kNoLimit = 0x3FFFFFFFFFFFFFFFLL;
constexpr long long kLimits[] = {100, 333, 1000, 2048, 4096, kNoLimit};

// What the model expects of a mode.
struct ModeRow {
  MFile::file_open_t mode;
  bool writes, makes, empties, atEnd, text, overlapped;
};
constexpr ModeRow kModes[] = {
    {MFile::file_read_text, false, false, false, false, true, false},
    {MFile::file_read_binary, false, false, false, false, false, false},
    {MFile::file_create_binary, true, true, true, false, false, false},
    {MFile::file_create_update_binary, true, true, true, false, false, false},
    {MFile::file_create_text, true, true, true, false, true, false},
    {MFile::file_append_binary, true, true, false, true, false, false},
    {MFile::file_append_update_binary, true, true, false, true, false, false},
    {MFile::file_update_text, true, true, false, false, true, false},
    {MFile::file_append_text, true, true, false, true, true, false},
    {MFile::file_update_binary, true, true, false, false, false, false},
    {MFile::file_overlapped_create, true, true, true, false, false, true},
    {MFile::file_overlapped_write, true, true, false, false, false, true},
    {MFile::file_overlapped_read, false, false, false, false, false, true},
    {MFile::file_overlapped_update, true, false, false, false, false, true},
};

struct Model {
  std::string data;
  std::vector<long long> segments;  // empty: no file yet
  long long limit = kNoLimit;
  const ModeRow* open = nullptr;
  long long position = 0;

  long long Size() const { return static_cast<long long>(data.size()); }
  // The file grows to `end` bytes from its logical end: the last segment up
  // to the limit (or as it is, if above it), then new segments of the limit.
  void Grow(long long end) {
    long long last = segments.back();
    long long cap = std::max(last, limit);
    long long room = cap - last;
    long long more = end - Size();
    segments.back() += std::min(more, room);
    for (more -= std::min(more, room); more > 0; more -= std::min(more, limit)) segments.push_back(std::min(more, limit));
    data.resize(static_cast<std::size_t>(end), '\0');
  }
};

std::string Bytes(std::mt19937& random, std::size_t count, bool lines) {
  std::string bytes(count, 'a');
  for (char& b : bytes) b = lines && random() % 9 == 0 ? '\n' : static_cast<char>('a' + random() % 26);
  return bytes;
}

std::map<std::string, std::string> Snapshot(const TempFolder& dir) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Bytes(""))) {
    files[entry.path().filename().string()] = ReadAll(entry.path().string());
  }
  return files;
}

// The disk against the model: the logical bytes, and each listed segment's size.
void CheckDisk(const MString& name, const Model& model) {
  ASSERT_EQ(ReadLogical(name), model.data);
  std::vector<MString> listed = ListedSegments(name);
  ASSERT_EQ(listed.size(), model.segments.size());
  for (std::size_t i = 0; i < listed.size(); ++i) {
    struct _stati64 info;
    ASSERT_EQ(MFileUniv().FStat(listed[i], &info), 0);
    EXPECT_EQ(info.st_size, model.segments[i]) << "segment " << i;
  }
}

// FGets over the whole file with a small count gives back every byte up to
// the first zero byte (a line's text ends there).
void CheckLines(const MString& name, const Model& model, int count) {
  MFiles reader;
  ASSERT_EQ(reader.FOpen(name, MFile::file_read_binary), 0);
  std::string all;
  std::vector<char> line(static_cast<std::size_t>(count));
  while (reader.FGets(line.data(), count) == 0) all += line.data();
  std::string text = model.data.substr(0, model.data.find('\0'));
  EXPECT_EQ(all.substr(0, text.size()), text);
}

int Steps() {
  const char* longRun = std::getenv("VBU_LONG_TESTS");
  return longRun && std::string(longRun) == "1" ? 60000 : 3000;
}

}  // namespace

TEST(SegmentedModel, RandomRunsMatchAPlainFile) {
  TempFolder dir;
  MString name = dir.Path("title.vob");
  const std::string base = dir.Bytes("title.vob");
  std::mt19937 random(20261125);
  Model model;
  MFiles file;
  char* block = static_cast<char*>(vbu_test::AlignedAlloc(4096, 64 * 1024));
  MEvent done;
  OVERLAPPED record;
  int crossingReads = 0, overlappedReads = 0, refusals = 0, segmentsMost = 0;
  const int steps = Steps();
  for (int step = 0; step < steps; ++step) {
    SCOPED_TRACE("step " + std::to_string(step));
    if (!model.open) {
      // A file grown large is made anew, so the segments stay few.
      const ModeRow& row = model.Size() > 60000 ? kModes[2] : kModes[random() % std::size(kModes)];
      if (random() % 2) {
        model.limit = kLimits[random() % std::size(kLimits)];
        file.SetMaxFileSize(model.limit);
      }
      SCOPED_TRACE("open " + std::to_string(row.mode));
      bool there = !model.segments.empty();
      int expected = there || row.makes ? 0 : -1;
      ASSERT_EQ(file.FOpen(name, row.mode), expected);
      if (expected != 0) continue;
      if (!there || row.empties) {
        model.data.clear();
        model.segments.assign(1, 0);
      }
      model.open = &row;
      model.position = row.atEnd ? model.Size() : 0;
      ASSERT_EQ(file.GetCount(), static_cast<int>(model.segments.size()));
      continue;
    }
    const ModeRow& row = *model.open;
    const long long size = model.Size();
    const long long limitSpan = model.limit == kNoLimit ? 3000 : model.limit;
    int action = static_cast<int>(random() % 100);
    // An overlapped read open only reads: its segment cache is not kept up by seeks.
    if (row.overlapped && !row.writes) action = action < 80 ? 90 : 99;
    if (row.mode == MFile::file_overlapped_update) action = action < 80 ? 90 : 99;
    if (action < 8) {
      model.limit = kLimits[random() % std::size(kLimits)];
      file.SetMaxFileSize(model.limit);
    } else if (action < 28) {  // seek from the start: inside, at the end, past it
      long long target = static_cast<long long>(random() % static_cast<unsigned>(size + 2 * limitSpan + 1));
      if (random() % 4 == 0) target = size;
      bool grows = target > size;
      long long expected = grows && !row.writes ? -1 : target;
      ASSERT_EQ(file.FSeek64(target, MFile::file_seek_begin), expected) << "size " << size;
      if (expected < 0) continue;
      if (grows) model.Grow(target);
      model.position = target;
    } else if (action < 34) {  // seek back from the end, inside the last segment
      long long back = -static_cast<long long>(random() % static_cast<unsigned>(model.segments.back() + 1));
      long long expected = row.overlapped ? -1 : model.segments.back() + back;
      ASSERT_EQ(file.FSeek64(back, MFile::file_seek_end), expected);
      if (expected >= 0) model.position = size + back;
    } else if (action < 52) {
      int count = static_cast<int>(random() % static_cast<unsigned>(3 * std::min(limitSpan, 4096LL)));
      std::string got(static_cast<std::size_t>(count), '\0');
      int read = file.FRead(got.data(), count);
      if (row.overlapped) {
        EXPECT_EQ(read, count == 0 ? 0 : -1);
        continue;
      }
      long long expected = std::min<long long>(count, size - model.position);
      ASSERT_EQ(read, expected);
      EXPECT_EQ(got.substr(0, static_cast<std::size_t>(read)), model.data.substr(static_cast<std::size_t>(model.position), static_cast<std::size_t>(read)));
      model.position += read;
    } else if (action < 80) {
      int count = static_cast<int>(random() % static_cast<unsigned>(3 * std::min(limitSpan, 4096LL)));
      std::string bytes = Bytes(random, static_cast<std::size_t>(count), !row.text);
      auto before = row.writes && !row.overlapped ? std::map<std::string, std::string>() : Snapshot(dir);
      int written = file.FWrite(bytes.data(), count);
      if (!row.writes || row.overlapped) {
        ASSERT_EQ(written, -1) << "an object that cannot write refuses even nothing";
        EXPECT_EQ(Snapshot(dir), before);
        continue;
      }
      ASSERT_EQ(written, count);
      long long end = model.position + count;
      if (end > size) model.Grow(end);
      model.data.replace(static_cast<std::size_t>(model.position), bytes.size(), bytes);
      model.position = end;
    } else if (action < 84) {
      if (model.segments.size() > 1) ++crossingReads;
      CheckLines(name, model, static_cast<int>(random() % 60 + 2));
    } else if (action < 88 && model.segments.size() > 1 && !row.overlapped) {
      // Behind the object's back: a segment, or the info file, moved away and back.
      auto before = Snapshot(dir);
      std::size_t k = random() % model.segments.size();
      std::string moved = base;  // the info file
      if (random() % 2 == 0) {
        std::vector<MString> listed = ListedSegments(name);
        moved.assign(listed[k].GetLength(), ' ');
        for (int i = 0; i < listed[k].GetLength(); ++i) moved[static_cast<std::size_t>(i)] = static_cast<char>(listed[k][i]);
        std::filesystem::rename(moved, moved + ".away");
        long long at = file.FSeek64(0, MFile::file_seek_begin);
        if (k == 0) {
          EXPECT_EQ(at, -1);
        } else {
          std::string got(static_cast<std::size_t>(size), '\0');
          EXPECT_LT(file.FRead(got.data(), static_cast<int>(size)), 0) << "across the missing segment";
        }
        if (row.writes && model.limit != kNoLimit) {
          EXPECT_EQ(file.FSeek64(size + limitSpan + 1, MFile::file_seek_begin), -1);
        }
      } else if (row.writes && model.limit != kNoLimit) {
        // The info file gone: nothing can be listed, so nothing grows.
        std::filesystem::rename(moved, moved + ".away");
        std::string bytes(static_cast<std::size_t>(std::max(model.segments.back(), model.limit) + 1), 'z');
        ASSERT_EQ(file.FSeek64(size - model.segments.back(), MFile::file_seek_begin), size - model.segments.back());
        EXPECT_EQ(file.FWrite(bytes.data(), static_cast<int>(bytes.size())), -1);
        EXPECT_EQ(file.FSeek64(size + 2 * model.limit, MFile::file_seek_begin), -1);
      } else {
        continue;
      }
      ++refusals;
      std::filesystem::rename(moved + ".away", moved);
      EXPECT_EQ(Snapshot(dir), before) << "a refused call changes nothing";
      // Back in place, the object works again.
      long long target = static_cast<long long>(random() % static_cast<unsigned>(size + 1));
      ASSERT_EQ(file.FSeek64(target, MFile::file_seek_begin), target);
      model.position = target;
    } else if (action < 96 && row.overlapped && !row.writes) {
      // Overlapped reads over segment ends, where every segment but the last is whole sectors.
      bool whole = true;
      for (std::size_t i = 0; i + 1 < model.segments.size(); ++i) whole = whole && model.segments[i] % 2048 == 0;
      if (!whole) continue;
      long long offset = static_cast<long long>(random() % static_cast<unsigned>(size + 100));
      long count = static_cast<long>(random() % 12000 + 1);
      char* into = block + 4096 + offset % 2048;
      long asked = count;
      uint32_t result = file.FReadOverlapped(offset, into, count, &record, &done);
      ++overlappedReads;
      if (offset >= size) {
        EXPECT_EQ(result, kErrorHandleEof);
        EXPECT_EQ(count, 0);
        continue;
      }
      ASSERT_TRUE(result == 0 || result == kErrorHandleEof) << result;
      if (result == 0) {
        ASSERT_EQ(MFiles::FWaitOverlappedCompletion(&done, 10), 0u);
      }
      long long there = std::min<long long>(asked, size - offset);
      if (result == kErrorHandleEof) {
        EXPECT_EQ(count, there);
      }
      EXPECT_EQ(std::string(into, static_cast<std::size_t>(there)), model.data.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(there)));
    } else if (action >= 96) {
      ASSERT_EQ(file.FClose(), 0);
      model.open = nullptr;
      CheckDisk(name, model);
      continue;
    }
    segmentsMost = std::max(segmentsMost, static_cast<int>(model.segments.size()));
    ASSERT_EQ(file.GetSize(), model.Size());
    ASSERT_EQ(file.GetCount(), static_cast<int>(model.segments.size()));
    if (step % 200 == 0) CheckDisk(name, model);
  }
  if (model.open) file.FClose();
  CheckDisk(name, model);
  vbu_test::AlignedFree(block);
  EXPECT_GT(refusals, 0);
  EXPECT_GT(crossingReads, 0);
  EXPECT_GT(overlappedReads, 0);
  RecordProperty("steps", steps);
  RecordProperty("most_segments", segmentsMost);
  RecordProperty("refusals", refusals);
  RecordProperty("overlapped_reads", overlappedReads);
}
