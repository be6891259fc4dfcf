// A file in the making. It lies beside the name that it is to have and takes that name, never
// another file's, when it is complete: whatever bears the name is whole, and what a dead maker left
// behind is in nobody's way.
#pragma once

#include <memory>

#include "data/jet/file/file.h"

namespace rdv::jet {

// Every call raises FileError.
class Draft {
 public:
  // Makes an empty file, in place of what a dead maker left. InUse when another one is at work.
  // What holds the content of another file, `model`, gets that one's rights.
  Draft(FileSystem& files, const Text& final_path, File* model = nullptr);
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;
  // Removes the file unless it was published.
  ~Draft();

  const Text& Path() const { return path_; }
  File& Content() { return *file_; }

  // Gives the file its name, for good: whatever happens afterwards finds it whole under its name.
  // Nobody else may have it open.
  void Publish();

 private:
  bool TryMake(File* model);
  void RemoveDeadOne();
  static void Lock(File& file);
  void RemoveJournal();

  FileSystem& files_;
  Text final_path_;
  Text path_;
  std::unique_ptr<File> file_;
  bool published_ = false;
};

// Where a name is given in two steps, a maker that died between them has left the file with both,
// the draft's and its own. Takes the draft's away, unless the maker is still at work. `file` bears
// `final_path`.
void RemoveNameOfDraft(FileSystem& files, File& file, const Text& final_path);

}  // namespace rdv::jet
