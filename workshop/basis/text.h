// Bytes, counts and times as text for people.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace VESKA::workshop {

/// Two lower-case digits a byte.
std::string Hex(std::span<const unsigned char> bytes);

/// The text with its control characters as \xNN, so that it stays on its line.
std::string Visible(const std::string& text);

/// The bytes as text: printable ASCII as it is, all else as \xNN; the zeros at the end are left
/// out.
std::string Readable(std::span<const unsigned char> bytes);

/// The bytes of a text as `Readable` writes it, all else taken as it is; none where a backslash
/// stands before anything but a backslash, a quote or x and two hex digits.
std::optional<std::string> Unescaped(std::string_view text);

/// True for bytes that are all zero.
bool IsZero(std::span<const unsigned char> bytes);

/// Text in quotes where all of it is printable, else hex; "(empty)" for zeros.
std::string TextOrHex(std::span<const unsigned char> bytes);

/// "1 byte", "3 bytes".
std::string Plural(std::uint64_t count, const std::string& what);

/// `h:mm:ss.mmm`.
std::string TimeText(std::uint64_t milliseconds);

/// Hex with the readable text beside, 16 bytes a line, each line after `indent`; the first
/// `lines` lines at most.
std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines);

}  // namespace VESKA::workshop
