// What a user without rights of its own may do, also where the tests run as the superuser.
#pragma once

#ifndef _WIN32

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace rdv::test {

// While it lives the process has the rights of nobody, if it had all.
class AsAnybody {
 public:
  AsAnybody() {
    constexpr uid_t kNobody = 65534;
    if (before_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("no other user");
  }
  AsAnybody(const AsAnybody&) = delete;
  AsAnybody& operator=(const AsAnybody&) = delete;
  ~AsAnybody() {
    if (seteuid(before_) != 0) std::abort();
  }

 private:
  uid_t before_ = geteuid();
};

}  // namespace rdv::test

#endif
