// A file chooser that plays a script instead of asking a user: it keeps the
// requests it gets and what its client did to it, starts in the folder of
// the start name, takes the steps given (the user picks a filter, browses to
// a folder, types a name), fires the client's timers after each, and then
// answers OK with folder + name, or cancels.
#pragma once

#include <VantoroBasicUtils/platform/FileChooser.h>

#include <string>
#include <vector>

class ScriptedFileChooser : public vbu::FileChooser, public vbu::FileChooserView {
 public:
  struct Step {
    enum Kind { kFilter, kFolder, kName } kind;
    unsigned long filter = 0;
    std::u16string text;
  };
  static Step PickFilter(unsigned long filter) { return {Step::kFilter, filter, {}}; }
  static Step Browse(std::u16string folder) { return {Step::kFolder, 0, std::move(folder)}; }
  static Step Type(std::u16string name) { return {Step::kName, 0, std::move(name)}; }

  // A copy of a request's texts.
  struct Seen {
    bool open;
    unsigned long flags;
    std::u16string fileName, filter;
    unsigned long filterIndex;
  };

  ScriptedFileChooser() { vbu::SetFileChooser(this); }
  ~ScriptedFileChooser() override { vbu::SetFileChooser(nullptr); }

  std::vector<Step> steps;     // played on each Run
  bool answerOk = true;
  std::vector<Seen> requests;  // every Run's request
  std::vector<std::u16string> foldersShown;  // every SetFolder of the client
  std::u16string folder, name;               // what the chooser shows
  unsigned long filter = 0;

  bool Run(const vbu::FileChooserRequest& request, vbu::FileChooserClient& client,
           vbu::FileChooserResult& result) override {
    requests.push_back({request.open, request.flags, Str(request.fileName), Str(request.filter), request.filterIndex});
    std::u16string start = Str(request.fileName);
    std::size_t slash = start.rfind(u'/');
    folder = slash == std::u16string::npos ? u"" : start.substr(0, slash + 1);
    name = slash == std::u16string::npos ? start : start.substr(slash + 1);
    filter = request.filterIndex;
    client.OnInitDone(*this, filter);
    FireTimers(client);
    for (const Step& step : steps) {
      if (step.kind == Step::kFilter) {
        filter = step.filter;
        client.OnTypeChange(*this, filter);
      } else if (step.kind == Step::kFolder) {
        folder = step.text;
      } else {
        name = step.text;
      }
      FireTimers(client);
    }
    if (!answerOk) return false;
    std::u16string path = !name.empty() && name[0] == u'/' ? name : folder + name;
    result.SetPathName(Units(path));
    result.filterIndex = filter;
    return true;
  }

  const unsigned short* GetFolder() override { return Units(mText = folder); }
  bool SetFolder(const unsigned short* path) override {
    folder = Str(path);
    foldersShown.push_back(folder);
    name.clear();  // entering a folder empties the name field, as a desktop dialog does
    return true;
  }
  const unsigned short* GetFileName() override { return Units(mText = name); }
  void SetFileName(const unsigned short* text) override { name = Str(text); }
  void SetTimer(unsigned int id, unsigned int) override {
    for (unsigned int t : mTimers) if (t == id) return;
    mTimers.push_back(id);
  }
  void KillTimer(unsigned int id) override { std::erase(mTimers, id); }

 private:
  static std::u16string Str(const unsigned short* text) {
    return text ? std::u16string(reinterpret_cast<const char16_t*>(text)) : std::u16string();
  }
  static const unsigned short* Units(const std::u16string& text) {
    return reinterpret_cast<const unsigned short*>(text.c_str());
  }
  // Fires each running timer; a client that never kills one gets it a few times only.
  void FireTimers(vbu::FileChooserClient& client) {
    for (int round = 0; round < 4 && !mTimers.empty(); ++round) {
      std::vector<unsigned int> due = mTimers;
      for (unsigned int id : due) client.OnTimer(*this, id);
    }
  }

  std::u16string mText;
  std::vector<unsigned int> mTimers;
};
