// MString::Format (and MStringList::AddFormat, which shares its formatter)
// with a format and arguments drawn from the input. The arguments always
// match the conversions of the format (%d and %x an int, %f a double, %s a
// terminated text or null), so that what is tested is the formatter, not
// undefined argument passing.
#include "FuzzSupport.h"

#include <VantoroBasicUtils/text/MStringList.h>
#include <text/FormatInternal.h>

#include <deque>
#include <variant>

namespace {

constexpr int kMaxConversions = 4;
constexpr int kFormatRoom = static_cast<int>(vbu::text::kFormatRoom);
using Argument = std::variant<int, double, const unsigned short*>;

// Calls Format with the arguments in order, each with its own type; one
// instantiation for every sequence of types up to kMaxConversions long.
template <typename... Args>
void Call(MString& out, MStringList& list, unsigned short* format, const Argument* next, const Argument* end,
          Args... args) {
  if constexpr (sizeof...(Args) < kMaxConversions) {
    if (next != end) {
      std::visit([&](auto value) { Call(out, list, format, next + 1, end, args..., value); }, *next);
      return;
    }
  }
  out.Format(format, args...);
  list.AddFormat(format, args...);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  std::vector<unsigned short> format = vbu::fuzz::Units(in, 256);
  std::deque<std::vector<unsigned short>> texts;  // stable blocks for %s
  std::vector<Argument> arguments;
  // Walks the format as the formatter does (the unit after % is used up
  // whatever it is); cuts it before a conversion that would need more
  // arguments than Call passes.
  for (std::size_t i = 0; format[i] != 0; ++i) {
    if (format[i] != '%') continue;
    const unsigned short spec = format[i + 1];
    if (spec == 0) break;
    if (spec == 'd' || spec == 'x' || spec == 'f' || spec == 's') {
      if (arguments.size() == kMaxConversions) {
        format[i] = 0;
        break;
      }
      if (spec == 'f') {
        arguments.emplace_back(in.ConsumeFloatingPoint<double>());
      } else if (spec != 's') {
        arguments.emplace_back(in.ConsumeIntegral<int>());
      } else if (in.ConsumeBool()) {
        arguments.emplace_back(static_cast<const unsigned short*>(nullptr));
      } else {
        // A unit repeated, long enough to reach the work space's end.
        std::size_t length = in.ConsumeIntegralInRange<std::size_t>(0, kFormatRoom + 100);
        unsigned short unit = in.ConsumeIntegralInRange<unsigned short>(1, 0xFFFF);
        texts.emplace_back(length + 1, unit);
        texts.back()[length] = 0;
        arguments.emplace_back(static_cast<const unsigned short*>(texts.back().data()));
      }
    }
    ++i;
  }
  MString out;
  MStringList list;
  Call(out, list, format.data(), arguments.data(), arguments.data() + arguments.size());
  VBU_FUZZ_CHECK(out.GetLength() < kFormatRoom);
  VBU_FUZZ_CHECK(list.GetSize() == 1 && *list.GetHead() == out);
  return 0;
}
