#include "basis/text.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {
namespace {

/// The bytes of the UTF-8 sequence that `bytes` begins with; 0 when it begins with none: overlong
/// forms, surrogates and numbers beyond U+10FFFF are none.
std::size_t SequenceAt(std::span<const unsigned char> bytes) {
  const unsigned char lead = bytes[0];
  if (lead < 0x80) return 1;
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() < size) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((bytes[i] & 0xC0U) != 0x80) return 0;
  }
  const unsigned char second = bytes[1];
  const bool is_overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool is_outside = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
  return is_overlong || is_outside ? 0 : size;
}

}  // namespace

std::optional<std::string> DecodeUtf8(std::span<const unsigned char> bytes) {
  for (auto rest = bytes; !rest.empty();) {
    const std::size_t size = SequenceAt(rest);
    if (size == 0) return {};
    rest = rest.subspan(size);
  }
  return std::string(bytes.begin(), bytes.end());
}

std::optional<std::string> EncodeUtf8(std::string_view text) { return std::string(text); }

std::optional<std::string> PlainText(std::span<const unsigned char> bytes,
                                     const DecodeText& decode) {
  std::optional<std::string> text = decode(WithoutZeros(bytes));
  return text && Visible(*text) == *text ? text : std::nullopt;
}

std::string TextOrHex(std::span<const unsigned char> bytes, const DecodeText& decode) {
  if (IsZero(bytes)) return "(empty)";
  const std::optional<std::string> text = PlainText(bytes, decode);
  return text ? Quoted(*text) : Hex(bytes);
}

std::string ShownText(std::span<const unsigned char> bytes, const DecodeText& decode) {
  const std::optional<std::string> text = decode(WithoutZeros(bytes));
  return text ? Visible(*text) : Readable(bytes);
}

}  // namespace VESKA::workshop
