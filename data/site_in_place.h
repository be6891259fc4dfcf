// One site in the place of the one that the machine names: for programs that are told which site to
// work on, and that do much in one open file.
#pragma once

#include <functional>
#include <memory>

#include "data/connection.h"
#include "runtime/text.h"

namespace rdv {

// While the object lives, the suite folder is the one given, without a lookup, and every DataBase
// takes its connection from the maker, whatever the route. One at a time, on one thread.
class SiteInPlace {
 public:
  using ConnectionMaker = std::function<std::unique_ptr<Connection>()>;

  // The folder ends with a separator; the settings file is looked for in it.
  SiteInPlace(Text suite_folder, ConnectionMaker connect);
  SiteInPlace(const SiteInPlace&) = delete;
  SiteInPlace& operator=(const SiteInPlace&) = delete;
  ~SiteInPlace();

  // Null while there is none.
  static const SiteInPlace* Current();

  const Text& SuiteFolder() const { return suite_folder_; }
  std::unique_ptr<Connection> Connect() const { return connect_(); }

 private:
  const Text suite_folder_;
  const ConnectionMaker connect_;
};

}  // namespace rdv
