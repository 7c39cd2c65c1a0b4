// A listing as text for people and as rows of tables.
#include <cmath>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>
#include <variant>

#include "basis/text.h"
#include "veska/workshop/list.h"

namespace VESKA::workshop {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kDiscColumns[] = {
    "file",           "status",        "problem", "text",         "programs", "cells",
    "play_lists",     "user_chains",   "vobs",    "still_groups", "seconds",  "bytes",
    "recorded_first", "recorded_last", "errors",  "warnings"};
constexpr const char* kProgramColumns[] = {"file", "status",     "problem", "program", "text",
                                           "kind", "first_cell", "cells",   "seconds"};

const char* NameOf(DiscStatus status) {
  constexpr const char* kNames[] = {"sound", "damaged", "bad"};
  return kNames[static_cast<std::size_t>(status)];
}

/// A value of a row; none where it has no meaning, as in what cannot be read.
using Value = std::variant<std::monostate, std::string, std::uint64_t, double>;
using Row = std::vector<Value>;

template <class Number>
Value Counted(Number number) {
  return static_cast<std::uint64_t>(number);
}

Row RowOfDisc(const Listing& disc, std::string_view name) {
  if (disc.status == DiscStatus::kBad) {
    Row row(std::size(kDiscColumns));
    row[0] = std::string(name);
    row[1] = std::string(NameOf(disc.status));
    row[2] = disc.problem;
    return row;
  }
  return {std::string(name),
          std::string(NameOf(disc.status)),
          disc.problem,
          disc.text,
          Counted(disc.programs.size()),
          Counted(disc.cells),
          Counted(disc.play_lists.size()),
          Counted(disc.user_chains),
          Counted(disc.vobs),
          Counted(disc.still_groups),
          disc.seconds,
          Counted(disc.bytes),
          disc.recorded_first,
          disc.recorded_last,
          Counted(disc.errors),
          Counted(disc.warnings)};
}

std::vector<Row> Rows(const Listing& disc, std::string_view name, RowOf of) {
  if (of == RowOf::kDisc) return {RowOfDisc(disc, name)};
  const Row head{std::string(name), std::string(NameOf(disc.status)), disc.problem};
  std::vector<Row> rows;
  for (std::size_t i = 0; i < disc.programs.size(); ++i) {
    const ListedProgram& program = disc.programs[i];
    Row row = head;
    for (Value value :
         {Counted(i + 1), Value(program.text), Value(program.kind), Counted(program.first_cell),
          Counted(program.cells), Value(program.seconds)}) {
      row.push_back(std::move(value));
    }
    rows.push_back(std::move(row));
  }
  if (disc.status == DiscStatus::kBad) {
    rows.push_back(head);
    rows.back().resize(std::size(kProgramColumns));
  }
  return rows;
}

std::string Seconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", seconds);
  return text;
}

/// In quotes where it holds what a reader would take apart.
std::string CsvText(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string CsvOf(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return CsvText(*text);
  if (const auto* number = std::get_if<std::uint64_t>(&value)) return std::to_string(*number);
  if (const auto* seconds = std::get_if<double>(&value)) return Seconds(*seconds);
  return "";
}

Json JsonOf(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::uint64_t>(&value)) return *number;
  if (const auto* seconds = std::get_if<double>(&value)) {
    return Json::parse(Seconds(*seconds));  // to the millisecond, as in the other form
  }
  return nullptr;
}

std::string SizeText(std::uint64_t bytes) {
  constexpr const char* kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
  auto size = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; size >= 1000 && unit + 1 < std::size(kUnits); ++unit) size /= 1000;
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", size, kUnits[unit]);
  return text;
}

std::string WholeSeconds(double seconds) {
  const std::string text = TimeText(static_cast<std::uint64_t>(std::llround(seconds * 1000)));
  return text.substr(0, text.find('.'));
}

std::string RightBound(const std::string& text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

/// A name that would not stay on its line is cut; the rows hold all of it.
std::string OnScreen(const std::string& text) {
  constexpr std::size_t kMostCharacters = 60;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool begins = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80;
    if (begins && characters++ == kMostCharacters) return text.substr(0, i) + "...";
  }
  return text;
}

