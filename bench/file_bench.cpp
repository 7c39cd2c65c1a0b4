#include "file_bench.h"

#include <veska/veska.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "floor.h"
#include "heap.h"
#include "images.h"
#include "measure.h"

using VESKA::CVMGInfo;

namespace {

/// An image with all that the operations on it need.
struct Subject {
  std::string name;
  int iterations;  // of each benchmark
  std::function<Image()> build;
  std::unique_ptr<Floor> floor = nullptr;  // where there is one
  Image image = {};
  CVMGInfo info = {};  // the image, loaded
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

/// The same in memory that was in use just before, and over an object that is loaded.
Timed LoadWarm(Subject& subject) {
  auto loaded = std::make_shared<std::optional<CVMGInfo>>();
  return {[&subject, loaded] { subject.Load(**loaded); }, [loaded] { loaded->emplace(); }};
}

Timed LoadOver(Subject& subject) {
  auto loaded = std::make_shared<CVMGInfo>();
  subject.Load(*loaded);
  return {[&subject, loaded] { subject.Load(*loaded); }};
}

Timed CopyInWarm(Subject& subject) {
  auto copy = std::make_shared<std::optional<CVMGInfo>>();
  return {[&subject, copy] { copy->emplace(subject.info); }, [copy] { copy->reset(); }};
}

// --- the floor -----------------------------------------------------------------------------------

void LoadFloor(Subject& subject) { subject.floor->Load(subject.Bytes(), subject.Size()); }

Timed FloorLoad(Subject& subject) {
  return {[&subject] { LoadFloor(subject); },
          [&subject] {
            subject.floor->Clear();
            TrimHeap();
          }};
}

Timed FloorLoadWarm(Subject& subject) {
  return {[&subject] { LoadFloor(subject); }, [&subject] { subject.floor->Clear(); }};
}

Timed FloorLoadOver(Subject& subject) {
  LoadFloor(subject);
  return {[&subject] { LoadFloor(subject); }};
}

Timed FloorCopy(Subject& subject) {
  LoadFloor(subject);
  return {[&subject] { subject.floor->Copy(); }};
}

Timed FloorWrite(Subject& subject) {
  LoadFloor(subject);
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

/// What is timed has to be right: it may write nothing but the image, and all of it except for at
/// most `others` bytes.
void CheckWritten(Subject& subject, const Timed& write, std::size_t others) {
  const std::vector<unsigned char>& image = subject.image.bytes;
  subject.warm.resize(image.size());
  std::transform(image.begin(), image.end(), subject.warm.begin(), std::bit_not<unsigned char>());
  write.run();
  for (std::size_t i = 0; i < image.size(); ++i) {
    if (subject.warm[i] == image[i]) continue;
    if ((subject.warm[i] ^ image[i]) != 0xFF || others-- == 0) std::abort();
  }
}

constexpr std::size_t kOtherTables = 8000;  // bytes of all tables that a floor does not write

/// Builds the image before the first benchmark that needs it.
void Prepare(Subject& subject) {
  if (!subject.image.bytes.empty()) return;
  subject.image = subject.build();
  subject.Load(subject.info);
  CheckWritten(subject, Write(subject), 0);
  if (subject.floor == nullptr) return;
  subject.floor->Load(subject.Bytes(), subject.Size());
  CheckWritten(subject, FloorWrite(subject), kOtherTables);
}

void Register(Subject& subject, const char* operation,
              const std::function<void(benchmark::State&)>& run, int iterations) {
  benchmark::RegisterBenchmark((subject.name + '/' + operation).c_str(),
                               [=, &subject](benchmark::State& state) {
                                 Prepare(subject);
                                 run(state);
                               })
      ->UseManualTime()
      ->Iterations(iterations);
}

void Register(Subject& subject, const char* operation, Timed (*timed)(Subject&),
              Timed (*reference)(Subject&)) {
  const auto compare = [=, &subject](benchmark::State& state) {
    Compare(state, subject.image.records, timed(subject), reference(subject));
  };
  Register(subject, operation, compare, subject.iterations);
}

void RegisterAll(Subject& subject) {
  Register(subject, "load", Load, CopyFresh);
  Register(subject, "write", Write, CopyWarm);
  Register(subject, "copy", Copy, CopyFresh);
  Register(subject, "complete", Complete, CopyWarm);
  Register(subject, "size", Size, CopyWarm);
  Register(subject, "destroy", Destroy, CopyWarm);
  Register(subject, "walk", FirstWalk, CopyWarm);
  Register(
      subject, "heap", [&](benchmark::State& state) { Heap(state, subject); }, 1);
  if (subject.floor == nullptr) return;
  Register(subject, "load to objects", Load, FloorLoad);
  Register(subject, "warm load to objects", LoadWarm, FloorLoadWarm);
  Register(subject, "load over to objects", LoadOver, FloorLoadOver);
  Register(subject, "copy to objects", CopyInWarm, FloorCopy);
  Register(subject, "write to objects", Write, FloorWrite);
}

}  // namespace

void RegisterFileBenchmarks() {
  static std::deque<Subject> subjects;
  subjects.push_back({"typical recording", 300, TypicalRecording, FloorOfVobs()});
  for (const int vobus : {100'000, 300'000, 1'000'000, 3'000'000, 6'000'000}) {
    const int iterations = std::max(20, 30'000'000 / vobus);
    subjects.push_back(
        {std::to_string(vobus) + " VOBU entries", iterations, [=] { return VobuEntries(vobus); }});
  }
  subjects.push_back({"60,000 VOBs of one VOBU", 200, SmallVobs, FloorOfVobs()});
  subjects.push_back({"60,000 cells", 200, SmallCells, FloorOfCells()});
  subjects.push_back({"2,000 still groups", 100, StillGroups, FloorOfStillGroups()});
  subjects.push_back({"1,160 text sets", 300, Texts, FloorOfTexts()});
  for (Subject& subject : subjects) RegisterAll(subject);
}
