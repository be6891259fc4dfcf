#include "rules/label_validator.h"

namespace rdv {
namespace {

class BuiltInLabelValidator : public LabelValidator {
 public:
  bool IsAcceptable(TextView label) override {
    return label.find(u'"') == TextView::npos && label.find(u"''") == TextView::npos;
  }
};

}  // namespace

std::unique_ptr<LabelValidator> MakeBuiltInLabelValidator() {
  return std::make_unique<BuiltInLabelValidator>();
}

}  // namespace rdv
