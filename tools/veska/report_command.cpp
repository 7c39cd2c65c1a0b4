#include <veska/workshop/report.h>

#include <CLI/CLI.hpp>
#include <string>

#include "command.h"
#include "encoding.h"
#include "in_out.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using namespace VESKA::workshop;

struct Options : InOut {
  std::string field_rate;
  std::string encoding;
};

ExitStatus Run(const Options& options) {
  const DecodeText decode = Encoding(options.encoding).Decoder();
  CheckOutput(options.output, options.force);
  const Input input = ReadOneInput(options.input, options, options.output);
  const std::string name =
      IsStandard(options.input) ? input.name : NameOf(PathOf(input.name).filename());
  const FieldRate rate = options.field_rate.empty()   ? FieldRate::kGuessed
                         : options.field_rate == "50" ? FieldRate::k50
                                                      : FieldRate::k59_94;
  return Guarded(input.name, [&] {
    WriteOutput(options.output, Report(name, input.bytes, {rate, decode}), options.force);
    return ExitStatus::kDone;
  });
}

void DeclareOptions(CLI::App& app, Options& options) {
  DeclareDiscInOut(app, options, {"OUT.html", "The page to write"});
  app.add_option(
         "--field-rate", options.field_rate,
         "Video fields a second, 50 or 59.94; told from the clock values of the VOBs unless given")
      ->type_name("RATE")
      ->check(CLI::IsMember({"50", "59.94"}).description(""));
  DeclareEncoding(app, options.encoding);
}

}  // namespace

const Command kReportCommand = {
    "report", "Draw a management file as a web page",
    "The page holds all that it needs: a map of the file, the programs and cells to scale, the\n"
    "play lists, and the bitrate of every movie VOB over time. It works without scripts, in light\n"
    "and in dark.\n",
    "  veska report VR_MANGR.IFO -o report.html\n", Declare<Options, DeclareOptions, Run>};

}  // namespace veska_tool
