// Names of files as discs have them.
#pragma once

#include <algorithm>
#include <string_view>

namespace veska_tool {

inline constexpr std::string_view kDiscFolder = "DVD_RTAV";
inline constexpr std::string_view kManagementFile = "VR_MANGR.IFO";
inline constexpr std::string_view kBackupFile = "VR_MANGR.BUP";

/// True for names that are equal but for the case of their ASCII letters.
inline bool SameButForCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [lower](char one, char other) { return lower(one) == lower(other); });
}

}  // namespace veska_tool
