/// Texts of a disc for people, in the character set that they were recorded in.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "veska/workshop/export.h"

namespace VESKA::workshop {

/// Makes UTF-8 of the bytes of a text without the zeros behind it; none when they are no text in
/// that character set.
using DecodeText = std::function<std::optional<std::string>(std::span<const unsigned char> bytes)>;

/// Makes the bytes of a text in UTF-8; none when that character set cannot hold it.
using EncodeText = std::function<std::optional<std::string>(std::string_view text)>;

/// The bytes as they are where they are UTF-8, which ASCII is as well; else none.
VESKA_WORKSHOP_API std::optional<std::string> DecodeUtf8(std::span<const unsigned char> bytes);

/// The text as it is, UTF-8 or not.
VESKA_WORKSHOP_API std::optional<std::string> EncodeUtf8(std::string_view text);

/// A text as people are shown it, on one line: decoded, with control characters in hexadecimal; or,
/// where that fails, its bytes as `Readable` gives them. The zeros at the end are left out.
VESKA_WORKSHOP_API std::string ShownText(std::span<const unsigned char> bytes,
                                         const DecodeText& decode = DecodeUtf8);

}  // namespace VESKA::workshop
