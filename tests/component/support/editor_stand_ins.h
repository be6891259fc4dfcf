// Drop-down lists and text boxes where the platform's own do not work.
#pragma once

#include "component/com/ole_headers.h"

namespace rdv::test {

// A 32-bit program in a 64-bit Wine gets no device context. Nothing is painted then, which windows
// do not mind, with two exceptions: the platform's drop-down list refuses to be created, and its
// text box crashes on its first text.
bool CanPaint();

// Where nothing can be painted, windows of the classes COMBOBOX and EDIT that this thread creates
// get window procedures of our own for as long as the object lives: they keep entries, selection,
// text and focus and tell of them as the platform's do, and drop no list down. All that the control
// does can run on them.
class EditorStandIns {
 public:
  EditorStandIns();
  EditorStandIns(const EditorStandIns&) = delete;
  EditorStandIns& operator=(const EditorStandIns&) = delete;
  ~EditorStandIns();

 private:
  HHOOK hook_ = nullptr;
};

}  // namespace rdv::test
