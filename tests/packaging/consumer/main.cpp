// A minimal host of the installed library.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdint>
#include <cstdio>

int main() {
  LList list;
  int values[3] = {1, 2, 3};
  for (int& v : values) {
    int* p = &v;
    list.InsertItemsAt(1, kLastIndex, &p, 0);
  }
  LListIterator it(list);
  int sum = 0;
  for (int* p; it.Next(&p);) sum += *p;
  if (sum != 6 || list.GetCount() != 3) {
    std::printf("consumer: wrong result\n");
    return 1;
  }
  // The library it runs with is the one whose headers it was built with.
  if (vbu::GetLibraryVersionNumber() != VBU_VERSION_NUMBER) {
    std::printf("consumer: built against %s, running with %s\n", VBU_VERSION_STRING, vbu::GetLibraryVersion());
    return 1;
  }
  return 0;
}
