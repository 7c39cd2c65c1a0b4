#include "file_bench.h"

#include <veska/veska.h>

#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

#include "floor.h"
#include "heap.h"
#include "images.h"
#include "measure.h"

using VESKA::CVMGInfo;

namespace {

/// An image with all that the operations on it need.
struct Subject {
  Image image;
  std::unique_ptr<Floor> floor;  // null where there is none
  CVMGInfo info = {};            // the image, loaded
  std::vector<unsigned char> warm = {};

  std::size_t Size() const { return image.bytes.size(); }
  unsigned char* Bytes() { return image.bytes.data(); }
  void Load(CVMGInfo& into) {
    if (!into.LoadFromMemory(Bytes(), Size(), CVMGInfo::kLoadAll)) std::abort();
  }
};

struct FreeBlock {
  void operator()(void* block) const { ::operator delete(block); }
};

/// The references: the image copied into memory that was never used, or that was used just before.
Timed CopyFresh(Subject& subject) {
  auto copy = std::make_shared<std::unique_ptr<void, FreeBlock>>();
  return {[&subject, copy] {
            copy->reset(::operator new(subject.Size()));
            std::memcpy(copy->get(), subject.Bytes(), subject.Size());
          },
          [copy] {
            copy->reset();
            TrimHeap();
          }};
}

Timed CopyWarm(Subject& subject) {
  return {[&subject] { std::memcpy(subject.warm.data(), subject.Bytes(), subject.Size()); }};
}

/// Makes `object` a new one in memory that was never used.
template <class Object>
void Renew(std::optional<Object>& object) {
  object.reset();
  TrimHeap();
  object.emplace();
}

// --- operations --------------------------------------------------------------------------------

Timed Load(Subject& subject) {
  auto loaded = std::make_shared<std::optional<CVMGInfo>>();
  return {[&subject, loaded] { subject.Load(**loaded); }, [loaded] { Renew(*loaded); }};
}

Timed Write(Subject& subject) {
  return {[&subject] { subject.info.GetData(subject.warm.data()); }};
}

Timed Copy(Subject& subject) {
  auto copy = std::make_shared<std::optional<CVMGInfo>>();
  return {[&subject, copy] { copy->emplace(subject.info); }, [copy] { Renew(*copy); }};
}

Timed Complete(Subject& subject) {
  return {[&subject] { subject.info.AutoComplete(); }};
}

Timed Size(Subject& subject) {
  return {[&subject] { benchmark::DoNotOptimize(subject.info.GetDataSize()); }};
}

Timed Destroy(Subject& subject) {
  auto loaded = std::make_shared<std::optional<CVMGInfo>>();
  return {[loaded] { loaded->reset(); },
          [&subject, loaded] {
            Renew(*loaded);
            subject.Load(**loaded);
          }};
}

/// Reads something of every record of the lists that the images are made of.
unsigned long Walk(CVMGInfo& info) {
  unsigned long sum = 0;
  auto& vobs = info.GetMovieAVFileTable().GetMovieAVFile();
  for (int i = 0; i < vobs.GetCount(); ++i) {
    auto& map = vobs[i]->M_VOBI.GetTimeMapTable();
    for (int j = 0; j < map.GetVobuENCount(); ++j) sum += map.GetVobuENNode(j)->VOBU_SZ();
  }
  auto& groups = info.GetStillAVFileTable().GetStillAVFile();
  for (int i = 0; i < groups.GetCount(); ++i) {
    auto& group = groups[i]->S_VOGI;
    for (int j = 0; j < group.GetCount(); ++j) sum += group[j]->PCKs;
  }
  auto& chain = info.GetOriginalPGC();
  for (int i = 0; i < chain.GetCellCount(); ++i) {
    sum += static_cast<unsigned>(chain.GetCellNode(i)->CI->GetCount());
  }
  return sum;
}

Timed FirstWalk(Subject& subject) {
  auto loaded = std::make_shared<std::optional<CVMGInfo>>();
  return {[loaded] { benchmark::DoNotOptimize(Walk(**loaded)); },
          [&subject, loaded] {
            Renew(*loaded);
            subject.Load(**loaded);
          }};
}

Timed FloorLoad(Subject& subject) {
  return {[&subject] { subject.floor->Load(subject.Bytes(), subject.Size()); }, [] { TrimHeap(); }};
}

Timed FloorWrite(Subject& subject) {
  return {[&subject] { subject.floor->Write(subject.warm.data(), subject.Size()); }};
}

/// What the heap holds after a load, and held at most during it, as ratios to the image.
void Heap(benchmark::State& state, Subject& subject) {
  HeapUse use;
  for ([[maybe_unused]] auto iteration : state) {
    CVMGInfo loaded;
    StartCountingHeap();
    subject.Load(loaded);
    use = StopCountingHeap();
    state.SetIterationTime(1e-9);  // the time means nothing here
  }
  const auto size = static_cast<double>(subject.Size());
  state.counters["held"] = static_cast<double>(use.held) / size;
  state.counters["peak"] = static_cast<double>(use.peak) / size;
}

// --- registration ------------------------------------------------------------------------------

void Register(Subject& subject, const char* operation, Timed (*timed)(Subject&),
              Timed (*reference)(Subject&)) {
  // About 3 GB of images in all, but enough times for a median.
  const std::size_t iterations =
      std::clamp<std::size_t>((std::size_t{3} << 30U) / 8 / subject.Size(), 15, 500);
  benchmark::RegisterBenchmark((subject.image.name + '/' + operation).c_str(),
                               [=, &subject](benchmark::State& state) {
                                 Compare(state, subject.image.records, timed(subject),
                                         reference(subject));
                               })
      ->UseManualTime()
      ->Iterations(static_cast<benchmark::IterationCount>(iterations));
}

/// What is timed has to be right.
void CheckWritten(Subject& subject, const Timed& write) {
  subject.warm = subject.image.bytes;
  write.run();
  if (subject.warm != subject.image.bytes) std::abort();
}

void RegisterAll(Subject& subject) {
  subject.Load(subject.info);
  CheckWritten(subject, Write(subject));
  Register(subject, "load", Load, CopyFresh);
  Register(subject, "write", Write, CopyWarm);
  Register(subject, "copy", Copy, CopyFresh);
  Register(subject, "complete", Complete, CopyWarm);
  Register(subject, "size", Size, CopyWarm);
  Register(subject, "destroy", Destroy, CopyWarm);
  Register(subject, "walk", FirstWalk, CopyWarm);
  benchmark::RegisterBenchmark((subject.image.name + "/heap").c_str(),
                               [&subject](benchmark::State& state) { Heap(state, subject); })
      ->UseManualTime()
      ->Iterations(1);
  if (subject.floor == nullptr) return;
  subject.floor->Load(subject.Bytes(), subject.Size());
  CheckWritten(subject, FloorWrite(subject));
  Register(subject, "load to floor", Load, FloorLoad);
  Register(subject, "write to floor", Write, FloorWrite);
}

}  // namespace

void RegisterFileBenchmarks() {
  static std::deque<Subject> subjects;
  const auto add = [](Image image, std::unique_ptr<Floor> floor = nullptr) {
    subjects.push_back({std::move(image), std::move(floor)});
    RegisterAll(subjects.back());
  };
  add(TypicalRecording());
  for (const int vobus : {100'000, 300'000, 1'000'000, 3'000'000, 6'000'000}) {
    add(VobuEntries(vobus));
  }
  add(SmallVobs(), FloorOfVobs());
  add(SmallCells(), FloorOfCells());
  add(StillGroups(), FloorOfStillGroups());
}
