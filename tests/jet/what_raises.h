// The text of what an action throws.
#pragma once

#include <exception>
#include <functional>
#include <string>

namespace rdv::jet {

inline std::string WhatRaises(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing was raised";
}

}  // namespace rdv::jet
