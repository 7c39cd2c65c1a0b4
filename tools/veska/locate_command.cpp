#include <veska/workshop/locate.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

#include "command.h"
#include "disc_image.h"
#include "input.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options {
  std::vector<std::string> images;
  bool json = false;
};

const char* ConditionOf(const Located& located) {
  if (located.is_sound) return "sound";
  if (located.loads) return "damaged, loads";
  return located.can_be_salvaged ? "damaged, can be salvaged" : "damaged, nothing can be read";
}

void Print(const std::string& name, std::size_t number, const Located& located, std::ostream& out) {
  out << name << ": " << number << ": at byte " << located.offset << ", " << located.size
      << " bytes, " << ConditionOf(located);
  if (located.same_as != 0) out << ", the same as " << located.same_as;
  out << "\n";
}

void PrintJson(const std::string& name, std::size_t number, const Located& located,
               std::ostream& out) {
  const nlohmann::ordered_json object = {{"file", name},
                                         {"number", number},
                                         {"offset", located.offset},
                                         {"size", located.size},
                                         {"sound", located.is_sound},
                                         {"loads", located.loads},
                                         {"salvageable", located.can_be_salvaged},
                                         {"same_as", located.same_as}};
  out << object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

ExitStatus Locate(const std::string& argument, bool json) {
  DiscImage image(PathOf(argument));
  const std::string name = NameOfInput(argument);
  const std::vector<Located> found = LocateIn(image, name);
  for (std::size_t i = 0; i < found.size(); ++i) {
    json ? PrintJson(name, i + 1, found[i], std::cout) : Print(name, i + 1, found[i], std::cout);
  }
  FlushStandardOutput();
  if (!found.empty()) return ExitStatus::kDone;
  throw Failure(ExitStatus::kFound, name, "holds no management file in any of its sectors");
}

ExitStatus Run(const Options& options) {
  ExitStatus worst = ExitStatus::kDone;
  for (const std::string& image : options.images) {
    worst = Worse(worst, Guarded(NameOfInput(image), [&] { return Locate(image, options.json); }));
  }
  return worst;
}

void DeclareOptions(CLI::App& app, Options& options) {
  app.add_option("IMAGE", options.images, "Images of discs, or devices")->required();
  app.add_flag("--json", options.json, "Print a JSON object on a line for each file found");
}

}  // namespace

const Command kLocateCommand = {
    "locate", "Find management files in the image of a disc",
    "Looks at every sector of an image or a device, whatever has become of its file system, and\n"
    "prints where a management file begins, how long it is, how sound, and which of those before\n"
    "it is the same. A file that lies in several pieces is found with its first one only. Nothing\n"
    "is written into the image. The other commands take what was found with --at OFFSET.\n",
    "  veska locate disc.iso\n"
    "  veska salvage --at 1234944 disc.iso -o VR_MANGR.IFO\n",
    Declare<Options, DeclareOptions, Run>};

}  // namespace veska_tool
