#include "map_builder.h"

#include <algorithm>
#include <utility>

namespace veska_tool {
namespace {

// An undamaged file is read about eight times over where chains nest, each structure costing a
// little more than its bytes. The constant lets the smallest files be examined in full.
constexpr std::uint64_t kWorkPerByte = 64;
constexpr std::uint64_t kWorkForAny = 1 << 16;
constexpr std::uint64_t kWorkPerStructure = 16;

}  // namespace

std::string Is(const FileNumber& number) {
  return std::string(number.name) + " is " + std::to_string(number.value);
}

MapBuilder::MapBuilder(std::span<const unsigned char> bytes, ImageMap& map, Findings& findings)
    : image_(bytes),
      map_(map),
      findings_(findings),
      budget_(bytes.size() * kWorkPerByte + kWorkForAny) {}

void MapBuilder::Spend(std::uint64_t bytes) {
  if (bytes > budget_) throw BudgetSpent();
  budget_ -= bytes;
}

std::int32_t MapBuilder::Append(Part part, std::uint64_t offset, std::uint64_t size,
                                std::uint32_t number) {
  const std::uint64_t there = image_.At(offset, size).size();
  Spend(there + kWorkPerStructure);
  Structure structure{table_, part};
  structure.parent = parent_;
  structure.number = number;
  structure.offset = offset;
  structure.size = there;
  map_.structures.push_back(structure);
  return static_cast<std::int32_t>(map_.structures.size() - 1);
}

std::int32_t MapBuilder::Add(Part part, std::uint64_t offset, std::uint64_t size,
                             std::uint32_t number) {
  const std::int32_t added = Append(part, offset, size, number);
  if (At(added).size < size) {
    At(added).state = State::kCut;
    SetState(State::kCut);
    Report(Code::kPastFile, offset, map_.PathOf(added),
           std::to_string(size - At(added).size) + " of its bytes lie after the end of the file");
  }
  return added;
}

std::uint64_t MapBuilder::AddRun(Part part, std::uint64_t offset, const FileNumber& count) {
  const std::uint64_t record = RecordSize(part);
  const std::uint64_t there = image_.At(offset, record * count.value).size() / record;
  AddCounted(part, offset, record * there, count, there);
  return offset + record * there;
}

void MapBuilder::AddCounted(Part part, std::uint64_t offset, std::uint64_t size,
                            const FileNumber& count, std::uint64_t there) {
  if (count.value == 0) return;
  Structure& run = At(Append(part, offset, size, 0));
  run.count = static_cast<std::uint32_t>(there);
  run.counted = static_cast<std::uint32_t>(count.value);
  if (there == count.value) return;
  run.state = State::kCut;
  SetState(State::kCut);
  Report(Code::kPastFile, count.offset, Here(),
         Is(count) + ", and the file ends after " + std::to_string(there) + " of them");
}

std::uint64_t MapBuilder::EndOfEntries(std::uint64_t at, std::uint64_t count, EntrySize size) {
  std::uint64_t i = 0;
  for (; i < count && at < FileEnd(); ++i) at += size(image_.Byte(at));
  Spend(i);
  return i < count ? FileEnd() + 1 : at;
}

std::uint64_t MapBuilder::AddEntries(Part part, std::uint64_t at, FileNumber count,
                                     std::uint64_t largest, EntrySize size, const Fit& fit) {
  if (fit.end != 0 && EndOfEntries(at, count.value, size) != fit.end) {
    std::uint64_t n = 0;
    std::uint64_t end = at;
    for (; n < largest && end < fit.end; ++n) end += size(image_.Byte(end));
    Spend(n);
    if (end == fit.end) {
      ReportCount(count, n);
      count.value = n;
    } else if (fit.crowded) {
      ReportCrowded(count, fit);
      return fit.end;
    }
  }
  std::uint64_t n = 0;
  std::uint64_t end = at;
  for (; n < count.value; ++n) {
    const unsigned next = size(image_.Byte(end));
    if (!image_.Holds(end, next)) break;
    end += next;
  }
  AddCounted(part, at, end - at, count, n);
  return end;
}

void MapBuilder::AddLost(Part part, std::uint32_t number) {
  At(Append(part, 0, 0, number)).state = State::kLost;
}

void MapBuilder::SetState(State state) {
  if (parent_ < 0 || At(parent_).part == Part::kTable) return;
  At(parent_).state = std::max(At(parent_).state, state);
}

void MapBuilder::SetSize(std::int32_t position) {
  std::uint64_t end = At(position).offset;
  for (auto i = static_cast<std::size_t>(position) + 1; i < map_.structures.size(); ++i) {
    end = std::max(end, map_.structures[i].offset + map_.structures[i].size);
  }
  At(position).size = end - At(position).offset;
}

void MapBuilder::Report(Code code, std::uint64_t offset, const std::string& path,
                        std::string stands, std::string right) {
  findings_.Add({code, table_, path, offset, std::move(stands), std::move(right)});
}

void MapBuilder::ReportCount(const FileNumber& count, std::uint64_t right) {
  Report(Code::kCountAndRoom, count.offset, Here(), Is(count), std::to_string(right));
}

void MapBuilder::ReportCrowded(const FileNumber& count, const Fit& fit) {
  Report(Code::kCountAndRoom, count.offset, Here(),
         Is(count) + ", which takes it past offset " + std::to_string(fit.end) +
             ", where the next one starts");
  SetState(State::kDoubtful);
}

std::string MapBuilder::Here() const { return parent_ < 0 ? NameOf(table_) : map_.PathOf(parent_); }

std::string MapBuilder::PathOf(Part part, std::uint32_t number) const {
  return map_.PathOf(parent_, table_, part, number);
}

MapBuilder::Mark MapBuilder::SetMark() const {
  return {map_.structures.size(), findings_.Here(), parent_, table_};
}

void MapBuilder::Return(const Mark& mark) {
  map_.structures.resize(mark.structures, Structure{Table::kFile, Part::kTable});
  findings_.Return(mark.findings);
  parent_ = mark.parent;
  table_ = mark.table;
}

}  // namespace veska_tool
