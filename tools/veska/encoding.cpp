#include "encoding.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

#include "command.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <iconv.h>

#include <cerrno>
#endif

namespace veska_tool {
namespace {

constexpr const char* kUtf8 = "UTF-8";

#ifdef _WIN32

/// The code page that a name stands for: a name of the internet's, or "cp932", "windows-1252",
/// "932".
std::optional<UINT> CodePage(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c == '-' ? '_' : c;
  });
  static constexpr struct {
    const char* name;
    UINT page;
  } kPages[] = {{"utf_8", CP_UTF8},    {"shift_jis", 932}, {"sjis", 932},         {"euc_jp", 20932},
                {"gbk", 936},          {"gb2312", 936},    {"euc_kr", 949},       {"big5", 950},
                {"iso_8859_1", 28591}, {"latin1", 28591},  {"iso_8859_15", 28605}};
  for (const auto& known : kPages) {
    if (name == known.name) return known.page;
  }
  for (const char* prefix : {"windows_", "cp", ""}) {
    if (!name.starts_with(prefix)) continue;
    const char* digits = name.c_str() + std::strlen(prefix);
    const char* end = name.c_str() + name.size();
    UINT page = 0;
    const auto read = std::from_chars(digits, end, page);
    if (read.ec == std::errc() && read.ptr == end && IsValidCodePage(page) != 0) return page;
  }
  return {};
}

std::optional<std::string> Converted(const std::string& from, const std::string& to,
                                     const std::string& text) {
  const auto from_page = CodePage(from);
  const auto to_page = CodePage(to);
  if (!from_page || !to_page) return {};
  if (text.empty()) return "";
  const int size = static_cast<int>(text.size());
  const int wide_size =
      MultiByteToWideChar(*from_page, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
  if (wide_size <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(wide_size), L'\0');
  MultiByteToWideChar(*from_page, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), wide_size);
  BOOL is_lossy = FALSE;
  BOOL* const lossy = *to_page == CP_UTF8 ? nullptr : &is_lossy;
  const int bytes =
      WideCharToMultiByte(*to_page, 0, wide.data(), wide_size, nullptr, 0, nullptr, lossy);
  if (bytes <= 0 || is_lossy != FALSE) return {};
  std::string result(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(*to_page, 0, wide.data(), wide_size, result.data(), bytes, nullptr, nullptr);
  return result;
}

bool IsKnown(const std::string& name) { return CodePage(name).has_value(); }

#else

struct Close {
  void operator()(iconv_t* converter) const {
    iconv_close(*converter);
    delete converter;
  }
};

std::unique_ptr<iconv_t, Close> Open(const std::string& from, const std::string& to) {
  const iconv_t converter = iconv_open(to.c_str(), from.c_str());
  // NOLINTNEXTLINE(performance-no-int-to-ptr): what POSIX says of a failure
  if (converter == reinterpret_cast<iconv_t>(-1)) return nullptr;
  return std::unique_ptr<iconv_t, Close>(new iconv_t(converter));
}

std::optional<std::string> Converted(const std::string& from, const std::string& to,
                                     const std::string& text) {
  const auto converter = Open(from, to);
  if (converter == nullptr) return {};
  std::string in = text;
  char* next = in.data();
  std::size_t left = in.size();
  std::string result;
  bool is_flushing = false;  // a character set with a state has to return to its first one
  for (;;) {
    char buffer[256];
    char* out = buffer;
    std::size_t room = sizeof buffer;
    const std::size_t done = iconv(*converter, is_flushing ? nullptr : &next,
                                   is_flushing ? nullptr : &left, &out, &room);
    const int error = errno;
    result.append(buffer, out);
    if (done != static_cast<std::size_t>(-1)) {
      if (done != 0) return {};  // something was replaced
      if (is_flushing) return result;
      is_flushing = true;
    } else if (error != E2BIG) {
      return {};
    }
  }
}

bool IsKnown(const std::string& name) {
  return Open(name, kUtf8) != nullptr && Open(kUtf8, name) != nullptr;
}

#endif

}  // namespace

Encoding::Encoding(const std::string& name) : name_(name) {
  if (!name_.empty() && !IsKnown(name_)) {
    throw Failure(ExitStatus::kUsage, "", "no character set is named " + name_);
  }
}

std::optional<std::string> Encoding::Decode(std::span<const unsigned char> bytes) const {
  if (name_.empty()) return VESKA::workshop::DecodeUtf8(bytes);
  return Converted(name_, kUtf8, std::string(bytes.begin(), bytes.end()));
}

std::optional<std::string> Encoding::Encode(const std::string& text) const {
  return name_.empty() ? text : Converted(kUtf8, name_, text);
}

VESKA::workshop::DecodeText Encoding::Decoder() const {
  return
      [encoding = *this](std::span<const unsigned char> bytes) { return encoding.Decode(bytes); };
}

VESKA::workshop::EncodeText Encoding::Encoder() const {
  return [encoding = *this](std::string_view text) { return encoding.Encode(std::string(text)); };
}

void DeclareEncoding(CLI::App& app, std::string& name) {
  app.add_option("--encoding", name,
                 "The character set of the disc's texts, such as SHIFT_JIS; without it what is "
                 "UTF-8 is taken as such, and all else shown as bytes")
      ->type_name("NAME");
}

}  // namespace veska_tool
