#include "runtime/keyed_collection.h"

#include "runtime/error.h"

namespace rdv {

void KeyedCollection::Add(Text item, Text key) {
  if (Contains(key)) Raise(LanguageError::KeyAlreadyInCollection);
  entries_.emplace_back(std::move(key), std::move(item));
}

const Text& KeyedCollection::Item(TextView key) const {
  const Text* item = Find(key);
  if (item == nullptr) Raise(LanguageError::InvalidProcedureCall);
  return *item;
}

// Name lists have some dozen entries: a scan is faster than a hashed key.
const Text* KeyedCollection::Find(TextView key) const {
  for (const auto& [entry_key, item] : entries_) {
    if (EqualsIgnoringCase(entry_key, key)) return &item;
  }
  return nullptr;
}

}  // namespace rdv
