// Any words on any file that loads: an edit is refused and leaves the object as it was, or what it
// makes reads back and refers to no cell that is not there but where the file did before.

#include <veska/workshop/edit.h>
#include <veska/workshop/load.h>

#include <algorithm>
#include <string_view>

#include "check/examined.h"
#include "edit_script.h"

using namespace VESKA::workshop;

namespace {

std::size_t BadReferences(std::span<const unsigned char> image) {
  const Findings found = Examine(image, 0).findings;
  return found.Count(Code::kPointToNoCell) + found.Count(Code::kUserPointToNoCell);
}

/// The lines before an empty one, and what stands behind that.
std::vector<std::string> TakeWords(std::span<const unsigned char>& input) {
  std::vector<std::string> words;
  while (!input.empty()) {
    const auto end = std::find(input.begin(), input.end(), '\n');
    words.emplace_back(input.begin(), end);
    input = input.subspan(
        std::min<std::size_t>(static_cast<std::size_t>(end - input.begin()) + 1, input.size()));
    if (words.back().empty()) break;
  }
  if (!words.empty() && words.back().empty()) words.pop_back();
  return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const unsigned char> rest(data, size);
  const std::vector<std::string> words = TakeWords(rest);
  std::unique_ptr<VESKA::CVMGInfo> info;
  Bytes before;
  try {
    info = Load(rest);
    info->AutoComplete();
    before = ImageOf(*info);
  } catch (const Error&) {
    return 0;
  }
  try {
    Edit(*info, words);
  } catch (const Error& error) {
    fuzz::Require(error.Kind() == ErrorKind::kRequest);
    fuzz::Require(ImageOf(*info) == before);
    return 0;
  }
  fuzz::Require(BadReferences(ImageOf(*info)) <= BadReferences(before));
  return 0;
}
