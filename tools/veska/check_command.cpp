#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "command.h"
#include "field_text.h"
#include "files.h"
#include "image_check.h"
#include "tool_io.h"

namespace veska_tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kCheckVersion = 1;
constexpr unsigned kDefaultLimit = 20;

struct Options {
  std::vector<std::string> files;
  bool json = false;
  bool warnings_as_errors = false;
  unsigned limit = kDefaultLimit;
};

std::string Address(std::uint64_t offset) {
  constexpr unsigned kDigits = 6;
  std::string digits;
  for (unsigned i = 0; i < kDigits || offset != 0; ++i, offset >>= 4U) {
    digits.insert(digits.begin(), "0123456789abcdef"[offset & 0xFU]);
  }
  return "0x" + digits;
}

// --- For people ----------------------------------------------------------------------------------

void PrintFinding(std::ostream& out, const std::string& file, const Finding& finding) {
  const CatalogueEntry& entry = EntryOf(finding.code);
  out << file << ":" << Address(finding.offset) << ": " << NameOf(entry.severity) << " "
      << NameOf(finding.code) << ": " << finding.path << ": " << entry.title;
  if (!finding.stands.empty()) out << ": " << finding.stands;
  if (!finding.right.empty()) out << "; right: " << finding.right;
  out << "\n";
}

/// What can be read of a file that does not load.
void PrintTables(std::ostream& out, const std::string& file, std::span<const TableSummary> tables) {
  out << file << ": does not load; what can be read of it:\n";
  for (const TableSummary& table : tables) {
    out << "  " << NameOf(table.table) << ": " << NameOf(table.condition);
    if (table.items != 0) out << ", " << table.readable << " of " << table.items << " items";
    out << "\n";
  }
}

void Print(std::ostream& out, const std::string& file, const CheckResult& result) {
  const Findings& findings = result.findings;
  for (const Finding& finding : findings.Kept()) PrintFinding(out, file, finding);
  for (const CatalogueEntry& entry : Catalogue()) {
    const std::size_t omitted = findings.Omitted(entry.code);
    if (omitted == 0) continue;
    out << file << ": " << NameOf(entry.severity) << " " << NameOf(entry.code) << ": "
        << Plural(omitted, "more finding") << ": " << entry.title << "\n";
  }
  if (!result.loads) PrintTables(out, file, result.tables);
  const std::size_t errors = findings.Count(Severity::kError);
  const std::size_t warnings = findings.Count(Severity::kWarning);
  const std::size_t notes = findings.Count(Severity::kNote);
  if (errors + warnings + notes == 0) {
    out << file << ": nothing found\n";
  } else {
    out << file << ": " << Plural(errors, "error") << ", " << Plural(warnings, "warning") << ", "
        << Plural(notes, "note") << "\n";
  }
}

// --- For programs --------------------------------------------------------------------------------

Json ToJson(const Finding& finding) {
  const CatalogueEntry& entry = EntryOf(finding.code);
  return {{"code", NameOf(finding.code)},   {"severity", NameOf(entry.severity)},
          {"table", NameOf(finding.table)}, {"path", finding.path},
          {"offset", finding.offset},       {"title", entry.title},
          {"stands", finding.stands},       {"right", finding.right}};
}

Json ToJson(const TableSummary& table) {
  return {{"table", NameOf(table.table)}, {"condition", NameOf(table.condition)},
          {"offset", table.offset},       {"size", table.size},
          {"items", table.items},         {"readable", table.readable}};
}

Json ToJson(const std::string& file, std::size_t size, const CheckResult& result) {
  const Findings& findings = result.findings;
  Json json{{"file", file},
            {"size", size},
            {"loads", result.loads},
            {"errors", findings.Count(Severity::kError)},
            {"warnings", findings.Count(Severity::kWarning)},
            {"notes", findings.Count(Severity::kNote)},
            {"tables", Json::array()},
            {"findings", Json::array()},
            {"omitted", Json::object()}};
  for (const TableSummary& table : result.tables) json["tables"].push_back(ToJson(table));
  for (const Finding& finding : findings.Kept()) json["findings"].push_back(ToJson(finding));
  for (const CatalogueEntry& entry : Catalogue()) {
    if (const auto omitted = findings.Omitted(entry.code)) {
      json["omitted"][NameOf(entry.code)] = omitted;
    }
  }
  return json;
}

// --- The command ---------------------------------------------------------------------------------

ExitStatus CheckFiles(const Options& options) {
  Json files = Json::array();
  const std::size_t limit = options.limit != 0 ? options.limit : ~std::size_t{0};
  const auto check = [&](const std::string& file, std::ostream& out) {
    const Bytes bytes = ReadInput(file);
    const CheckResult result = CheckImage(bytes, limit);
    const std::string name = NameOfInput(file);
    if (options.json) {
      files.push_back(ToJson(name, bytes.size(), result));
    } else {
      Print(out, name, result);
    }
    const bool is_bad =
        result.findings.Count(Severity::kError) != 0 ||
        (options.warnings_as_errors && result.findings.Count(Severity::kWarning) != 0);
    return is_bad ? ExitStatus::kFound : ExitStatus::kDone;
  };
  const ExitStatus status = ForEachFile(options.files, check);
  if (options.json) {
    const Json json{{"version", kCheckVersion}, {"files", std::move(files)}};
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
  }
  return status;
}

std::function<ExitStatus()> Declare(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "Management files; - is standard input")->required();
  app.add_flag("--json", options->json, "Print JSON");
  app.add_flag("--warnings-as-errors", options->warnings_as_errors,
               "Exit with 1 for warnings as well");
  app.add_option("--limit", options->limit,
                 "Print at most this many findings of each code, 0 for all")
      ->type_name("N")
      ->capture_default_str();
  return [options] { return CheckFiles(*options); };
}

}  // namespace

extern const Command kCheckCommand;
const Command kCheckCommand = {
    "check", "Find what is inconsistent in management files",
    "Examines a file however damaged it is, and prints for each finding the offset in the file, a\n"
    "code, where it is, what stands there and what would be right. Repairs nothing. Exits with 1\n"
    "when an error was found; warnings count only with --warnings-as-errors, notes never.\n"
    "Programs, cells, VOBs and all others are numbered from 1. The document check.md lists all "
    "codes.\n",
    "  veska check VR_MANGR.IFO\n"
    "  veska check --json --warnings-as-errors discs/*/DVD_RTAV/VR_MANGR.IFO\n",
    Declare};

}  // namespace veska_tool
