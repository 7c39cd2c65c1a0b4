// Bytes, counts and times as text for people.
#pragma once

#include <veska/workshop/text.h>

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

/// The bytes but the zeros at their end.
std::span<const unsigned char> WithoutZeros(std::span<const unsigned char> bytes);

/// In quotes, with a backslash before those within and before backslashes.
std::string Quoted(std::string_view text);

/// The bytes as text: printable ASCII as it is, all else as \xNN; the zeros at the end are left
/// out.
std::string Readable(std::span<const unsigned char> bytes);

/// The bytes of a text as `Readable` writes it, all else by `encode`; none where that fails, or a
/// backslash stands before anything but a backslash, a quote or x and two hex digits.
std::optional<std::string> Unescaped(std::string_view text, const EncodeText& encode = EncodeUtf8);

/// True for bytes that are all zero.
bool IsZero(std::span<const unsigned char> bytes);

/// The bytes decoded where they are text without control characters; else none.
std::optional<std::string> PlainText(std::span<const unsigned char> bytes,
                                     const DecodeText& decode);

/// That in quotes, else hex; "(empty)" for zeros.
std::string TextOrHex(std::span<const unsigned char> bytes, const DecodeText& decode);

/// "1 byte", "3 bytes".
std::string Plural(std::uint64_t count, const std::string& what);

/// `h:mm:ss.mmm`.
std::string TimeText(std::uint64_t milliseconds);

/// Hex with the readable text beside, 16 bytes a line, each line after `indent`; the first
/// `lines` lines at most.
std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines);

}  // namespace VESKA::workshop
