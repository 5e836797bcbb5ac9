// CMessageAction.h: user messages. Code calls a static function with a text
// and a window selector; each selected message window turns into one
// broadcast whose number encodes window and kind. The host's message windows
// (or a CMessageConsole) listen.
//
//   CMessageConsole console;                                  // a listener: prints them
//   CMessageAction::GetMessageAction()->AddListener(&console);
//   CMessageAction::Error(nullptr, u"Disc is full"_u16, 0);   // 26000 to the default window
//   CMessageAction::Inform(nullptr, u"Done"_u16, 1 | 4);       // 26002, then 26022
#pragma once

#include <atomic>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Sync.h>
#include <VantoroBasicUtils/messaging/LBroadcaster.h>

// The param of every user message. It lives for the broadcast; the text is not copied.
struct InteractionRecord {
  void* source;                // whoever speaks, as the caller said
  const unsigned short* text;  // terminated 16-bit text; null for Clear
};

// Message numbers: window base + kind. Window index w (selector bit 1 << w)
// has base 26000 + 10 * w, for w from 0 to 5.
constexpr long kMsgInteractionBase = 26000;
constexpr long kMsgInteractionWindowStep = 10;
constexpr long kInteractionError = 0;
constexpr long kInteractionWarning = 1;
constexpr long kInteractionInform = 2;
constexpr long kInteractionClear = 3;
constexpr long kInteractionInformWithoutReturn = 4;
constexpr long kInteractionSimpleOutput = 5;
constexpr long kInteractionReturn = 6;

// The process-wide sender of user messages. Its static functions may be
// called from any thread, also from several at once; each message is
// delivered on the caller's thread, and no lock is held while listeners run,
// so a listener may hand the message to another thread and wait for it. Set
// up the listeners before worker threads start.
class VBU_API CMessageAction : public LBroadcaster {
 public:
  CMessageAction();
  ~CMessageAction() override;

  // The one instance.
  static CMessageAction* GetMessageAction();

  // A selector of 0 means the default (SetDefault); bits above 32 name no window.
  static void Error(void* source, const unsigned short* text, long type = 0);
  static void Warning(void* source, const unsigned short* text, long type = 0);
  static void Inform(void* source, const unsigned short* text, long type = 0);
  // Information that leaves the line open: later output continues it.
  static void InformWithoutReturn(void* source, const unsigned short* text, long type = 0);
  // The text alone, with no label and no line end.
  static void SimpleOutput(void* source, const unsigned short* text, long type = 0);
  // Ends the open line.
  static void Return(long type = 0);
  // Clears the selected windows.
  static void Clear(long type = 0);
  // Sets the selector that 0 stands for; it starts as 1.
  static void SetDefault(long type);
  // `type`, or the default if `type` is 0.
  static long GetWindowType(long type);

  // Builds the record and broadcasts one message. Hosts may override it to route messages.
  virtual void BroadcastInteraction(long message, void* source, const unsigned short* text);

 protected:
  void _Error(void* source, const unsigned short* text, long type);
  void _Warning(void* source, const unsigned short* text, long type);
  void _Inform(void* source, const unsigned short* text, long type);
  void _InformWithoutReturn(void* source, const unsigned short* text, long type);
  void _SimpleOutput(void* source, const unsigned short* text, long type);
  void _Return(long type);
  void _Clear(long type);

  CCriticalSection mSection;  // kept for subclasses; the class itself never takes it

 private:
  // One broadcast of `kind` to each window selected by `type`, lowest first.
  void Send(long kind, void* source, const unsigned short* text, long type);

  static CMessageAction sMessageAction;
  static std::atomic<long> sDefaultType;  // atomic: a host may set it while workers report
};
