#include "map/walk.h"

#include <algorithm>
#include <utility>

namespace VESKA::workshop {
namespace {

// An undamaged file is read about eight times over where chains nest, each structure costing a
// little more than its bytes. The constant lets the smallest files be examined in full.
constexpr std::uint64_t kWorkPerByte = 64;
constexpr std::uint64_t kWorkForAny = 1 << 16;
constexpr std::uint64_t kWorkPerStructure = 16;

}  // namespace

Walk::Walk(std::span<const unsigned char> bytes, ImageMap& map, Findings& findings)
    : image_(bytes),
      map_(map),
      findings_(findings),
      budget_(bytes.size() * kWorkPerByte + kWorkForAny) {}

void Walk::Spend(std::uint64_t bytes) {
  if (bytes > budget_) throw BudgetSpent();
  budget_ -= bytes;
}

std::int32_t Walk::Append(Part part, std::uint64_t offset, std::uint64_t size,
                          std::uint32_t number) {
  const std::uint64_t there = image_.At(offset, size).size();
  Spend(there + kWorkPerStructure);
  Structure structure{table, part};
  structure.parent = parent_;
  structure.number = number;
  structure.offset = offset;
  structure.size = there;
  map_.structures.push_back(structure);
  return static_cast<std::int32_t>(map_.structures.size() - 1);
}

std::int32_t Walk::Add(Part part, std::uint64_t offset, std::uint64_t size, std::uint32_t number) {
  const std::int32_t added = Append(part, offset, size, number);
  if (At(added).size < size) {
    At(added).state = State::kCut;
    SetState(State::kCut);
    Report(Code::kPastFile, offset, map_.PointerOf(added),
           std::to_string(size - At(added).size) + " of its bytes lie after the end of the file");
  }
  return added;
}

std::uint64_t Walk::AddRun(Part part, std::uint64_t offset, const FileNumber& count) {
  const std::uint64_t record = RecordSize(part);
  const std::uint64_t there = image_.At(offset, record * count.value).size() / record;
  AddCounted(part, offset, record * there, count, there);
  return offset + record * there;
}

void Walk::AddCounted(Part part, std::uint64_t offset, std::uint64_t size, const FileNumber& count,
                      std::uint64_t there) {
  if (count.value == 0) return;
  Structure& run = At(Append(part, offset, size, 0));
  run.count = static_cast<std::uint32_t>(there);
  run.counted = static_cast<std::uint32_t>(count.value);
  if (there == count.value) return;
  run.state = State::kCut;
  SetState(State::kCut);
  Report(Code::kPastFile, count, ", and the file ends after " + std::to_string(there) + " of them");
}

void Walk::AddLost(Part part, std::uint32_t number, std::uint64_t counted) {
  Structure& lost = At(Append(part, 0, 0, number));
  lost.state = State::kLost;
  lost.count = 0;
  lost.counted = static_cast<std::uint32_t>(counted);
}

void Walk::SetState(State state) {
  if (parent_ < 0 || At(parent_).part == Part::kTable) return;
  At(parent_).state = std::max(At(parent_).state, state);
}

void Walk::SetSize(std::int32_t position) {
  std::uint64_t last = At(position).offset;
  for (auto i = static_cast<std::size_t>(position) + 1; i < map_.structures.size(); ++i) {
    last = std::max(last, map_.structures[i].offset + map_.structures[i].size);
  }
  At(position).size = last - At(position).offset;
}

void Walk::Report(Code code, std::uint64_t offset, std::string pointer, std::string stands,
                  std::string right) {
  findings_.Add({code, table, std::move(pointer), offset, std::move(stands), std::move(right)});
}

void Walk::ReportCount(const FileNumber& count, std::uint64_t right) {
  Report(Code::kCountAndRoom, count, "", std::to_string(right));
}

void Walk::ReportCrowded(const FileNumber& count, const Fit& fit) {
  Report(Code::kCountAndRoom, count,
         ", which takes it past offset " + std::to_string(fit.end) + ", where the next one starts");
  SetState(State::kDoubtful);
}

std::string Walk::Here() const {
  return parent_ < 0 ? workshop::PointerOf(table) : map_.PointerOf(parent_);
}

std::string Walk::PointerOf(Part part, std::uint32_t number) const {
  return map_.PointerOf(parent_, table, part, number);
}

Walk::Mark Walk::SetMark() const {
  return {map_.structures.size(), findings_.Here(), parent_, table};
}

void Walk::Return(const Mark& mark) {
  map_.structures.resize(mark.structures, Structure{Table::kFile, Part::kTable});
  findings_.Return(mark.findings);
  parent_ = mark.parent;
  table = mark.table;
}

// --- Entries of several sizes -------------------------------------------------------------------

std::uint64_t EndOfEntries(Walk& walk, std::uint64_t at, std::uint64_t count, EntrySize size) {
  std::uint64_t i = 0;
  for (; i < count && at < walk.FileEnd(); ++i) at += size(walk.Image().Byte(at));
  walk.Spend(i);
  return i < count ? walk.FileEnd() + 1 : at;
}

std::uint64_t AddEntries(Walk& walk, Part part, std::uint64_t at, FileNumber count, EntrySize size,
                         const Fit& fit) {
  if (fit.end != 0 && EndOfEntries(walk, at, count.value, size) != fit.end) {
    std::uint64_t n = 0;
    std::uint64_t end = at;
    for (; n < count.largest && end < fit.end; ++n) end += size(walk.Image().Byte(end));
    walk.Spend(n);
    if (end == fit.end) {
      walk.ReportCount(count, n);
      count.value = n;
    } else if (fit.crowded) {
      walk.ReportCrowded(count, fit);
      return fit.end;
    }
  }
  std::uint64_t n = 0;
  std::uint64_t end = at;
  for (; n < count.value; ++n) {
    const unsigned next = size(walk.Image().Byte(end));
    if (!walk.Image().Holds(end, next)) break;
    end += next;
  }
  walk.AddCounted(part, at, end - at, count, n);
  return end;
}

}  // namespace VESKA::workshop
