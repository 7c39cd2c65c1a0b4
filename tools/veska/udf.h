// Files in the UDF file system of a disc's image.
#pragma once

#include <optional>
#include <string_view>

#include "disc_image.h"
#include "tool_io.h"

namespace veska_tool {

/// The bytes of a file in a folder of the root, both found whatever their case; as far as they can
/// be read. None when the image has no UDF file system that can be read, or no such file, and where
/// the tool was built without a reader of UDF.
std::optional<Bytes> ReadFromUdf(DiscImage& image, std::string_view folder, std::string_view name);

}  // namespace veska_tool
