// Any edits of a new object, which is then completed, written and loaded again.

#include "edit_script.h"
#include "support/round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VESKA::CVMGInfo info;
  std::memcpy(info.GetMAT().GetHeader().VMG_ID, "DVD_RTR_VMG0", 12);
  fuzz::EditScript(data, size).Apply(info);
  fuzz::Require(round_trip::Survives(info));
  return 0;
}
