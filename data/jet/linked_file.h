// Where links between databases lead.
#pragma once

#include "data/jet/file/file.h"
#include "data/jet/format/schema.h"
#include "runtime/text.h"

namespace rdv::jet {

// The file of a linked table of the database at `spelled`, which is to lie in that database's
// folder or below it: a file of the same site, also once all links of the file system are followed.
// Where the link says no more than a name it is looked for in that folder. Raises where else the
// link leads and that it is not followed; the file may be absent.
Text FileOfLink(const LinkedTable& link, const Text& spelled,
                FileSystem& files = NativeFileSystem());

}  // namespace rdv::jet
