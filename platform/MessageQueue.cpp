#include "platform/MessageQueue.h"

#include "platform/internal/Thread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <unordered_map>

// The queue of one thread. Shared by the thread (through a thread-local
// pointer), its windows and the registry, so a window that outlives its
// thread posts into a queue that nobody reads, never into freed memory.
struct MThreadQueueState {
  unsigned long threadId = 0;
  std::mutex mutex;
  std::condition_variable ready;
  std::deque<MMessage> messages;
  void (*wake)(void*) = nullptr;
  void* wakeContext = nullptr;
  bool ended = false;  // the thread is gone

  bool Post(const MMessage& message) {
    void (*wakeUp)(void*);
    void* context;
    {
      std::lock_guard<std::mutex> lock(mutex);
      if (ended) return false;
      messages.push_back(message);
      wakeUp = wake;
      context = wakeContext;
    }
    ready.notify_one();
    if (wakeUp) wakeUp(context);
    return true;
  }

  void Drop(MMessageWindow* window) {
    std::lock_guard<std::mutex> lock(mutex);
    std::erase_if(messages, [window](const MMessage& m) { return m.window == window; });
  }
};

namespace {

// Threads by id, for thread messages.
struct Registry {
  std::mutex mutex;
  std::unordered_map<unsigned long, std::weak_ptr<MThreadQueueState>> queues;

  // Never destroyed: a detached thread may still end (and unregister its
  // queue) while the process runs its exit handlers.
  static Registry& Get() {
    static Registry* registry = new Registry;
    return *registry;
  }
};

// Ends and unregisters the queue when its thread ends.
struct ThreadQueueHolder {
  std::shared_ptr<MThreadQueueState> state;

  ~ThreadQueueHolder() {
    if (!state) return;
    {
      std::lock_guard<std::mutex> lock(state->mutex);
      state->ended = true;
      state->messages.clear();
    }
    Registry& registry = Registry::Get();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.queues.erase(state->threadId);
  }
};

unsigned long ThreadId() { return vbu::platform::CurrentThreadId(); }

std::shared_ptr<MThreadQueueState>& CurrentQueue() {
  thread_local ThreadQueueHolder holder;
  if (!holder.state) {
    holder.state = std::make_shared<MThreadQueueState>();
    holder.state->threadId = ThreadId();
    Registry& registry = Registry::Get();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.queues[holder.state->threadId] = holder.state;
  }
  return holder.state;
}

// Takes the next message, waiting up to `timeout` ms; false if none came.
bool Take(MThreadQueueState& queue, MMessage& message, unsigned long timeout) {
  std::unique_lock<std::mutex> lock(queue.mutex);
  auto available = [&] { return !queue.messages.empty(); };
  if (timeout == 0xFFFFFFFFul) {
    queue.ready.wait(lock, available);
  } else if (!queue.ready.wait_for(lock, std::chrono::milliseconds(timeout), available)) {
    return false;
  }
  message = queue.messages.front();
  queue.messages.pop_front();
  return true;
}

}  // namespace

// ---- MMessageWindow

MMessageWindow::MMessageWindow() : mQueue(CurrentQueue()) {}

MMessageWindow::~MMessageWindow() { mQueue->Drop(this); }

bool MMessageWindow::PostMessage(unsigned int message, uintptr_t wParam, intptr_t lParam) {
  return mQueue->Post(MMessage{this, message, wParam, lParam});
}

intptr_t MMessageWindow::SendMessage(unsigned int message, uintptr_t wParam, intptr_t lParam) {
  return WindowProc(message, wParam, lParam);
}

unsigned long MMessageWindow::GetThreadId() const { return mQueue->threadId; }

intptr_t MMessageWindow::WindowProc(unsigned int, uintptr_t, intptr_t) { return 0; }

// ---- MThreadQueue

unsigned long MThreadQueue::CurrentThreadId() { return ThreadId(); }

bool MThreadQueue::PostThreadMessage(unsigned long threadId, unsigned int message, uintptr_t wParam,
                                     intptr_t lParam) {
  std::shared_ptr<MThreadQueueState> queue;
  {
    Registry& registry = Registry::Get();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto found = registry.queues.find(threadId);
    if (found != registry.queues.end()) queue = found->second.lock();
  }
  return queue && queue->Post(MMessage{nullptr, message, wParam, lParam});
}

void MThreadQueue::PostQuitMessage(int exitCode) {
  CurrentQueue()->Post(MMessage{nullptr, kMsgQuit, static_cast<uintptr_t>(exitCode), 0});
}

bool MThreadQueue::GetMessage(MMessage& message) {
  Take(*CurrentQueue(), message, 0xFFFFFFFFul);
  return message.message != kMsgQuit || message.window != nullptr;
}

bool MThreadQueue::PeekMessage(MMessage& message) { return Take(*CurrentQueue(), message, 0); }

bool MThreadQueue::WaitMessage(unsigned long timeout) {
  MThreadQueueState& queue = *CurrentQueue();
  std::unique_lock<std::mutex> lock(queue.mutex);
  auto available = [&] { return !queue.messages.empty(); };
  if (timeout == 0xFFFFFFFFul) {
    queue.ready.wait(lock, available);
    return true;
  }
  return queue.ready.wait_for(lock, std::chrono::milliseconds(timeout), available);
}

intptr_t MThreadQueue::DispatchMessage(const MMessage& message) {
  return message.window ? message.window->WindowProc(message.message, message.wParam, message.lParam) : 0;
}

int MThreadQueue::PumpMessages() {
  MThreadQueueState& queue = *CurrentQueue();
  int count = 0;
  for (;;) {
    MMessage message;
    {
      std::lock_guard<std::mutex> lock(queue.mutex);
      if (queue.messages.empty()) break;
      message = queue.messages.front();
      if (!message.window && message.message == kMsgQuit) break;  // left for the loop to see
      queue.messages.pop_front();
    }
    // Outside the lock: a handler may post, or destroy windows.
    DispatchMessage(message);
    ++count;
  }
  return count;
}

void MThreadQueue::SetWakeUpHandler(void (*wake)(void* context), void* context) {
  MThreadQueueState& queue = *CurrentQueue();
  std::lock_guard<std::mutex> lock(queue.mutex);
  queue.wake = wake;
  queue.wakeContext = wake ? context : nullptr;
}
