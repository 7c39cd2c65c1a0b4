#include "support/forced_form.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace VESKA {
namespace {

constexpr CopyForm kForms[] = {CopyForm::kPlain, CopyForm::kShuffle16, CopyForm::kShuffle32};

std::optional<CopyForm> forced;

}  // namespace

std::vector<CopyForm> FormsOfTheMachine() {
  std::vector<CopyForm> forms;
  std::copy_if(std::begin(kForms), std::end(kForms), std::back_inserter(forms), MachineHas);
  return forms;
}

ForcedForm::ForcedForm(CopyForm form) { forced = form; }
ForcedForm::~ForcedForm() { forced.reset(); }

// Linked in the place of the library's own.
CopyForm ChosenCopyForm() {
  if (forced.has_value()) return *forced;
  return *std::find_if(std::rbegin(kForms), std::rend(kForms), MachineHas);
}

}  // namespace VESKA
