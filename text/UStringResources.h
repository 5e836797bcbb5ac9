// UStringResources.h: string tables by module name and number, from which
// MString::LoadStr takes its texts. A host registers its tables at start-up.
//
//   UStringResources::Register(u"BrevanderATL.dll"_u16, 101, u"Disc full"_u16);
//   UStringResources::Register(nullptr, 7, u"Program's own text"_u16);   // the program's table
//   MString s;  s.LoadStr(101);   // "Disc full"
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API UStringResources {
 public:
  // The module that LoadStr reads when it is given none.
  static const unsigned short* DefaultModule();
  // Sets text `id` of `module`'s table (null: the running program's table),
  // making the table if needed. Module names compare case-blind.
  static void Register(const unsigned short* module, unsigned long id, const unsigned short* text);
  // Removes `module`'s whole table.
  static void Unregister(const unsigned short* module);
  // Copies text `id` into `out` (room for `room` units, terminator included),
  // cut to fit: from `module`'s table (null: the default module), or from the
  // program's table when `module` has none. False if there is no such text.
  static bool Find(const unsigned short* module, unsigned long id, unsigned short* out, int room);
};
