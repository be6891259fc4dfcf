#include "data/site_in_place.h"

#include <utility>

#include "runtime/error.h"

namespace rdv {
namespace {

// The process has one at most.
const SiteInPlace*& Installed() {
  static const SiteInPlace* installed = nullptr;
  return installed;
}

}  // namespace

SiteInPlace::SiteInPlace(Text suite_folder, ConnectionMaker connect)
    : suite_folder_(std::move(suite_folder)), connect_(std::move(connect)) {
  if (Installed()) Raise(LanguageError::InvalidProcedureCall);
  Installed() = this;
}

SiteInPlace::~SiteInPlace() {
  Installed() = nullptr;
}

const SiteInPlace* SiteInPlace::Current() {
  return Installed();
}

}  // namespace rdv
