// User messages: selector arithmetic, the console's output, and reports from
// several threads at once.
#include <VantoroBasicUtils/messaging/CMessageAction.h>
#include <VantoroBasicUtils/messaging/CMessageConsole.h>
#include <VantoroBasicUtils/messaging/StGlobalLock.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

const unsigned short kHello[] = {'h', 'e', 'l', 'l', 'o', 0};
const unsigned short kWorld[] = {'w', 0xF6, 'r', 'l', 'd', 0};  // an umlaut: UTF-8 on output

class Catcher : public LListener {
 public:
  Catcher() { CMessageAction::GetMessageAction()->AddListener(this); }
  bool ListenToMessage(long message, void* param) override {
    messages.push_back(message);
    auto* record = static_cast<InteractionRecord*>(param);
    sources.push_back(record ? record->source : nullptr);
    texts.push_back(record ? record->text : nullptr);
    return true;
  }
  std::vector<long> messages;
  std::vector<void*> sources;
  std::vector<const unsigned short*> texts;
};

// Restores the default selector after each test.
class MessageAction : public ::testing::Test {
 protected:
  void TearDown() override { CMessageAction::SetDefault(1); }
};

}  // namespace

TEST_F(MessageAction, SelectorsPickWindowsLowestFirstAndEveryKindReachesEveryWindow) {
  Catcher c;
  int source;
  CMessageAction::Error(&source, kHello, 0);
  CMessageAction::Error(&source, kHello, 5);
  CMessageAction::Error(&source, kHello, 64);  // no window: nothing, and no default
  CMessageAction::SetDefault(2);
  CMessageAction::Inform(nullptr, kHello, 0);
  EXPECT_EQ(c.messages, (std::vector<long>{26000, 26000, 26020, 26012}));
  EXPECT_TRUE(c.sources[0] == &source && c.texts[0] == kHello);  // not copied
  EXPECT_TRUE(CMessageAction::GetWindowType(0) == 2 && CMessageAction::GetWindowType(8) == 8);

  c.messages.clear();
  c.texts.clear();
  // Every kind, in the order of its number, to every window.
  for (auto report : {CMessageAction::Error, CMessageAction::Warning, CMessageAction::Inform}) report(nullptr, kHello, 63);
  CMessageAction::Clear(63);
  CMessageAction::InformWithoutReturn(nullptr, kHello, 63);
  CMessageAction::SimpleOutput(nullptr, kHello, 63);
  CMessageAction::Return(63);
  std::vector<long> expect;
  for (long kind = 0; kind <= 6; ++kind) {
    for (long window = 0; window < 6; ++window) expect.push_back(26000 + 10 * window + kind);
  }
  EXPECT_EQ(c.messages, expect);
  EXPECT_TRUE(c.texts[18] == nullptr && c.texts.back()[0] == 0);  // Clear: no text; Return: an empty one
}

namespace {
// Opens CheckMessage for tests.
class CheckingConsole : public CMessageConsole {
 public:
  using CMessageConsole::CheckMessage;
};
}  // namespace

TEST_F(MessageAction, ConsoleTakesItsWindowsMessagesButClearAndPrintsLabelsTabsAndLineEnds) {
  {
    CheckingConsole console;  // attached: gone before the printing below
    for (auto [type, base] : {std::pair{1L, 26000L}, {2L, 26010L}, {4L, 26020L}}) {
      console.SetWindowType(type);
      for (long kind = 0; kind <= 6; ++kind) EXPECT_EQ(console.CheckMessage(base + kind), kind != 3) << base + kind;
      EXPECT_FALSE(console.CheckMessage(base + 7));
      EXPECT_FALSE(console.CheckMessage(base == 26000 ? 26010 : 26000));
    }
    console.SetWindowType(8);
    EXPECT_FALSE(console.CheckMessage(26030));
  }
  CMessageConsole console;
  EXPECT_EQ(console.GetWindowType(), 4);
  EXPECT_FALSE(console.ListenToMessage(202, nullptr));
  CMessageConsole copy(console);  // attached to nothing: each line is printed once
  testing::internal::CaptureStdout();
  CMessageAction::Error(nullptr, kHello, 1);
  CMessageAction::Warning(nullptr, kHello, 2);
  CMessageAction::Inform(nullptr, kWorld, 16);
  CMessageAction::InformWithoutReturn(nullptr, kHello, 1);
  CMessageAction::SimpleOutput(nullptr, kWorld, 1);
  CMessageAction::Return(1);
  CMessageAction::Clear(1);
  CMessageAction::Error(nullptr, kHello, 32);  // the sixth window is not printed
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error\t\thello\n"
            "Warning\t\thello\n"
            "Info\t\tw\xC3\xB6rld\n"
            "Info\t\thellow\xC3\xB6rld\n");
}

TEST(StGlobalLock, IsReentrantAndExcludesOtherThreads) {
  std::atomic<int> inside{0};
  std::atomic<int> maxInside{0};
  auto work = [&] {
    for (int i = 0; i < 200; ++i) {
      StGlobalLock outer;
      StGlobalLock inner;  // the same thread takes it again
      int now = ++inside;
      if (now > maxInside) maxInside = now;
      --inside;
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(maxInside, 1);
}
