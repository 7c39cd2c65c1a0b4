#include "input.h"

#include <veska/workshop/locate.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "disc_image.h"
#include "names.h"
#include "progress.h"
#include "udf.h"

namespace veska_tool {
namespace {

namespace fs = std::filesystem;
using VESKA::workshop::Located;

/// No management file of an honest disc is as large, and no image as small.
constexpr std::uint64_t kLeastImage = std::uint64_t{1} << 20U;

using ReadNamed = std::function<std::optional<Bytes>(std::string_view name)>;

/// Why a file does not load; empty when it does.
std::string WhyDamaged(const Bytes& bytes) {
  try {
    (void)VESKA::workshop::Load(bytes);
    return "";
  } catch (const VESKA::workshop::Error& error) {
    return error.what();
  }
}

/// The management file of a disc, or its backup where that is missing or damaged and the backup is
/// not. None when there is neither.
std::optional<Input> FromDisc(const std::string& where, const ReadNamed& read) {
  const std::string name = where + std::string(kManagementFile);
  std::optional<Bytes> first = read(kManagementFile);
  const std::string problem = first ? WhyDamaged(*first) : "there is no such file";
  if (problem.empty()) return Input{.name = name, .bytes = std::move(*first)};
  if (std::optional<Bytes> backup = read(kBackupFile); backup && WhyDamaged(*backup).empty()) {
    Note note{name, problem + "; " + std::string(kBackupFile) + " beside it is read instead"};
    return Input{.name = where + std::string(kBackupFile),
                 .bytes = std::move(*backup),
                 .is_backup = true,
                 .notes = {std::move(note)}};
  } else if (!first && backup) {
    return Input{
        .name = where + std::string(kBackupFile), .bytes = std::move(*backup), .is_backup = true};
  }
  if (!first) return {};
  return Input{.name = name, .bytes = std::move(*first)};
}

// --- Folders
// ---------------------------------------------------------------------------------------

/// The entry of a folder with that name, whatever its case; the one of the very name before others.
std::optional<fs::path> EntryOf(const fs::path& folder, std::string_view name) {
  std::error_code error;
  std::optional<fs::path> found;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string there = entry->path().filename().string();
    if (there == name) return entry->path();
    if (SameButForCase(there, name)) found = entry->path();
  }
  if (error) throw Failure(ExitStatus::kFile, NameOf(folder), "cannot be read: " + error.message());
  return found;
}

Input FromFolder(const std::string& argument) {
  const fs::path folder = PathOf(argument);
  const fs::path inside = EntryOf(folder, kDiscFolder).value_or(folder);
  const auto read = [&inside](std::string_view name) -> std::optional<Bytes> {
    const std::optional<fs::path> file = EntryOf(inside, name);
    if (!file) return {};
    return ReadInput(*file);
  };
  if (auto input = FromDisc(NameOf(inside / ""), read)) return std::move(*input);
  throw Failure(
      ExitStatus::kFile, NameOf(folder),
      "is a folder that holds no " + std::string(kDiscFolder) + "/" + std::string(kManagementFile));
}

// --- Images
// ----------------------------------------------------------------------------------------

Bytes ReadAt(DiscImage& image, const Located& located) {
  return VESKA::workshop::ReadLocated(
      [&image](std::uint64_t offset, std::span<unsigned char> to) {
        return image.Read(offset, to);
      },
      located);
}

/// What a search finds, each only once.
std::vector<Located> Distinct(DiscImage& image, const std::string& name) {
  std::vector<Located> found = LocateIn(image, name);
  std::erase_if(found, [](const Located& one) { return one.same_as != 0 || !one.can_be_salvaged; });
  return found;
}

Input InputAt(DiscImage& image, const std::string& name, const Located& located) {
  return {.name = name + " at " + std::to_string(located.offset), .bytes = ReadAt(image, located)};
}

std::vector<Input> FromSearch(DiscImage& image, const std::string& name, bool wants_all) {
  const std::vector<Located> found = Distinct(image, name);
  if (found.empty()) {
    throw Failure(ExitStatus::kFound, name, "holds no management file in any of its sectors");
  }
  std::vector<Input> inputs;
  if (wants_all) {
    for (const Located& one : found) inputs.push_back(InputAt(image, name, one));
    return inputs;
  }
  const auto sound =
      std::find_if(found.begin(), found.end(), [](const Located& one) { return one.is_sound; });
  inputs.push_back(InputAt(image, name, sound != found.end() ? *sound : found.front()));
  if (found.size() > 1) {
    inputs.front().notes.push_back(
        {name, "holds " + std::to_string(found.size()) + " different management files; " +
                   inputs.front().name.substr(name.size() + 1) +
                   " is taken (veska locate lists them, --at takes another)"});
  }
  return inputs;
}

std::vector<Input> FromPlace(DiscImage& image, const std::string& name, std::uint64_t offset) {
  const Located located = VESKA::workshop::LocatedAt(
      [&image](std::uint64_t at, std::span<unsigned char> to) { return image.Read(at, to); },
      offset);
  if (located.size == 0) {
    throw Failure(ExitStatus::kFound, name,
                  "no management file begins at byte " + std::to_string(offset));
  }
  return {InputAt(image, name, located)};
}

std::vector<Input> FromImage(const std::string& argument, const InputOptions& options) {
  DiscImage image(PathOf(argument));
  const std::string name = NameOfInput(argument);
  if (options.at) return FromPlace(image, name, *options.at);
  if (!options.scan) {
    const auto read = [&image](std::string_view file) {
      return ReadFromUdf(image, kDiscFolder, file);
    };
    if (auto input = FromDisc(name + ":" + std::string(kDiscFolder) + "/", read)) {
      return {std::move(*input)};
    }
  }
  return FromSearch(image, name, options.all);
}

/// True when what is no management file looks like the image of a disc: by the marks of its file
/// system, or by its size alone.
bool IsImage(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_block_file(status)) return true;
  if (!fs::is_regular_file(status)) return false;
  DiscImage file(path);
  std::array<unsigned char, 12> start{};
  file.Read(0, start);
  if (VESKA::workshop::BeginsLikeOne(start)) return false;
  return file.Size() >= kLeastImage || HasVolumeMarks(file);
}

}  // namespace

