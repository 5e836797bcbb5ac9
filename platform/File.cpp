// Files. Text mode is the layer's own: a table marks the descriptors opened
// in it, and their reads and writes translate line ends here, so that text
// files are byte for byte those of the library's Windows builds. Streams are
// C streams whose reads and writes come back to the descriptor calls below,
// so they translate alike. The system file (linux/File.inc) holds only the
// system calls, in namespace os.
#include "platform/internal/File.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/internal/AsyncIO.h"
#include "platform/internal/CodePage.h"
#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/WideText.h"

namespace vbu::platform {
namespace {

// A stream: the C stream, its descriptor, and the code of the last failed
// read or write under it (a C stream keeps only a flag).
struct Stream {
  std::FILE* file;
  int fd;
  bool text;
  uint32_t error;
};

// What the C stream calls for its reads, writes, seeks and close; the
// system file adapts them to the system's stream hooks.
long StreamHookRead(Stream* stream, char* buffer, std::size_t size);
long StreamHookWrite(Stream* stream, const char* buffer, std::size_t size);
int StreamHookSeek(Stream* stream, int64_t* offset, int origin);
int StreamHookClose(Stream* stream);

}  // namespace
}  // namespace vbu::platform

#if defined(__linux__)
#include "linux/File.inc"
#elif defined(_WIN32)
#include "windows/File.inc"
#else
#error "The platform layer has no File files for this system yet."
#endif

namespace vbu::platform {
namespace {

constexpr uint32_t kSector = 2048;
// A file read in sequence through the cache keeps this much behind the
// reads in memory: pieces still being read, and a little more for a look back.
constexpr int64_t kSequentialKeptBehind = int64_t{8} << 20;

// What the layer keeps of each open descriptor, beyond what the system
// keeps: whether it is in text mode; for handles, the direct-transfer
// alignment (memory and file offsets; 0 when transfers go through the
// cache) and whether reads fetch the next piece ahead.
struct Traits {
  bool text = false;
  uint32_t memoryAlignment = 0, offsetAlignment = 0;
  bool sequential = false;
  // Read once from start to end through the cache: its pages are fetched
  // ahead of the reads and given back behind them.
  bool ReadOnceThroughCache() const { return sequential && memoryAlignment == 0; }
};

class Descriptors {
 public:
  static Descriptors& Get() {
    static Descriptors table;
    return table;
  }
  // Records the traits of a new descriptor, or clears those of a closed one.
  void Set(int fd, Traits traits) {
    if (fd < 0) return;
    std::lock_guard<std::mutex> lock(mMutex);
    if (mTable.size() <= static_cast<std::size_t>(fd)) mTable.resize(fd + 1);
    mTable[fd] = traits;
  }
  Traits Find(int fd) {
    std::lock_guard<std::mutex> lock(mMutex);
    return fd >= 0 && static_cast<std::size_t>(fd) < mTable.size() ? mTable[fd] : Traits{};
  }
  bool IsText(int fd) { return Find(fd).text; }

