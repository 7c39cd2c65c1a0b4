#include "summary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kLarge[] = "6000000 VOBU entries";
constexpr char kSmall[] = "100000 VOBU entries";
constexpr char kTypical[] = "typical recording";
constexpr char kVobs[] = "60,000 VOBs of one VOBU";
constexpr char kCells[] = "60,000 cells";
constexpr char kGroups[] = "2,000 still groups";
constexpr char kTexts[] = "1,160 text sets";
constexpr char kList[] = "65000 records";

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

struct Summary::Column {
  const char* operation;
  const char* counter = "ratio";
  const char* title = operation;
};

struct Summary::Goal {
  const char* subject;
  const char* operation;
  const char* counter;
  double most;
  const char* unit;            // what the value counts in
  const char* than = nullptr;  // where the value counts as a ratio to that of this subject
};

bool Summary::ReportContext(const Context& context) {
  std::printf("%d cores, %s\n", context.cpu_info.num_cpus, __VERSION__);
  return true;
}

void Summary::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type == Run::RT_Aggregate) continue;
    const std::string& name = run.run_name.function_name;
    const std::string subject = name.substr(0, name.find('/'));
    if (std::find(subjects_.begin(), subjects_.end(), subject) == subjects_.end()) {
      subjects_.push_back(subject);
    }
    for (const auto& [counter, value] : run.counters) values_[{name, counter}].push_back(value);
  }
}

void Summary::Finalize() {
  PrintTable("As ratios to memcpy of the image", {{"load"},
                                                  {"write"},
                                                  {"copy"},
                                                  {"complete"},
                                                  {"size"},
                                                  {"destroy"},
                                                  {"walk"},
                                                  {"heap", "held", "heap held"},
                                                  {"heap", "peak", "heap peak"}});
  PrintTable("Nanoseconds a record", {{"load", "ns"},
                                      {"write", "ns"},
                                      {"copy", "ns"},
                                      {"complete", "ns"},
                                      {"destroy", "ns"},
                                      {"walk", "ns"}});
  PrintTable("As ratios to one object per structure in a single block",
             {{"load to objects", "ratio", "load"},
              {"warm load to objects", "ratio", "load, warm"},
              {"load over to objects", "ratio", "load over a loaded object"},
              {"copy to objects", "ratio", "copy, warm"},
              {"write to objects", "ratio", "write"}});
  PrintTable("Edits, as ratios to the memmove of all positions", {{"insert at the front"},
                                                                  {"delete at the front"},
                                                                  {"insert in the middle"},
                                                                  {"delete in the middle"},
                                                                  {"swap the ends"},
                                                                  {"move 100 to the end"},
                                                                  {"first insert at the front"}});
  PrintGoals();
}

double Summary::Value(const std::string& subject, const char* operation,
                      const char* counter) const {
  const auto found = values_.find({subject + '/' + operation, counter});
  return found == values_.end() ? std::nan("") : Median(found->second);
}

void Summary::PrintTable(const char* title, const std::vector<Column>& columns) const {
  std::printf("\n%s:\n\n|  |", title);
  for (const Column& column : columns) std::printf(" %s |", column.title);
  std::printf("\n| --- |");
  for (std::size_t i = 0; i < columns.size(); ++i) std::printf(" ---: |");
  std::printf("\n");
  for (const std::string& subject : subjects_) {
    if (std::isnan(Value(subject, columns[0].operation, columns[0].counter))) continue;
    std::printf("| %s |", subject.c_str());
    for (const Column& column : columns) {
      std::printf(" %.3g |", Value(subject, column.operation, column.counter));
    }
    std::printf("\n");
  }
}

std::string Summary::Verdict(const Goal& goal) {
  const double value = Value(goal.subject, goal.operation, goal.counter);
  if (std::isnan(value)) return {};
  // A ratio below 1 says that the memcpy was slow, so it is no measure.
  const double unit =
      goal.than == nullptr ? 1.0 : std::max(1.0, Value(goal.than, goal.operation, goal.counter));
  const bool has_noise = std::strcmp(goal.counter, "ratio") == 0;
  const double least = has_noise ? Value(goal.subject, goal.operation, "least") : value;
  char text[64];
  std::snprintf(text, sizeof text, "%.3g", value / unit);
  if (value / unit <= goal.most) return text;
  if (least / unit <= goal.most) return std::string(text) + ", noise";
  has_missed_ = true;
  return std::string(text) + ", **missed**";
}

void Summary::PrintGoals() {
  static constexpr Goal kGoals[] = {
      {kLarge, "load", "ratio", 1.15, "memcpy into fresh memory"},
      {kLarge, "write", "ratio", 1.2, "memcpy into warm memory"},
      {kLarge, "copy", "ratio", 1.5, "memcpy into fresh memory"},
      {kLarge, "heap", "held", 1.2, "image size, held"},
      {kLarge, "heap", "peak", 1.25, "image size, at the peak of a load"},
      {kLarge, "destroy", "ns", 0.1, "ns a record"},
      {kLarge, "walk", "ns", 1.5, "ns a record"},
      {kLarge, "load", "ratio", 1.25, "that of 100,000", kSmall},
      {kLarge, "write", "ratio", 1.25, "that of 100,000", kSmall},
      {kLarge, "copy", "ratio", 1.25, "that of 100,000", kSmall},
      {kTypical, "write to objects", "ratio", 0.35, "objects"},
      {kGroups, "load to objects", "ratio", 1, "objects"},
      {kGroups, "warm load to objects", "ratio", 1, "objects"},
      {kGroups, "write to objects", "ratio", 1, "objects"},
      {kTexts, "load to objects", "ratio", 1, "objects"},
      {kTexts, "warm load to objects", "ratio", 1, "objects"},
      {kTexts, "write to objects", "ratio", 1, "objects"},
      {kVobs, "load to objects", "ratio", 1, "objects"},
      {kVobs, "warm load to objects", "ratio", 1, "objects"},
      {kCells, "load to objects", "ratio", 1, "objects"},
      {kCells, "copy to objects", "ratio", 1, "objects"},
      {kCells, "load over to objects", "ratio", 1, "objects"},
      {kList, "insert at the front", "ratio", 1, "memmove"},
      {kList, "delete at the front", "ratio", 1, "memmove"},
  };
  std::FILE* file = goals_file_.empty() ? nullptr : std::fopen(goals_file_.c_str(), "w");
  std::printf("\nGoals:\n\n|  |  | in | at most | measured |\n");
  std::printf("| --- | --- | --- | ---: | ---: |\n");
  for (const Goal& goal : kGoals) {
    const std::string verdict = Verdict(goal);
    if (verdict.empty()) continue;
    std::printf("| %s | %s | %s | %.3g | %s |\n", goal.subject, goal.operation, goal.unit,
                goal.most, verdict.c_str());
    if (file == nullptr) continue;
    std::fprintf(file, "%s\t%s\t%s\t%.3g\t%s\n", goal.subject, goal.operation, goal.unit, goal.most,
                 verdict.c_str());
  }
  if (file != nullptr) std::fclose(file);
}
