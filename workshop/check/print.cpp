// Examinations as text for people and as JSON.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "basis/text.h"
#include "veska/workshop/check.h"

namespace VESKA::workshop {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 2;

std::string Address(std::uint64_t offset) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%06llx", static_cast<unsigned long long>(offset));
  return text;
}

std::string LineOf(const Finding& finding) {
  const CatalogueEntry& entry = EntryOf(finding.code);
  std::string line = Address(finding.offset) + ": " + NameOf(entry.severity) + " " +
                     NameOf(finding.code) + ": " + InWords(finding.pointer) + ": " + entry.title;
  if (!finding.stands.empty()) line += ": " + finding.stands;
  if (!finding.right.empty()) line += "; right: " + finding.right;
  return line + "\n";
}

std::string LineOf(const TableSummary& table) {
  std::string line = std::string("  ") + NameOf(table.table) + ": " + NameOf(table.condition);
  if (table.items != 0) {
    line += ", " + std::to_string(table.readable) + " of " + std::to_string(table.items) + " items";
  }
  return line + "\n";
}

Json JsonOf(const Finding& finding) {
  const CatalogueEntry& entry = EntryOf(finding.code);
  return {{"code", NameOf(finding.code)},
          {"severity", NameOf(entry.severity)},
          {"table", NameOf(finding.table)},
          {"pointer", finding.pointer},
          {"path", InWords(finding.pointer)},
          {"offset", finding.offset},
          {"title", entry.title},
          {"stands", finding.stands},
          {"right", finding.right}};
}

Json JsonOf(const TableSummary& table) {
  return {{"table", NameOf(table.table)}, {"condition", NameOf(table.condition)},
          {"offset", table.offset},       {"size", table.size},
          {"items", table.items},         {"readable", table.readable}};
}

Json JsonOf(const NamedExamination& file) {
  const Examination& examination = file.examination;
  Json json{{"file", file.name},
            {"size", examination.size},
            {"loads", examination.loads},
            {"errors", examination.errors},
            {"warnings", examination.warnings},
            {"notes", examination.notes},
            {"tables", Json::array()},
            {"findings", Json::array()},
            {"omitted", Json::object()}};
  for (const TableSummary& table : examination.tables) json["tables"].push_back(JsonOf(table));
  for (const Finding& finding : examination.findings) json["findings"].push_back(JsonOf(finding));
  for (const auto& [code, count] : examination.omitted) json["omitted"][NameOf(code)] = count;
  return json;
}

}  // namespace

std::string ToText(const Examination& examination, std::string_view name) {
  const std::string file(name);
  std::string text;
  for (const Finding& finding : examination.findings) text += file + ":" + LineOf(finding);
  for (const auto& [code, count] : examination.omitted) {
    const CatalogueEntry& entry = EntryOf(code);
    text += file + ": " + NameOf(entry.severity) + " " + NameOf(code) + ": " +
            Plural(count, "more finding") + ": " + entry.title + "\n";
  }
  if (!examination.loads) {
    text += file + ": does not load; what can be read of it:\n";
    for (const TableSummary& table : examination.tables) text += LineOf(table);
  }
  const bool is_clean = examination.errors + examination.warnings + examination.notes == 0;
  return text + file + ": " +
         (is_clean ? "nothing found"
                   : Plural(examination.errors, "error") + ", " +
                         Plural(examination.warnings, "warning") + ", " +
                         Plural(examination.notes, "note")) +
         "\n";
}

std::string ToJson(std::span<const NamedExamination> files) {
  Json list = Json::array();
  for (const NamedExamination& file : files) list.push_back(JsonOf(file));
  const Json json{{"version", kVersion}, {"files", std::move(list)}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace VESKA::workshop
