#include "tool_io.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <system_error>

#include "basis/text.h"
#include "disc_image.h"
#include "frame/file.h"

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
#else
File Open(const fs::path& path, const char* mode) { return File(std::fopen(path.c_str(), mode)); }
void MakeBinary(std::FILE*) {}
bool IsTerminal(std::FILE* stream) { return ::isatty(::fileno(stream)) != 0; }
#endif

std::string SystemMessage(int error) { return std::generic_category().message(error); }

[[noreturn]] void FailToRead(const std::string& where, const std::string& what) {
  throw Failure(ExitStatus::kFile, where, "cannot be read: " + what);
}

[[noreturn]] void FailToWrite(const std::string& where, const std::string& what) {
  throw Failure(ExitStatus::kFile, where, "cannot be written: " + what);
}

[[noreturn]] void FailToSave(const fs::path& path, const VESKA::Failure& why) {
  throw Failure(ExitStatus::kFile, NameOf(path), Describe(why));
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
  return VESKA::workshop::Visible({text.begin(), text.end()});
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
  return ReadInput(PathOf(file));
}

std::FILE* OpenToRead(const fs::path& path) {
  const std::string where = NameOf(path);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) FailToRead(where, "there is no such file");
  if (fs::is_directory(status)) FailToRead(where, "it is a folder");
  File file = Open(path, "rb");
  if (file == nullptr) FailToRead(where, SystemMessage(errno));
  return file.release();
}

Bytes ReadInput(const fs::path& path) {
  const std::string where = NameOf(path);
  const File input(OpenToRead(path));
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_regular_file(status) && fs::file_size(path, error) > kLargestInput && !error) {
    FailToRead(where, "it is too large");
  }
  return ReadStream(input.get(), where);
}

void CheckOutput(const std::string& file, bool force) {
  if (IsStandard(file)) return;
  const fs::path path = PathOf(file);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) FailToWrite(NameOf(path), "it is a folder");
  if (IsDisc(path)) {
    FailToWrite(NameOf(path), "it is a disc or the image of one, which nothing is written into");
  }
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
  VESKA::Failure why;
  if (!VESKA::WriteWholeFile(path, bytes.data(), bytes.size(), &why)) FailToSave(path, why);
}

void WriteOutput(const std::string& file, const std::string& text, bool force) {
  WriteOutput(file, {reinterpret_cast<const unsigned char*>(text.data()), text.size()}, force);
}

Bytes ImageOf(const std::string& file, VESKA::CVMGInfo& info) {
  try {
    return VESKA::workshop::ImageOf(info);
  } catch (const VESKA::workshop::Error& error) {
    throw Failure(ExitStatus::kFound, NameOfOutput(file), error.what());
  }
}

void SaveInfo(const std::string& file, VESKA::CVMGInfo& info, bool force) {
  CheckOutput(file, force);
  const Bytes image = ImageOf(file, info);
  if (IsStandard(file)) return WriteOutput(file, image, force);
  const fs::path path = PathOf(file);
  if (!info.SaveToFile(path)) FailToSave(path, info.GetFailure());
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
  std::cerr << "veska: " << VESKA::workshop::Visible(where.empty() ? what : where + ": " + what)
            << "\n";
}

bool OutputIsTerminal() { return IsTerminal(stdout); }
bool ErrorIsTerminal() { return IsTerminal(stderr); }

bool WantsColour() {
  const char* no_colour = std::getenv("NO_COLOR");
  return OutputIsTerminal() && (no_colour == nullptr || *no_colour == '\0');
}

}  // namespace veska_tool
