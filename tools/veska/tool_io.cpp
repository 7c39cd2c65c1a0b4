#include "tool_io.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>

#include "frame/file.h"
#include "image_bytes.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>
// Behind windows.h, which it needs.
#include <shellapi.h>
#else
#include <unistd.h>
#endif

namespace veska_tool {
namespace {

namespace fs = std::filesystem;

/// No honest management file is near this size, and a stream does not tell its own.
constexpr std::size_t kLargestInput = std::size_t{256} << 20U;
constexpr std::size_t kChunk = std::size_t{1} << 16U;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

#ifdef _WIN32
File Open(const fs::path& path, const char* mode) {
  return File(::_wfopen(path.c_str(), std::wstring(mode, mode + std::strlen(mode)).c_str()));
}
void MakeBinary(std::FILE* stream) { ::_setmode(::_fileno(stream), _O_BINARY); }
bool IsTerminal(std::FILE* stream) { return ::_isatty(::_fileno(stream)) != 0; }
void ForgetErrors() { ::SetLastError(ERROR_SUCCESS); }
std::error_code LastError() { return {static_cast<int>(::GetLastError()), std::system_category()}; }
#else
File Open(const fs::path& path, const char* mode) { return File(std::fopen(path.c_str(), mode)); }
void MakeBinary(std::FILE*) {}
bool IsTerminal(std::FILE* stream) { return ::isatty(::fileno(stream)) != 0; }
void ForgetErrors() { errno = 0; }
std::error_code LastError() { return {errno, std::generic_category()}; }
#endif

std::string SystemMessage(int error) { return std::generic_category().message(error); }

[[noreturn]] void FailToRead(const std::string& where, const std::string& what) {
  throw Failure(ExitStatus::kFile, where, "cannot be read: " + what);
}

[[noreturn]] void FailToWrite(const std::string& where, const std::string& what) {
  throw Failure(ExitStatus::kFile, where, "cannot be written: " + what);
}

/// By the reason that the system gave since `ForgetErrors`, if it gave one.
[[noreturn]] void FailToWrite(const fs::path& path) {
  const std::error_code error = LastError();
  FailToWrite(NameOf(path), error ? error.message() : "saving failed");
}

Bytes ReadStream(std::FILE* stream, const std::string& where) {
  Bytes bytes;
  for (std::size_t count = kChunk; count == kChunk;) {
    const std::size_t before = bytes.size();
    if (before > kLargestInput) FailToRead(where, "it is too large");
    bytes.resize(before + kChunk);
    count = std::fread(bytes.data() + before, 1, kChunk, stream);
    bytes.resize(before + count);
  }
  if (std::ferror(stream) != 0) FailToRead(where, SystemMessage(errno));
  return bytes;
}

bool Loads(VESKA::CVMGInfo& info, Bytes& bytes, unsigned flags) {
  return info.LoadFromMemory(bytes.data(), static_cast<unsigned long>(bytes.size()),
                             static_cast<unsigned char>(flags));
}

/// Which part of a file that begins like a management file does not load.
std::string WhatIsDamaged(Bytes& bytes) {
  using VESKA::CVMGInfo;
  static constexpr struct {
    unsigned flag;
    const char* name;
  } kTables[] = {{0, "header, the play lists or the original program chain"},
                 {CVMGInfo::kLoadMovie, "movie table"},
                 {CVMGInfo::kLoadStill, "still picture table"},
                 {CVMGInfo::kLoadUserChains, "user-defined program chains"},
                 {CVMGInfo::kLoadTexts, "text data"},
                 {CVMGInfo::kLoadManufacturers, "manufacturer table"}};
  CVMGInfo info;
  for (const auto& table : kTables) {
    if (!Loads(info, bytes, table.flag)) {
      return std::string("damaged: the ") + table.name + " cannot be read within the file's " +
             std::to_string(bytes.size()) + " bytes";
    }
  }
  return "damaged: its tables take more memory than a file of " + std::to_string(bytes.size()) +
         " bytes may";
}

}  // namespace

std::vector<std::string> Arguments(int argc, char** argv) {
#ifdef _WIN32
  (void)argc;
  (void)argv;
  int count = 0;
  wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; wide != nullptr && i < count; ++i) {
    const std::u8string text = fs::path(wide[i]).u8string();
    arguments.emplace_back(text.begin(), text.end());
  }
  ::LocalFree(wide);
  return arguments;
#else
  return {argv + std::min(argc, 1), argv + argc};
#endif
}

fs::path PathOf(const std::string& argument) {
#ifdef _WIN32
  return {std::u8string(argument.begin(), argument.end())};
#else
  return {argument};
#endif
}

