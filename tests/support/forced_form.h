/// The form in which the library converts records here: this program chooses in the library's
/// place.
#pragma once

#include <vector>

#include "frame/byte_order.h"

namespace VESKA {

/// All forms that this machine has.
std::vector<CopyForm> FormsOfTheMachine();

/// While it lives, the library converts in that form; in the widest one otherwise.
class ForcedForm {
 public:
  explicit ForcedForm(CopyForm form);
  ForcedForm(const ForcedForm&) = delete;
  ForcedForm& operator=(const ForcedForm&) = delete;
  ~ForcedForm();
};

}  // namespace VESKA
