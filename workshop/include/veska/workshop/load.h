/// Between the bytes of a management file and the object that the library makes of them.
#pragma once

#include <veska/CVMGInfo.h>

#include <memory>
#include <span>
#include <vector>

#include "veska/workshop/error.h"

namespace VESKA::workshop {

/// Bytes that are owned.
using Bytes = std::vector<unsigned char>;

/// Loads all tables of a management file. Keeps nothing of `bytes`. Throws Error (kFile) that says
/// what is damaged. Takes time and memory in proportion to the bytes.
VESKA_WORKSHOP_API std::unique_ptr<CVMGInfo> Load(std::span<const unsigned char> bytes);

/// The image of an object as it stands, which should be completed (CVMGInfo::AutoComplete).
/// Throws Error (kFile) when it would not read back equal.
VESKA_WORKSHOP_API Bytes ImageOf(CVMGInfo& info);

}  // namespace VESKA::workshop
