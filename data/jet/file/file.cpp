#include "data/jet/file/file.h"

#include "data/jet/format/errors.h"

namespace rdv::jet {

void RaiseFileError(const FileError& error, TextView path) {
  switch (error.Problem()) {
    case FileProblem::NotFound:
      RaiseFileNotFound(path);
    case FileProblem::FolderNotFound:
      RaiseInvalidPath(path);
    case FileProblem::InUse:
      RaiseFileInUse(path);
    case FileProblem::Denied:
      RaiseReadOnly(path, FromUtf8(error.what()));
    case FileProblem::Exists:
      RaiseFileExists(path);
    case FileProblem::DiskFull:
    case FileProblem::Other:
      break;
  }
  RaiseDiskError(path, FromUtf8(error.what()));
}

}  // namespace rdv::jet
