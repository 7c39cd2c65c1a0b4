// A salvage of any bytes: what it makes is a sound file, of which nothing more can be lost.

#include <veska/workshop/check.h>
#include <veska/workshop/load.h>
#include <veska/workshop/salvage.h>

#include "edit_script.h"

namespace {

using namespace VESKA::workshop;

/// A count of what is lost is told, and nothing is kept that was not counted.
bool IsTold(const Salvaged& salvaged) {
  bool is_complete = true;
  for (const SalvagedTable& table : salvaged.tables) {
    is_complete = is_complete && !table.is_lost && table.losses.empty();
    for (const KeptItems& items : table.counts) {
      fuzz::Require(items.kept <= items.all);
      is_complete = is_complete && items.kept == items.all;
    }
  }
  return is_complete || !salvaged.is_whole;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Salvaged salvaged = Salvage({data, size});
  fuzz::Require(!ToText(salvaged).empty());
  fuzz::Require(IsTold(salvaged));
  fuzz::Require(salvaged.info != nullptr || !salvaged.is_whole);
  if (salvaged.info == nullptr) return 0;

  const Bytes image = ImageOf(*salvaged.info);  // throws where it would not read back
  const Examination examination = Check(image);
  fuzz::Require(examination.loads && examination.errors == 0);
  const Salvaged again = Salvage(image);
  fuzz::Require(again.is_whole && *again.info == *salvaged.info);
  return 0;
}
