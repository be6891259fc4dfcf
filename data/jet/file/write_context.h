// What every part of the engine that changes pages is handed.
#pragma once

#include "data/jet/file/file_reader.h"
#include "data/jet/file/pager.h"

namespace rdv::jet {

// What all parts that write share. Refers to its parts, which must outlive it.
struct WriteContext {
  Pager& pager;
  const FileReader& file;

  const Format& Layout() const { return file.Layout(); }
};

}  // namespace rdv::jet
