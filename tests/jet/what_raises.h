// The text of what an action throws.
#pragma once

#include <exception>
#include <functional>
#include <string>

namespace rdv::jet {

inline const std::string kNothing = "nothing was raised";

inline std::string WhatRaises(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return kNothing;
}

}  // namespace rdv::jet