std::string NameOf(const fs::path& path) {
#ifdef _WIN32
  const std::u8string text = path.u8string();
#else
  const std::string text = path.string();
#endif
  return Visible({text.begin(), text.end()});
}

bool IsStandard(const std::string& argument) { return argument == "-"; }

std::string NameOfInput(const std::string& argument) {
  return IsStandard(argument) ? "standard input" : NameOf(PathOf(argument));
}

std::string NameOfOutput(const std::string& argument) {
  return IsStandard(argument) ? "standard output" : NameOf(PathOf(argument));
}

Bytes ReadInput(const std::string& file) {
  if (IsStandard(file)) {
    MakeBinary(stdin);
    return ReadStream(stdin, "standard input");
  }
  const fs::path path = PathOf(file);
  const std::string where = NameOf(path);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) FailToRead(where, "there is no such file");
  if (fs::is_directory(status)) FailToRead(where, "it is a folder");
  if (fs::is_regular_file(status) && fs::file_size(path, error) > kLargestInput && !error) {
    FailToRead(where, "it is too large");
  }
  const File input = Open(path, "rb");
  if (input == nullptr) FailToRead(where, SystemMessage(errno));
  return ReadStream(input.get(), where);
}

void CheckOutput(const std::string& file, bool force) {
  if (IsStandard(file)) return;
  const fs::path path = PathOf(file);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) FailToWrite(NameOf(path), "it is a folder");
  if (!force && fs::is_regular_file(status)) {
    throw Failure(ExitStatus::kFile, NameOf(path), "exists already (--force overwrites it)");
  }
}

void WriteOutput(const std::string& file, std::span<const unsigned char> bytes, bool force) {
  if (IsStandard(file)) {
    FlushStandardOutput();
    MakeBinary(stdout);
    std::cout.write(reinterpret_cast<const char*>(bytes.data()),
                    static_cast<std::streamsize>(bytes.size()));
    return FlushStandardOutput();
  }
  CheckOutput(file, force);
  const fs::path path = PathOf(file);
  ForgetErrors();
  if (!VESKA::WriteWholeFile(path, bytes.data(), bytes.size())) FailToWrite(path);
}

void WriteOutput(const std::string& file, const std::string& text, bool force) {
  WriteOutput(file, {reinterpret_cast<const unsigned char*>(text.data()), text.size()}, force);
}

std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const std::string& file) {
  Bytes bytes = ReadInput(file);
  return LoadInfo(file, bytes);
}

std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const std::string& file, Bytes& bytes) {
  const auto fail = [&file](const std::string& what) {
    throw Failure(ExitStatus::kFound, NameOfInput(file), what);
  };
  if (bytes.empty()) fail("not a management file: it is empty");
  if (!std::ranges::equal(ImageBytes(bytes).At(0, kIdentifier.size()), kIdentifier)) {
    fail("not a management file: it does not begin with " + std::string(kIdentifier));
  }
  auto info = std::make_unique<VESKA::CVMGInfo>();
  if (!Loads(*info, bytes, VESKA::CVMGInfo::kLoadAll)) fail(WhatIsDamaged(bytes));
  return info;
}

Bytes ImageOf(const std::string& file, VESKA::CVMGInfo& info) {
  Bytes image(info.GetDataSize());
  info.GetData(image.data());
  VESKA::CVMGInfo read;
  if (!Loads(read, image, VESKA::CVMGInfo::kLoadAll) || !(read == info)) {
    throw Failure(ExitStatus::kFound, NameOfOutput(file),
                  "is not written: the format cannot hold all of it");
  }
  return image;
}

void SaveInfo(const std::string& file, VESKA::CVMGInfo& info, bool force) {
  CheckOutput(file, force);
  const Bytes image = ImageOf(file, info);
  if (IsStandard(file)) return WriteOutput(file, image, force);
  ForgetErrors();
  const fs::path path = PathOf(file);
  if (!info.SaveToFile(path)) FailToWrite(path);
}

void FlushStandardOutput() {
  std::cout.flush();
  if (!std::cout || std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::cout.clear();
    std::clearerr(stdout);
    FailToWrite("standard output", SystemMessage(errno != 0 ? errno : EIO));
  }
}

void Message(const std::string& where, const std::string& what) {
  std::cerr << "veska: " << Visible(where.empty() ? what : where + ": " + what) << "\n";
}

bool OutputIsTerminal() { return IsTerminal(stdout); }
bool ErrorIsTerminal() { return IsTerminal(stderr); }

bool WantsColour() {
  const char* no_colour = std::getenv("NO_COLOR");
  return OutputIsTerminal() && (no_colour == nullptr || *no_colour == '\0');
}

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

std::string Readable(std::span<const unsigned char> bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  std::string text;
  for (const unsigned char byte : bytes) {
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

}  // namespace veska_tool
