// The keyed collection that holds a name list: captions in the order they were added, each found
// by its key. Keys are compared without regard to case.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "runtime/text.h"

namespace rdv {

class KeyedCollection {
 public:
  // Raises 457 when the key is taken; the collection is unchanged then.
  void Add(Text item, Text key);

  // Raises 5 when there is no such key. The reference lives until the collection changes.
  const Text& Item(TextView key) const;

  bool Contains(TextView key) const { return Find(key) != nullptr; }
  size_t Count() const { return entries_.size(); }
  void Clear() { entries_.clear(); }

 private:
  const Text* Find(TextView key) const;

  std::vector<std::pair<Text, Text>> entries_;  // key, item
};

}  // namespace rdv
