#include "data/site_in_place.h"

#include <utility>

#include "runtime/error.h"

namespace rdv {
namespace {

const SiteInPlace* current = nullptr;

}  // namespace

SiteInPlace::SiteInPlace(Text suite_folder, ConnectionMaker connect)
    : suite_folder_(std::move(suite_folder)), connect_(std::move(connect)) {
  if (current) Raise(LanguageError::InvalidProcedureCall);
  current = this;
}

SiteInPlace::~SiteInPlace() {
  current = nullptr;
}

const SiteInPlace* SiteInPlace::Current() {
  return current;
}

}  // namespace rdv
