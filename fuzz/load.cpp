// A bounded load of any bytes, in each form of conversion that the machine has. What loads is
// copied, edited, completed, written and loaded again.

#include <algorithm>

#include "edit_script.h"
#include "support/forced_form.h"
#include "support/round_trip.h"

namespace {

void Load(const std::uint8_t* data, std::size_t size) {
  VESKA::CVMGInfo info;
  // The load takes a plain pointer and leaves what it points to alone.
  if (!info.LoadFromMemory(const_cast<unsigned char*>(data), static_cast<unsigned long>(size),
                           VESKA::CVMGInfo::kLoadAll)) {
    return;
  }
  VESKA::CVMGInfo edited = info;

  // The image's last bytes serve as the script too.
  const std::size_t script = std::min<std::size_t>(size, 64);
  fuzz::EditScript(data + (size - script), script).Apply(edited);
  fuzz::Require(round_trip::Survives(edited));
  fuzz::Require(round_trip::Survives(info));  // whatever became of its copy
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const VESKA::CopyForm form : VESKA::FormsOfTheMachine()) {
    const VESKA::ForcedForm forced(form);
    Load(data, size);
  }
  return 0;
}
