#include "data/jet/linked_file.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "data/jet/format/errors.h"

namespace rdv::jet {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void RaiseNotFollowed(const LinkedTable& link, const Text& where) {
  RaiseEngineError(ErrorNumber::General, u"The table '" + link.name + u"' is linked to " + where +
                                             u". Such links are not followed.");
}

// What a link says of a server or of a file of another kind, without the passwords in it.
Text WithoutSecrets(TextView connect) {
  Text shown;
  while (!connect.empty()) {
    const TextView part = connect.substr(0, connect.find(u';'));
    connect.remove_prefix(std::min(connect.size(), part.size() + 1));
    const TextView name = Trim(part.substr(0, part.find(u'=')));
    if (part.empty() || EqualsIgnoringCase(name, u"PWD") || EqualsIgnoringCase(name, u"UID"))
      continue;
    if (!shown.empty()) shown += u"; ";
    shown += part;
  }
  return shown;
}

bool IsSeparator(char16_t unit) {
  return unit == u'\\' || unit == u'/';
}

// Of this system's own paths.
bool IsOwnSeparator(char16_t unit) {
#ifdef _WIN32
  return IsSeparator(unit);
#else
  return unit == u'/';
#endif
}

using Parts = std::vector<Text>;

// What separators part, with "." and ".." taken out as far as they can be. A path from the root
// begins with an empty part or with a drive.
template <typename IsSeparatorHere>
Parts Split(TextView path, IsSeparatorHere is_separator) {
  Parts parts;
  for (size_t start = 0; start <= path.size();) {
    const auto end = static_cast<size_t>(
        std::find_if(path.begin() + static_cast<ptrdiff_t>(start), path.end(), is_separator) -
        path.begin());
    const TextView part = path.substr(start, end - start);
    const bool from_root = part.empty() && start == 0 && end < path.size();
    const bool climbs = part == u".." && !parts.empty() && !parts.back().empty() &&
                        parts.back() != u".." && !parts.back().ends_with(u':');
    if (climbs) {
      parts.pop_back();
    } else if (from_root || (!part.empty() && part != u".")) {
      parts.push_back(Text(part));
    }
    start = end + 1;
  }
  return parts;
}

bool IsFromRoot(const Parts& parts) {
  return !parts.empty() && (parts.front().empty() || parts.front().ends_with(u':'));
}

Text CurrentFolder() {
  std::error_code ignored;
  const fs::path folder = fs::current_path(ignored);
#ifdef _WIN32
  return Text(folder.u16string());
#else
  return FromUtf8(folder.string());
#endif
}

bool SameName(const Text& left, const Text& right) {
#ifdef _WIN32
  return EqualsIgnoringCase(left, right);
#else
  return left == right;
#endif
}

// What leads from the folder of the file at `path` to the link's file; nothing when that does not
// lie in it or below.
Parts WayToFile(const Text& database, const Text& path) {
  Parts linked = Split(database, IsSeparator);
  if (IsFromRoot(linked)) {
    Parts folder = Split(path, IsOwnSeparator);
    if (!IsFromRoot(folder)) folder = Split(CurrentFolder() + u'/' + path, IsOwnSeparator);
    folder.pop_back();
    const auto [end, rest] =
        std::mismatch(folder.begin(), folder.end(), linked.begin(), linked.end(), SameName);
    if (end != folder.end()) return {};
    linked.erase(linked.begin(), rest);
  }
  const bool stays = std::ranges::none_of(
      linked, [](const Text& part) { return part == u".." || part.find(u':') != Text::npos; });
  return stays ? linked : Parts();
}

Text FolderOf(const Text& path) {
  const auto own_name = std::find_if(path.rbegin(), path.rend(), IsOwnSeparator).base();
  return own_name == path.begin() ? Text(u".") : Text(path.begin(), own_name);
}

// Where the file is that is named below the folder of the file at `path`: a folder or a file there
// may be a link of the file system that leads elsewhere.
Text RequireInFolder(const LinkedTable& link, const Text& path, const Text& file,
                     FileSystem& files) {
  const auto refuse = [&](const Text& where) {
    RaiseNotFollowed(link, u"'" + link.database + u"', which " + where +
                               u" outside of the folder of '" + path + u"'");
  };
  try {
    Text real = files.CanonicalPath(file);
    const Parts folder = Split(files.CanonicalPath(FolderOf(path)), IsOwnSeparator);
    const Parts parts = Split(real, IsOwnSeparator);
    const auto end =
        std::mismatch(folder.begin(), folder.end(), parts.begin(), parts.end(), SameName).first;
    if (end != folder.end()) refuse(u"leads to '" + real + u"',");
    return real;
  } catch (const FileError& error) {
    const bool absent =
        error.Problem() == FileProblem::NotFound || error.Problem() == FileProblem::FolderNotFound;
    if (!absent) refuse(u"may lie");
    return file;
  }
}

// Links lead from where the file is, not from where a link to it is. One that cannot be found has
// no other name than the one that it is called by.
Text RealPath(const Text& path, FileSystem& files) {
  try {
    return files.CanonicalPath(path);
  } catch (const FileError&) {
    return path;
  }
}

}  // namespace

Text FileOfLink(const LinkedTable& link, const Text& spelled, FileSystem& files) {
  const Text path = RealPath(spelled, files);
  if (link.server) RaiseNotFollowed(link, u"a server (" + WithoutSecrets(link.connect) + u")");
  const Text kind(Trim(TextView{link.connect}.substr(0, link.connect.find(u';'))));
  if (!kind.empty())
    RaiseNotFollowed(link, u"'" + link.database + u"', which is of another kind (" + kind + u")");
  const bool network =
      link.database.size() > 1 && IsSeparator(link.database[0]) && IsSeparator(link.database[1]);
  if (network) RaiseNotFollowed(link, u"the network path '" + link.database + u"'");
  const Parts way = WayToFile(link.database, path);
  if (way.empty()) {
    RaiseNotFollowed(
        link, u"'" + link.database + u"', which lies outside of the folder of '" + path + u"'");
  }
  const auto own_name = std::find_if(path.rbegin(), path.rend(), IsOwnSeparator).base();
  Text file(path.begin(), own_name);
  for (const Text& part : way) file += part + static_cast<char16_t>(fs::path::preferred_separator);
  file.pop_back();
  return RequireInFolder(link, path, file, files);
}

}  // namespace rdv::jet
