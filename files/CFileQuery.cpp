#include "files/CFileQuery.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/internal/WideText.h"
#include "platform/internal/Directory.h"
#include "text/MStringList.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

// Folders by device and node.
using Walked = std::set<std::pair<uint64_t, uint64_t>>;

}  // namespace

CFileQuery::CFileQuery(MStringList* dropped) : mWalked(nullptr) {
  Walked walked;
  mWalked = &walked;
  if (dropped) {
    for (MString* name = dropped->GetHead(); name; name = dropped->GetNext()) {
      // The walk may not move the list's cursor: each name is copied first.
      MString path(*name);
      if (path.GetLength() != 0) ProcessFileName(path);
    }
  }
  mWalked = nullptr;
}

CFileQuery::CFileQuery(unsigned short* path) : CFileQuery(static_cast<const unsigned short*>(path)) {}

CFileQuery::CFileQuery(const unsigned short* path) : mWalked(nullptr) {
  Walked walked;
  mWalked = &walked;
  if (path && path[0]) {
    MString own(path);
    ProcessFileName(own);
  }
  mWalked = nullptr;
}

CFileQuery::~CFileQuery() {
  for (unsigned long i = 1; i <= GetCount(); ++i) {
    MString* path = nullptr;
    FetchItemAt(static_cast<long>(i), &path);
    delete path;
    path = nullptr;
    AssignItemsAt(1, static_cast<long>(i), &path);
  }
}

void CFileQuery::ProcessFileName(unsigned short* path) {
  if (IsDir(path)) {
    ProcessDirectory(path);
  } else {
    ProcessFile(path);
  }
}

bool CFileQuery::IsDir(unsigned short* path) {
  vp::PathKind kind;
  if (vp::InspectPath(path, &kind) != 0) return true;
  return kind.folder;
}

void CFileQuery::ProcessDirectory(unsigned short* path) {
  vp::PathKind kind;
  if (vp::InspectPath(path, &kind) != 0) return;
  // Only a folder that is walking already (an ancestor, reached again
  // through a link) is passed over: that is a cycle. A folder reached twice
  // side by side is listed twice, as a file is.
  auto* walked = static_cast<Walked*>(mWalked);
  if (walked && !walked->insert({kind.device, kind.node}).second) return;
  struct Leave {
    Walked* walked;
    std::pair<uint64_t, uint64_t> folder;
    ~Leave() {
      if (walked) walked->erase(folder);
    }
  } leave{walked, {kind.device, kind.node}};
  std::vector<std::u16string> names;
  {
    vp::FolderEntries entries(path);
    std::u16string name;
    while (entries.Next(&name)) names.push_back(name);
  }
  // The system gives no order; names in order make the list the same each time.
  std::sort(names.begin(), names.end());
  MString folder(path);
  folder += MString(u"/"_u16);
  for (const std::u16string& name : names) {
    MString entry = folder + MString(reinterpret_cast<const unsigned short*>(name.c_str()));
    ProcessFileName(entry);
  }
}

void CFileQuery::ProcessFile(unsigned short* path) {
  auto* copy = new MString(path);
  InsertItemsAt(1, kLastIndex, &copy);
}