std::string CellsText(const ListedProgram& program) {
  if (program.cells == 0) return "no cells";
  const std::string first = std::to_string(program.first_cell);
  if (program.cells == 1) return "cell " + first;
  return "cells " + first + " to " + std::to_string(program.first_cell + program.cells - 1);
}

std::string ProgramLines(const Listing& disc) {
  std::string lines = disc.programs.empty() ? "" : "  programs\n";
  for (std::size_t i = 0; i < disc.programs.size(); ++i) {
    const ListedProgram& program = disc.programs[i];
    const bool has_time = program.seconds > 0;
    std::string cells = CellsText(program);
    cells.resize(std::max<std::size_t>(cells.size(), 14), ' ');
    lines += RightBound(std::to_string(i + 1), 6) + "  " +
             RightBound(has_time ? WholeSeconds(program.seconds) : program.kind, 8) + "  " + cells +
             "  " + OnScreen(program.text) + "\n";
  }
  return lines;
}

std::string PlayListLines(const Listing& disc) {
  std::string lines = disc.play_lists.empty() ? "" : "  play lists\n";
  for (std::size_t i = 0; i < disc.play_lists.size(); ++i) {
    const ListedPlayList& list = disc.play_lists[i];
    lines += RightBound(std::to_string(i + 1), 6) + "  " +
             (list.cell == 0 ? "no cell" : "from cell " + std::to_string(list.cell)) + "  " +
             OnScreen(list.text) + "\n";
  }
  return lines;
}

std::string SumLine(const Listing& disc) {
  std::string line = Plural(disc.programs.size(), "program") + ", " +
                     Plural(static_cast<unsigned>(disc.cells), "cell") + ", " +
                     Plural(disc.play_lists.size(), "play list");
  if (disc.user_chains != 0) {
    line += ", " + Plural(static_cast<unsigned>(disc.user_chains), "user-defined chain");
  }
  line += "; playing time " + WholeSeconds(disc.seconds) + ", " + SizeText(disc.bytes);
  if (disc.recorded_first.empty()) return line;
  const std::string first = disc.recorded_first.substr(0, 10);
  const std::string last = disc.recorded_last.substr(0, 10);
  return line + "; recorded " + first + (last != first ? " to " + last : "");
}

}  // namespace

std::span<const char* const> Columns(RowOf of) {
  if (of == RowOf::kProgram) return kProgramColumns;
  return kDiscColumns;
}

std::string CsvHeads(RowOf of) {
  std::string line;
  for (const char* name : Columns(of)) line += (line.empty() ? "" : ",") + std::string(name);
  return line + "\n";
}

std::string ToCsv(const Listing& listing, std::string_view name, RowOf of) {
  std::string lines;
  for (const Row& row : Rows(listing, name, of)) {
    const char* separator = "";
    for (const Value& value : row) {
      lines += separator + CsvOf(value);
      separator = ",";
    }
    lines += "\n";
  }
  return lines;
}

std::string ToJsonLines(const Listing& listing, std::string_view name, RowOf of) {
  std::string lines;
  for (const Row& row : Rows(listing, name, of)) {
    Json object = Json::object();
    for (std::size_t i = 0; i < row.size(); ++i) object[Columns(of)[i]] = JsonOf(row[i]);
    lines += object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
  }
  return lines;
}

std::string ToText(const Listing& listing, std::string_view name) {
  std::string text = std::string(name) + ":";
  if (listing.status == DiscStatus::kBad) return text + " " + listing.problem + "\n";
  text += listing.text.empty() ? "\n" : " " + OnScreen(listing.text) + "\n";
  text += ProgramLines(listing) + PlayListLines(listing) + "  " + SumLine(listing) + "\n";
  if (listing.status == DiscStatus::kDamaged) text += "  damaged: " + listing.problem + "\n";
  return text;
}

}  // namespace VESKA::workshop