 private:
  std::mutex mMutex;
  std::vector<Traits> mTable;
};

// Takes CR LF to LF in the `count` bytes at `bytes`, in place; a CR at the
// end looks at the file's next byte. Gives the bytes left.
uint32_t TextIn(int fd, char* bytes, unsigned count, unsigned* left) {
  unsigned out = 0;
  for (unsigned i = 0; i < count; ++i) {
    char c = bytes[i];
    if (c != '\r') {
      bytes[out++] = c;
    } else if (i + 1 < count) {
      if (bytes[i + 1] == '\n') ++i;
      bytes[out++] = bytes[i];
    } else {
      char next;
      std::size_t got = 0;
      if (uint32_t error = os::Read(fd, &next, 1, &got)) return error;
      if (got == 1 && next == '\n') {
        bytes[out++] = '\n';
      } else {
        bytes[out++] = '\r';
        if (got == 1) {
          if (uint32_t error = os::Seek(fd, -1, 1, nullptr)) return error;
        }
      }
    }
  }
  *left = out;
  return 0;
}

// Writes all `count` bytes, however the system splits them.
uint32_t WriteAll(int fd, const char* bytes, std::size_t count) {
  while (count > 0) {
    std::size_t written = 0;
    if (uint32_t error = os::Write(fd, bytes, count, &written)) return error;
    if (written == 0) return kErrorDiskFull;
    bytes += written;
    count -= written;
  }
  return 0;
}

[[maybe_unused]] long StreamHookRead(Stream* stream, char* buffer, std::size_t size) {
  unsigned got = 0;
  uint32_t error = ReadDescriptor(stream->fd, buffer, static_cast<unsigned>(std::min<std::size_t>(size, 0x7FFFFFFF)), &got);
  if (error != 0) {
    stream->error = error;
    return -1;
  }
  return static_cast<long>(got);
}

[[maybe_unused]] long StreamHookWrite(Stream* stream, const char* buffer, std::size_t size) {
  uint32_t error = WriteDescriptor(stream->fd, buffer, static_cast<unsigned>(std::min<std::size_t>(size, 0x7FFFFFFF)));
  if (error != 0) {
    stream->error = error;
    return -1;
  }
  return static_cast<long>(std::min<std::size_t>(size, 0x7FFFFFFF));
}

[[maybe_unused]] int StreamHookSeek(Stream* stream, int64_t* offset, int origin) {
  uint32_t error = os::Seek(stream->fd, *offset, origin, offset);
  if (error != 0) stream->error = error;
  return error == 0 ? 0 : -1;
}

[[maybe_unused]] int StreamHookClose(Stream* stream) {
  uint32_t error = CloseDescriptor(stream->fd);
  if (error != 0) stream->error = error;
  return error == 0 ? 0 : -1;
}

Stream* StreamOf(void* stream) { return static_cast<Stream*>(stream); }

// The code of a failed stream call: what its descriptor gave, else EIO.
uint32_t StreamFailure(Stream* stream) {
  uint32_t error = stream->error != 0 ? stream->error : kErrorIo;
  stream->error = 0;
  std::clearerr(stream->file);
  return error;
}

}  // namespace

// ---- descriptors

uint32_t OpenDescriptor(const unsigned short* path, unsigned flags, int* fd) {
  *fd = -1;
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  if (uint32_t error = os::Open(bytes.Get(), flags, fd)) return error;
  Descriptors::Get().Set(*fd, Traits{(flags & kDescriptorText) != 0});
  return 0;
}

uint32_t CloseDescriptor(int fd) {
  if (fd < 0) return kErrorBadDescriptor;
  Descriptors::Get().Set(fd, Traits{});
  return os::Close(fd);
}

uint32_t ReadDescriptor(int fd, void* buffer, unsigned count, unsigned* got) {
  *got = 0;
  if (count == 0) return 0;
  if (!buffer) return kErrorInvalidArgument;
  if (count > 0x7FFFFFFFu) count = 0x7FFFFFFFu;
  std::size_t read = 0;
  if (uint32_t error = os::Read(fd, buffer, count, &read)) return error;
  unsigned n = static_cast<unsigned>(read);
  if (n > 0 && Descriptors::Get().IsText(fd)) {
    if (uint32_t error = TextIn(fd, static_cast<char*>(buffer), n, &n)) return error;
  }
  *got = n;
  return 0;
}

uint32_t WriteDescriptor(int fd, const void* buffer, unsigned count) {
  if (count == 0) return 0;
  if (!buffer || count > 0x7FFFFFFFu) return kErrorInvalidArgument;
  const char* bytes = static_cast<const char*>(buffer);
  if (!Descriptors::Get().IsText(fd)) return WriteAll(fd, bytes, count);
  // Text: each LF goes out as CR LF, a piece at a time.
  char piece[4096];
  std::size_t used = 0;
  for (unsigned i = 0; i < count; ++i) {
    if (used + 2 > sizeof piece) {
      if (uint32_t error = WriteAll(fd, piece, used)) return error;
      used = 0;
    }
    if (bytes[i] == '\n') piece[used++] = '\r';
    piece[used++] = bytes[i];
  }
  return WriteAll(fd, piece, used);
}

uint32_t SeekDescriptor(int fd, int64_t offset, int origin, int64_t* position) {
  return os::Seek(fd, offset, origin, position);
}

uint32_t EndFileAtPosition(int fd) {
  int64_t position = 0;
  if (uint32_t error = os::Seek(fd, 0, 1, &position)) return error;
  return os::Truncate(fd, position);
}

uint32_t AddOwnerReadWrite(const unsigned short* path) {
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  return os::AddOwnerReadWrite(bytes.Get());
}

// ---- streams

uint32_t OpenStream(int fd, const char* mode, void** stream) {
  *stream = nullptr;
  if (fd < 0 || !mode) return kErrorBadDescriptor;
  auto* made = new Stream{nullptr, fd, Descriptors::Get().IsText(fd), 0};
  if (uint32_t error = os::OpenHookedStream(made, mode, &made->file)) {
    delete made;
    return error;
  }
  *stream = made;
  return 0;
}

uint32_t CloseStream(void* stream) {
  if (!stream) return kErrorBadDescriptor;
  Stream* s = StreamOf(stream);
  int result = std::fclose(s->file);
  uint32_t error = result == 0 ? 0 : s->error != 0 ? s->error : kErrorIo;
  delete s;
  return error;
}

uint32_t StreamGets(void* stream, char* buffer, int count) {
  if (!stream) return kErrorBadDescriptor;
  if (!buffer || count <= 0) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  if (std::fgets(buffer, count, s->file)) return 0;
  return std::ferror(s->file) ? StreamFailure(s) : kErrorHandleEof;
}

uint32_t StreamPuts(void* stream, const char* text) {
  if (!stream) return kErrorBadDescriptor;
  if (!text) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  return std::fputs(text, s->file) < 0 ? StreamFailure(s) : 0;
}

uint32_t StreamRead(void* stream, void* buffer, std::size_t size, std::size_t count, std::size_t* items) {
  *items = 0;
  if (!stream) return kErrorBadDescriptor;
  if (!buffer) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  *items = std::fread(buffer, size, count, s->file);
  return *items < count && std::ferror(s->file) ? StreamFailure(s) : 0;
}

uint32_t StreamWrite(void* stream, const void* buffer, std::size_t size, std::size_t count, std::size_t* items) {
  *items = 0;
  if (!stream) return kErrorBadDescriptor;
  if (!buffer) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  *items = std::fwrite(buffer, size, count, s->file);
  return *items < count ? StreamFailure(s) : 0;
}

uint32_t StreamGetUnits(void* stream, unsigned short* buffer, int count) {
  if (!stream) return kErrorBadDescriptor;
  if (!buffer || count <= 0) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  int used = 0;
  if (s->text) {
    // A line of the code page's bytes, at most one byte to a unit.
    std::vector<char> line(static_cast<std::size_t>(count));
    if (uint32_t error = StreamGets(stream, line.data(), count)) return error;
    long units = BytesToUnits(line.data(), std::strlen(line.data()), buffer, static_cast<std::size_t>(count - 1),
                              CodePage::kSystem);
    used = units < 0 ? 0 : static_cast<int>(units);
  } else {
    while (used < count - 1) {
      int low = std::fgetc(s->file);
      if (low == EOF) break;
      int high = std::fgetc(s->file);
      if (high == EOF) break;  // half a unit at the end is dropped
      buffer[used] = static_cast<unsigned short>(low | (high << 8));
      if (buffer[used++] == '\n') break;
    }
    if (std::ferror(s->file)) return StreamFailure(s);
    if (used == 0) return kErrorHandleEof;
  }
  buffer[used] = 0;
  return 0;
}

uint32_t StreamPutUnits(void* stream, const unsigned short* text) {
  if (!stream) return kErrorBadDescriptor;
  if (!text) return kErrorInvalidArgument;
  Stream* s = StreamOf(stream);
  std::size_t length = wtext::Length(text);
  if (s->text) {
    std::vector<char> bytes(length * 3 + 1);
    long count = UnitsToBytes(text, length, bytes.data(), length * 3, CodePage::kSystem);
    if (count < 0) return kErrorInvalidArgument;
    std::size_t items = 0;
    return StreamWrite(stream, bytes.data(), 1, static_cast<std::size_t>(count), &items);
  }
  for (std::size_t i = 0; i < length; ++i) {
    if (std::fputc(text[i] & 0xFF, s->file) == EOF || std::fputc(text[i] >> 8, s->file) == EOF) {
      return StreamFailure(s);
    }
  }
  return 0;
}

// ---- handles

uint32_t OpenHandle(const unsigned short* path, HandleAccess access, HandleDisposition disposition,
                    HandleOptions options, intptr_t* handle) {
  *handle = -1;
  PathBytes bytes(path);
  if (!bytes.Ok()) return bytes.Error();
  int fd = -1;
  Traits traits;
  traits.sequential = options.sequential;
  if (options.unbuffered) {
    uint32_t error = os::OpenForTransfers(bytes.Get(), access, disposition, true, &fd);
    // A file system without direct transfers refuses them: go through the cache.
    if (error != 0 && error != kErrorInvalidArgument) return error;
  }
  if (fd >= 0) {
    // Direct transfers in sectors need an alignment of a sector or finer. A
    // file system that does not tell is taken to want 512 bytes, the finest
    // that disks have.
    traits.memoryAlignment = traits.offsetAlignment = 512;
    os::DirectAlignment(fd, &traits.memoryAlignment, &traits.offsetAlignment);
    auto fits = [](uint32_t alignment) { return alignment != 0 && alignment <= kSector; };
    if (!fits(traits.memoryAlignment) || !fits(traits.offsetAlignment)) {
      if (uint32_t error = os::TurnBuffered(fd)) {
        os::Close(fd);
        return error;
      }
      traits.memoryAlignment = traits.offsetAlignment = 0;
    }
  } else if (uint32_t error = os::OpenForTransfers(bytes.Get(), access, disposition, false, &fd)) {
    return error;
  }
  if (traits.ReadOnceThroughCache()) os::AdviseSequential(fd);
  Descriptors::Get().Set(fd, traits);
  *handle = fd;
  return 0;
}

uint32_t StartHandleTransfer(intptr_t handle, bool write, void* buffer, uint32_t count, OVERLAPPED* overlapped,
                             CompletionRoutine routine) {
  const int fd = HandleDescriptor(handle);
  Traits traits = Descriptors::Get().Find(fd);
  if (traits.memoryAlignment != 0 && overlapped &&
      (reinterpret_cast<uintptr_t>(buffer) % traits.memoryAlignment != 0 ||
       static_cast<uint64_t>(GetOffset(*overlapped)) % traits.offsetAlignment != 0 ||
       count % traits.offsetAlignment != 0) &&
      os::TurnBuffered(fd) == 0) {
    traits.memoryAlignment = traits.offsetAlignment = 0;
    Descriptors::Get().Set(fd, traits);
  }
  uint32_t error = StartTransfer(fd, write, buffer, count, overlapped, routine);
  // A file read once from start to end through the cache: have the system
  // fetch the next piece while this one is on its way, so the disk never
  // waits for the caller, and give back the pages of a piece read well
  // before, so that reading gigabytes neither pushes everything else out of
  // memory nor waits for fresh pages.
  if (error == 0 && !write && traits.ReadOnceThroughCache() && overlapped) {
    const int64_t offset = GetOffset(*overlapped);
    os::AdviseWillNeed(fd, offset + count, count);
    // The span given back overlaps the last ones: the cache holds pages in
    // folios of up to a few MiB, and only a folio wholly inside goes.
    const int64_t keptFrom = offset - kSequentialKeptBehind;
    if (keptFrom > 0) {
      const int64_t from = std::max<int64_t>(0, keptFrom - kSequentialKeptBehind);
      os::AdviseDone(fd, from, keptFrom - from);
    }
  }
  return error;
}

bool HandleIsUnbuffered(intptr_t handle) { return os::IsDirect(HandleDescriptor(handle)); }

bool HandleIsWritable(intptr_t handle) { return os::IsWritable(HandleDescriptor(handle)); }

void CancelHandleTransfers(intptr_t handle) { CancelTransfers(HandleDescriptor(handle)); }

uint32_t FlushHandle(intptr_t handle) { return os::Flush(HandleDescriptor(handle)); }

uint32_t CloseHandle(intptr_t handle) {
  // A file read once in sequence gives back the rest of its pages too.
  if (Descriptors::Get().Find(HandleDescriptor(handle)).ReadOnceThroughCache()) {
    os::AdviseDone(HandleDescriptor(handle), 0, 0);
  }
  Descriptors::Get().Set(HandleDescriptor(handle), Traits{});
  return os::Close(HandleDescriptor(handle));
}

uint32_t GetHandleSize(intptr_t handle, int64_t* size) {
  *size = -1;
  return os::Size(HandleDescriptor(handle), size);
}

uint32_t ReserveHandleSpace(intptr_t handle, int64_t offset, int64_t length) {
  if (offset < 0 || length <= 0) return kErrorInvalidArgument;
  return os::Reserve(HandleDescriptor(handle), offset, length);
}

uint32_t SetHandleSize(intptr_t handle, int64_t size) {
  if (size < 0) return kErrorInvalidArgument;
  return os::Truncate(HandleDescriptor(handle), size);
}

}  // namespace vbu::platform