std::vector<Located> LocateIn(DiscImage& image, const std::string& name) {
  constexpr std::uint64_t kMegabyte = 1'000'000;
  Progress progress(image.Size() / kMegabyte, "MB");
  const auto read = [&image](std::uint64_t offset, std::span<unsigned char> to) {
    return image.Read(offset, to);
  };
  std::vector<Located> found = VESKA::workshop::Locate(read, [&progress](std::uint64_t bytes) {
    progress.Show(bytes / kMegabyte);
    return true;
  });
  progress.Erase();
  if (image.UnreadableSectors() != 0) {
    Message(name, std::to_string(image.UnreadableSectors()) +
                      " of its sectors cannot be read, and count as zeros");
  }
  return found;
}

void DeclareInputOptions(CLI::App& app, InputOptions& options, bool takes_all) {
  app.add_flag("--scan", options.scan,
               "Look at every sector of an image, whatever its file system says");
  app.add_option("--at", options.at, "Take what begins at this byte of an image")
      ->type_name("OFFSET");
  if (takes_all) {
    app.add_flag("--all", options.all, "Take all that is found in an image, not the first");
  }
}

std::vector<Input> ReadInputs(const std::string& argument, const InputOptions& options) {
  const bool wants_image = options.scan || options.at;
  if (!IsStandard(argument)) {
    std::error_code error;
    const fs::path path = PathOf(argument);
    std::vector<Input> inputs;
    if (fs::is_directory(path, error)) {
      inputs.push_back(FromFolder(argument));
    } else if (wants_image || IsImage(path)) {
      inputs = FromImage(argument, options);
    }
    for (Input& input : inputs) input.is_found = true;
    if (!inputs.empty()) return inputs;
  }
  return {{.name = NameOfInput(argument), .bytes = ReadInput(argument)}};
}

Input ReadOneInput(const std::string& argument, const InputOptions& options,
                   const std::string& output) {
  Input input = std::move(ReadInputs(argument, options).front());
  std::error_code error;
  if (input.is_found && !IsStandard(output) &&
      fs::equivalent(PathOf(argument), PathOf(output), error)) {
    throw Failure(
        ExitStatus::kFile, NameOfOutput(output),
        "cannot be written: it is the image that was read, which nothing is written into");
  }
  for (const Note& note : input.notes) Message(note.where, note.what);
  return input;
}

std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const Input& input) {
  try {
    return VESKA::workshop::Load(input.bytes);
  } catch (const VESKA::workshop::Error& error) {
    throw Failure(ExitStatus::kFound, input.name, error.what());
  }
}

}  // namespace veska_tool
