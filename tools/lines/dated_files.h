// The files that the tool leaves beside a database: a copy of it from before each change, and what
// is needed to take that change back. Both bear the time of the change, and the newest ten of each
// are kept.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace rdv::lines {

inline constexpr size_t kKeptFiles = 10;

inline constexpr std::string_view kCopyEnding = ".mdb";
inline constexpr std::string_view kRecordEnding = ".undo.json";

// "NewDB-20261122-074512-081" for "NewDB.mdb": the present time (UTC), or a little later where a
// file of the database bears that time or a later one, so that names sort as the changes came.
std::filesystem::path NextDatedStem(const std::filesystem::path& database);

// The database's files of one kind, the oldest first. Nothing else that lies there is among them.
std::vector<std::filesystem::path> DatedFiles(const std::filesystem::path& database,
                                              std::string_view ending);

// Removes what a maker of such a file left when it died. For whoever has the database to itself:
// then no maker is at work.
void RemoveDrafts(const std::filesystem::path& database);

// Removes all but the newest; what cannot be removed stays.
void RemoveOldest(const std::filesystem::path& database, std::string_view ending);

}  // namespace rdv::lines
