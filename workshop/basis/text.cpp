#include "basis/text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace VESKA::workshop {

std::string Hex(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text.push_back(kDigits[byte >> 4U]);
    text.push_back(kDigits[byte & 15U]);
  }
  return text;
}

std::string Visible(const std::string& text) {
  std::string visible;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    const bool is_c1 = byte == 0xC2 && next >= 0x80 && next < 0xA0;  // in UTF-8
    if (byte >= 0x20 && byte != 0x7F && !is_c1) {
      visible.push_back(text[i]);
      continue;
    }
    visible += "\\x" + Hex({&byte, 1});
    if (is_c1) visible += "\\x" + Hex({&next, 1}), ++i;
  }
  return visible;
}

std::span<const unsigned char> WithoutZeros(std::span<const unsigned char> bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  return bytes;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '\\' || c == '"') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + '"';
}

std::string Readable(std::span<const unsigned char> bytes) {
  std::string text;
  for (const unsigned char byte : WithoutZeros(bytes)) {
    if (byte >= 0x20 && byte < 0x7F && byte != '\\' && byte != '"') {
      text.push_back(static_cast<char>(byte));
    } else if (byte == '\\' || byte == '"') {
      text += {'\\', static_cast<char>(byte)};
    } else {
      text += "\\x" + Hex({&byte, 1});
    }
  }
  return text;
}

std::optional<std::string> Unescaped(std::string_view text, const EncodeText& encode) {
  std::string bytes;
  while (!text.empty()) {
    const std::string_view run = text.substr(0, text.find('\\'));
    const std::optional<std::string> encoded = encode(run);
    if (!encoded) return std::nullopt;
    bytes += *encoded;
    text.remove_prefix(run.size());
    if (text.empty()) break;
    text.remove_prefix(1);
    unsigned byte = 0;
    if (text.starts_with('\\') || text.starts_with('"')) {
      bytes.push_back(text.front());
      text.remove_prefix(1);
    } else if (text.size() >= 3 && text[0] == 'x' &&
               std::from_chars(text.data() + 1, text.data() + 3, byte, 16).ptr == text.data() + 3) {
      bytes.push_back(static_cast<char>(byte));
      text.remove_prefix(3);
    } else {
      return std::nullopt;
    }
  }
  return bytes;
}

bool IsZero(std::span<const unsigned char> bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](unsigned char byte) { return byte == 0; });
}

std::string Plural(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string TimeText(std::uint64_t milliseconds) {
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%02llu:%02llu.%03llu",
                static_cast<unsigned long long>(milliseconds / 3600000),
                static_cast<unsigned long long>(milliseconds / 60000 % 60),
                static_cast<unsigned long long>(milliseconds / 1000 % 60),
                static_cast<unsigned long long>(milliseconds % 1000));
  return text;
}

std::string HexDump(std::span<const unsigned char> bytes, const std::string& indent,
                    std::size_t lines) {
  constexpr std::size_t kWidth = 16;
  std::string text;
  for (std::size_t at = 0; at < bytes.size() && lines-- > 0; at += kWidth) {
    const auto row = bytes.subspan(at, std::min(kWidth, bytes.size() - at));
    char offset[24];
    std::snprintf(offset, sizeof offset, "%06zx  ", at);
    text += indent + offset;
    std::string hex = Hex(row);
    hex.resize(2 * kWidth, ' ');
    for (std::size_t i = 0; i < hex.size(); i += 2) text += hex.substr(i, 2) + " ";
    text += " ";
    for (const unsigned char byte : row) {
      text.push_back(byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.');
    }
    text += "\n";
  }
  return text;
}

}  // namespace VESKA::workshop
