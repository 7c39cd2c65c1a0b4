// Any text as a JSON document: what it describes is the same when it is written and read back.

#include <veska/workshop/json.h>
#include <veska/workshop/load.h>

#include "edit_script.h"

using namespace VESKA::workshop;

namespace {

/// The image of an object; empty where the format cannot hold all of it.
Bytes ImageOrNone(VESKA::CVMGInfo& info) {
  try {
    return ImageOf(info);
  } catch (const Error& error) {
    fuzz::Require(error.Kind() == ErrorKind::kFile);
    return {};
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::unique_ptr<VESKA::CVMGInfo> info;
  try {
    info = FromJson({reinterpret_cast<const char*>(data), size});
  } catch (const Error& error) {
    fuzz::Require(error.Kind() == ErrorKind::kDocument);
    return 0;
  }
  const auto form = size % 2 == 0 ? JsonForm::kPretty : JsonForm::kLine;
  const auto again = FromJson(ToJson(*info, form));
  fuzz::Require(*again == *info);
  fuzz::Require(ImageOrNone(*again) == ImageOrNone(*info));
  return 0;
}
