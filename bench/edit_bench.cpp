#include "edit_bench.h"

#include <veska/RecordList.h>
#include <veska/records.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "measure.h"

namespace {

using List = VESKA::RecordList<VESKA::tag_VOBU_ENT, 0xFFFF>;

constexpr int kTimes = 64;  // what one time is made of, so that reading the clock does not count
constexpr int kBlock = 100;

struct Edit {
  const char* name;
  void (*run)(List& list, int count);  // on a list of about `count` records
};

constexpr Edit kEdits[] = {
    {"insert at the front", [](List& list, int) { list.Insert(0); }},
    {"delete at the front", [](List& list, int) { list.Delete(0); }},
    {"insert in the middle", [](List& list, int count) { list.Insert(count / 2); }},
    {"delete in the middle", [](List& list, int count) { list.Delete(count / 2); }},
    {"swap the ends", [](List& list, int count) { list.Swap(0, count - 1); }},
    {"move 100 to the end",
     [](List& list, int count) { list.Move(0, kBlock - 1, count - kBlock); }},
};

/// A list of `count` records, as loaded.
std::shared_ptr<List> Loaded(int count) {
  auto list = std::make_shared<List>();
  std::memset(static_cast<void*>(list->Load(count)), 0,
              sizeof(VESKA::tag_VOBU_ENT) * static_cast<std::size_t>(count));
  return list;
}

void Restore(List& list, int count) {
  while (list.Count() > count) list.Delete(0);
  while (list.Count() < count) list.Insert(0);
}

/// The edit on a list that was edited before and has room for more.
Timed Repeated(const Edit& edit, int count) {
  auto list = Loaded(count);
  Restore(*list, count + kTimes);
  const auto run = [=] {
    for (int i = 0; i < kTimes; ++i) edit.run(*list, count);
  };
  return {run, [=] { Restore(*list, count); }, kTimes};
}

/// The edit that a list as loaded sees first: it makes the positions.
Timed First(const Edit& edit, int count) {
  auto list = std::make_shared<std::shared_ptr<List>>();
  return {[=] { edit.run(**list, count); }, [=] { *list = Loaded(count); }};
}

/// The reference: the positions of all records moved by one.
Timed MovePositions(int count) {
  auto positions = std::make_shared<std::vector<void*>>(count + 1);
  const auto run = [=] {
    for (int i = 0; i < kTimes; ++i) {
      std::memmove(positions->data() + 1, positions->data(),
                   sizeof(void*) * static_cast<std::size_t>(count));
      benchmark::ClobberMemory();
    }
  };
  return {run, {}, kTimes};
}

void Register(const std::string& name, const Edit& edit, int count,
              Timed (*timed)(const Edit&, int)) {
  benchmark::RegisterBenchmark(
      (std::to_string(count) + " records/" + name).c_str(),
      [=](benchmark::State& state) { Compare(state, 1, timed(edit, count), MovePositions(count)); })
      ->UseManualTime()
      ->Iterations(101);
}

}  // namespace

void RegisterEditBenchmarks() {
  for (const int count : {1'000, 16'000, 65'000}) {
    for (const Edit& edit : kEdits) Register(edit.name, edit, count, Repeated);
    Register("first insert at the front", kEdits[0], count, First);
  }
}
