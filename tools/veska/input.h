// What the inputs of a command stand for: a management file, standard input, the folder of a disc,
// the image of a disc or the device that it lies in.
#pragma once

#include <veska/workshop/locate.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc_image.h"
#include "tool_io.h"

namespace CLI {
class App;
}

namespace veska_tool {

/// How inputs are taken.
struct InputOptions {
  bool scan = false;  ///< as images, whose every sector is looked at
  bool all = false;   ///< all that is found in an image, not the first that is sound
  std::optional<std::uint64_t> at = {};  ///< what stands in an image at this byte
};

/// Adds --scan, --at and, for a command that takes more than one file, --all.
void DeclareInputOptions(CLI::App& app, InputOptions& options, bool takes_all);

inline constexpr const char* kInputHelp =
    "A management file, a disc's folder, the image of a disc or a device; - is standard input";

/// A management file that an input stands for.
struct Input {
  std::string name;  ///< for messages and rows: where it was found
  Bytes bytes = {};
  std::size_t order = 0;   ///< among all inputs of a command
  bool is_found = false;   ///< in a folder or an image; the argument names something else
  bool is_backup = false;  ///< what it is the backup of is missing or damaged
  Notes notes = {};        ///< what a person should know of how it was found
};

/// What a search of all sectors of an image finds, in order. Tells of its progress.
std::vector<VESKA::workshop::Located> LocateIn(DiscImage& image, const std::string& name);

/// Reads the management files that an input stands for, at least one. Throws Failure.
std::vector<Input> ReadInputs(const std::string& argument, const InputOptions& options);

/// The one management file that an input stands for, of several in an image the first that is
/// sound, else the first. Says its notes. Throws Failure; also when `output`, a file that is going
/// to be written, is the image that it was found in.
Input ReadOneInput(const std::string& argument, const InputOptions& options,
                   const std::string& output = "-");

/// Loads a management file, in full. Throws Failure that says what is wrong with it.
std::unique_ptr<VESKA::CVMGInfo> LoadInfo(const Input& input);

}  // namespace veska_tool
