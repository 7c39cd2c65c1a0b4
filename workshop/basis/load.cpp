#include "veska/workshop/load.h"

#include <memory>

namespace VESKA::workshop {
namespace {

[[noreturn]] void Fail(const CVMGInfo& info) {
  throw Error(ErrorKind::kFile, Describe(info.GetFailure()));
}

}  // namespace

std::unique_ptr<CVMGInfo> Load(std::span<const unsigned char> bytes) {
  static constexpr unsigned char kNothing = 0;
  auto info = std::make_unique<CVMGInfo>();
  // A load reads its image alone. That of an empty file may have no address.
  const unsigned char* image = bytes.empty() ? &kNothing : bytes.data();
  if (!info->LoadFromMemory(const_cast<unsigned char*>(image),
                            static_cast<unsigned long>(bytes.size()), CVMGInfo::kLoadAll)) {
    Fail(*info);
  }
  return info;
}

Bytes ImageOf(CVMGInfo& info) {
  unsigned long size = 0;
  unsigned char* const image = info.SaveToMemory(&size);
  if (image == nullptr) Fail(info);
  const auto free = [&info](unsigned char* data) { info.FreeData(data); };
  const std::unique_ptr<unsigned char, decltype(free)> owner(image, free);
  // The library saves what lacks the identifier, too, and does not load it again.
  CVMGInfo read;
  if (!read.LoadFromMemory(image, size, 0)) Fail(read);
  return {image, image + size};
}

}  // namespace VESKA::workshop
