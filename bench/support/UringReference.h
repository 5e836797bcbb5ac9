// What one thread of this process gets from the disk with nothing between
// it and io_uring: the same transfers as the library's, with the same
// memory, and no library. Beside fio (a process of its own with deeper
// queues) it shows what an in-process job can reach on this machine.
#pragma once

#include <fcntl.h>
#include <liburing.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace bench {

// Copies `sources` end to end into `destination` (made anew, its space taken
// first) through a ring of `slots` buffers of `slotBytes`, O_DIRECT on both
// legs: each slot is read, then written, then read again. With `readOnly`,
// only the reads (into the same ring). Gives the bytes moved, 0 on failure.
inline uint64_t UringMove(const std::vector<std::string>& sources, const std::string& destination, unsigned slots,
                          unsigned slotBytes, bool readOnly) {
  io_uring ring;
  if (io_uring_queue_init(2 * slots, &ring, 0) != 0) return 0;
  void* memory = nullptr;
  if (posix_memalign(&memory, 4096, std::size_t{slots} * slotBytes) != 0) return 0;
  char* buffers = static_cast<char*>(memory);
  uint64_t total = 0;
  for (const auto& source : sources) {
    struct stat st{};
    if (::stat(source.c_str(), &st) == 0) total += static_cast<uint64_t>(st.st_size);
  }
  int out = readOnly ? -1 : ::open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT, 0644);
  if (!readOnly && (out < 0 || ::fallocate(out, 0, 0, static_cast<off_t>(total)) != 0)) total = 0;
  uint64_t base = 0;
  for (std::size_t s = 0; s < sources.size() && total != 0; ++s) {
    int in = ::open(sources[s].c_str(), O_RDONLY | O_DIRECT);
    struct stat st{};
    if (in < 0 || ::fstat(in, &st) != 0) {
      total = 0;
      break;
    }
    const uint64_t size = static_cast<uint64_t>(st.st_size);
    const uint64_t parts = (size + slotBytes - 1) / slotBytes;
    enum : uint8_t { kFree, kReading, kFull, kWriting };
    std::vector<uint8_t> state(slots, kFree);
    uint64_t read = 0, written = 0, done = 0;
    while (done < parts) {
      for (; read < parts && state[read % slots] == kFree; ++read) {
        io_uring_sqe* sqe = io_uring_get_sqe(&ring);
        io_uring_prep_read(sqe, in, buffers + (read % slots) * slotBytes, slotBytes, read * slotBytes);
        io_uring_sqe_set_data64(sqe, read * 2);
        state[read % slots] = kReading;
      }
      for (; !readOnly && written < read && state[written % slots] == kFull; ++written) {
        const uint64_t count = std::min<uint64_t>(slotBytes, (size - written * slotBytes + 4095) / 4096 * 4096);
        io_uring_sqe* sqe = io_uring_get_sqe(&ring);
        io_uring_prep_write(sqe, out, buffers + (written % slots) * slotBytes, static_cast<unsigned>(count),
                            base + written * slotBytes);
        io_uring_sqe_set_data64(sqe, written * 2 + 1);
        state[written % slots] = kWriting;
      }
      io_uring_submit(&ring);
      io_uring_cqe* cqe = nullptr;
      if (io_uring_wait_cqe(&ring, &cqe) != 0) break;
      do {
        const uint64_t tag = io_uring_cqe_get_data64(cqe);
        if (cqe->res < 0) total = 0;
        const bool wrote = (tag & 1) != 0;
        state[(tag / 2) % slots] = wrote || readOnly ? kFree : kFull;
        if (wrote || readOnly) ++done;
        io_uring_cqe_seen(&ring, cqe);
      } while (io_uring_peek_cqe(&ring, &cqe) == 0);
    }
    base += (size + 4095) / 4096 * 4096;
    ::close(in);
  }
  if (out >= 0) ::close(out);
  io_uring_queue_exit(&ring);
  std::free(memory);
  return total;
}

// Reads `path` as UringMove does with `readOnly`, but split as the library
// splits its work: this thread submits and sleeps on a condition variable,
// another thread waits on the ring and wakes it for each end. Beside the
// one-thread read it shows what that hand-over costs on this machine.
inline uint64_t UringReadTwoThreads(const std::string& path, unsigned slots, unsigned slotBytes) {
  io_uring ring;
  if (io_uring_queue_init(2 * slots, &ring, 0) != 0) return 0;
  void* memory = nullptr;
  if (posix_memalign(&memory, 4096, std::size_t{slots} * slotBytes) != 0) return 0;
  char* buffers = static_cast<char*>(memory);
  int in = ::open(path.c_str(), O_RDONLY | O_DIRECT);
  struct stat st{};
  const uint64_t parts = in >= 0 && ::fstat(in, &st) == 0 ? static_cast<uint64_t>(st.st_size) / slotBytes : 0;
  std::mutex mutex;
  std::condition_variable wake;
  uint64_t ended = 0;
  std::thread reaper([&] {
    for (uint64_t k = 0; k < parts; ++k) {
      io_uring_cqe* cqe = nullptr;
      if (io_uring_wait_cqe(&ring, &cqe) != 0) break;
      io_uring_cqe_seen(&ring, cqe);
      std::lock_guard<std::mutex> lock(mutex);
      ++ended;
      wake.notify_all();
    }
  });
  uint64_t started = 0, seen = 0;
  while (seen < parts) {
    for (; started < parts && started - seen < slots; ++started) {
      io_uring_sqe* sqe = io_uring_get_sqe(&ring);
      io_uring_prep_read(sqe, in, buffers + (started % slots) * slotBytes, slotBytes, started * slotBytes);
      io_uring_submit(&ring);
    }
    std::unique_lock<std::mutex> lock(mutex);
    wake.wait(lock, [&] { return ended > seen; });
    seen = ended;
  }
  reaper.join();
  if (in >= 0) ::close(in);
  io_uring_queue_exit(&ring);
  std::free(memory);
  return parts * slotBytes;
}

}  // namespace bench
