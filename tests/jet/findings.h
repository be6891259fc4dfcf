// What a check found, as a text to compare with "".
#pragma once

#include <string>

#include "data/jet/check/check.h"
#include "data/jet/engine.h"

namespace rdv::jet {

inline std::string Findings(const CheckReport& report) {
  std::string text;
  for (const Finding& finding : report.findings)
    text += ToUtf8(KindName(finding.kind) + u": " + finding.text) + "\n";
  return text;
}

inline std::string Findings(Engine& engine) {
  const Engine::ReadScope scope(engine);
  return Findings(CheckFile(engine.File()));
}

}  // namespace rdv::jet
