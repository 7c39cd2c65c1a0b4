#include "frame/byte_order.h"

namespace VESKA {

CopyForm ChosenCopyForm() {
  for (const CopyForm form : {CopyForm::kShuffle32, CopyForm::kShuffle16}) {
    if (MachineHas(form)) return form;
  }
  return CopyForm::kPlain;
}

}  // namespace VESKA
