#include "text/UStringResources.h"

#include <map>
#include <mutex>
#include <string>

#include "platform/internal/WideText.h"

namespace {

using Text = std::basic_string<unsigned short>;

// Module names, case-blind as the platform's module names are.
struct NoCase {
  bool operator()(const Text& a, const Text& b) const { return vbu::wtext::CompareNoCase(a.c_str(), b.c_str()) < 0; }
};

struct Tables {
  std::mutex mutex;
  std::map<Text, std::map<unsigned long, Text>, NoCase> modules;
  static Tables& Get() {
    static Tables tables;
    return tables;
  }
};

const Text kProgram;  // the key of the running program's table
const unsigned short kDefaultModule[] = {'B', 'r', 'e', 'v', 'a', 'n', 'd', 'e', 'r', 'A', 'T', 'L', '.', 'd', 'l', 'l', 0};

Text Key(const unsigned short* module) { return module ? Text(module) : kProgram; }

}  // namespace

const unsigned short* UStringResources::DefaultModule() { return kDefaultModule; }

void UStringResources::Register(const unsigned short* module, unsigned long id, const unsigned short* text) {
  Tables& tables = Tables::Get();
  std::lock_guard<std::mutex> lock(tables.mutex);
  tables.modules[Key(module)][id] = text ? Text(text) : Text();
}

void UStringResources::Unregister(const unsigned short* module) {
  Tables& tables = Tables::Get();
  std::lock_guard<std::mutex> lock(tables.mutex);
  tables.modules.erase(Key(module));
}

bool UStringResources::Find(const unsigned short* module, unsigned long id, unsigned short* out, int room) {
  if (!out || room < 1) return false;
  Tables& tables = Tables::Get();
  std::lock_guard<std::mutex> lock(tables.mutex);
  auto table = tables.modules.find(Text(module ? module : kDefaultModule));
  if (table == tables.modules.end()) table = tables.modules.find(kProgram);
  if (table == tables.modules.end()) return false;
  auto entry = table->second.find(id);
  if (entry == table->second.end()) return false;
  std::size_t n = entry->second.size() < static_cast<std::size_t>(room - 1) ? entry->second.size() : room - 1;
  entry->second.copy(out, n);
  out[n] = 0;
  return true;
}
