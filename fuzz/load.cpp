// A bounded load of any bytes. What loads is copied, edited, completed, written and loaded again.

#include <algorithm>

#include "edit_script.h"
#include "round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VESKA::CVMGInfo info;
  // The load takes a plain pointer and leaves what it points to alone.
  if (!info.LoadFromMemory(const_cast<unsigned char*>(data), static_cast<unsigned long>(size),
                           VESKA::CVMGInfo::kLoadAll)) {
    return 0;
  }
  VESKA::CVMGInfo edited = info;

  // The image's last bytes serve as the script too.
  const std::size_t script = std::min<std::size_t>(size, 64);
  fuzz::EditScript(data + (size - script), script).Apply(edited);
  fuzz::Require(round_trip::Survives(edited));
  fuzz::Require(round_trip::Survives(info));  // whatever became of its copy
  return 0;
}
