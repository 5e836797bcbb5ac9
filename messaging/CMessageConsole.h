// CMessageConsole.h: the stock listener of user messages, which prints them
// on standard output in UTF-8: "Error\t", "Warning\t" or "Info\t" and a tab,
// then the text, then a line end.
//
//   CMessageConsole console;                               // listens from here on
//   CMessageAction::Error(nullptr, u"Disc is full"_u16, 1);   // prints "Error\t\tDisc is full\n"
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/messaging/LListener.h>

class VBU_API CMessageConsole : public LListener {
 public:
  // Adds itself to CMessageAction's instance, with window type 4.
  CMessageConsole();
  // A copy has the same window type and is attached to nothing.
  CMessageConsole(const CMessageConsole& other);
  CMessageConsole& operator=(const CMessageConsole& other);
  ~CMessageConsole() override;

  void SetWindowType(long type) { mWindowType = type; }
  long GetWindowType() const { return mWindowType; }

  // Prints the messages of windows 0 to 4 (whatever the window type says);
  // true for what it handles, Clear of window 0 included.
  bool ListenToMessage(long message, void* param) override;

 protected:
  // True if `message` belongs to this console's window type (1, 2 or 4); never for Clear.
  bool CheckMessage(long message);
  // Prints one message: severity 0-2 label, text, line end; 3 label and
  // text; 4 text; 5 text and line end.
  void Message(int severity, const unsigned short* label, const unsigned short* text);

 private:
  long mWindowType;
};
