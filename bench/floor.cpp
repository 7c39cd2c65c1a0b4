#include "floor.h"

#include <veska/records.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>
#include <utility>

#include "frame/byte_order.h"

using namespace VESKA;

namespace {

using Byte = unsigned char;

/// The block, from which objects are cut one behind the other. The first time it is large enough
/// for any of the images, from then on as large as it has to be.
class Block {
 public:
  void Free() { bytes_.reset(); }
  /// Begins anew, in memory of its own when there is none.
  void Begin() {
    if (bytes_ == nullptr) bytes_.reset(static_cast<Byte*>(::operator new(size_)));
    next_ = bytes_.get();
  }
  void Close() { size_ = static_cast<std::size_t>(next_ - bytes_.get()); }

  /// `count` objects whose fields the caller sets.
  template <class Object>
  Object* Make(std::size_t count = 1) {
    next_ += -reinterpret_cast<std::uintptr_t>(next_) % alignof(Object);
    Byte* const objects = std::exchange(next_, next_ + count * sizeof(Object));
    if (next_ > bytes_.get() + size_) std::abort();
    return reinterpret_cast<Object*>(objects);
  }

 private:
  struct FreeBytes {
    void operator()(Byte* bytes) const { ::operator delete(bytes); }
  };
  std::unique_ptr<Byte, FreeBytes> bytes_;
  Byte* next_ = nullptr;
  std::size_t size_ = 64 << 20;
};

/// An image with an end that is never passed.
class Reader {
 public:
  Reader(const Byte* image, std::size_t size) : next_(image), end_(image + size) {}
  Reader At(std::size_t offset) const {
    if (offset > Left()) std::abort();
    return {next_ + offset, Left() - offset};
  }
  std::size_t Left() const { return static_cast<std::size_t>(end_ - next_); }
  const Byte* Take(std::size_t size) {
    if (size > Left()) std::abort();
    return std::exchange(next_, next_ + size);
  }
  template <class Number>
  Number Get() {
    return FromFile<Number>(Take(sizeof(Number)));
  }

 private:
  const Byte* next_;
  const Byte* end_;
};

class Writer {
 public:
  Writer(Byte* image, std::size_t size) : next_(image), end_(image + size) {}
  Writer At(std::size_t offset) const {
    if (offset > Left()) std::abort();
    return {next_ + offset, Left() - offset};
  }
  std::size_t Left() const { return static_cast<std::size_t>(end_ - next_); }
  Byte* Take(std::size_t size) {
    if (size > Left()) std::abort();
    return std::exchange(next_, next_ + size);
  }
  template <class Number>
  void Put(Number number) {
    ToFile(Take(sizeof number), number);
  }

 private:
  Byte* next_;
  Byte* end_;
};

struct Clock {
  std::uint32_t base;
  std::uint16_t extension;
};
Clock ClockAt(const Byte* from) {
  return {FromFile<std::uint32_t>(from), FromFile<std::uint16_t>(from + 4)};
}
void PutClock(Byte* to, const Clock& clock) {
  ToFile(to, clock.base);
  ToFile(to + 4, clock.extension);
}

/// Where the pointers to the structures of a table stand, and how many.
struct Index {
  std::size_t offset;
  unsigned count;
};

/// The parts of an object, copied into a block.
template <class Part>
std::span<Part> Copied(std::span<const Part> parts, Block& block) {
  Part* copy = block.Make<Part>(parts.size());
  std::copy(parts.begin(), parts.end(), copy);
  return {copy, parts.size()};
}

/// An entry of an index, and the structure that it names.
template <class Object>
struct Item {
  Object* object;
  std::uint32_t address;
  std::uint32_t size;  // where the index holds it
};

/// A floor over the structures of a table, each of them an `Object`.
template <class Object>
class FloorOf : public Floor {
 public:
  void Clear() override { block_.Free(); }

  void Load(const Byte* image, std::size_t size) override {
    table_ = FromFile<std::uint32_t>(image + Object::kTable);
    const Reader table = Reader(image, size).At(table_);
    index_ = Object::Find(table);
    block_.Begin();
    items_ = {block_.Make<Item<Object>>(index_.count), index_.count};
    Reader pointers = table.At(index_.offset);
    for (Item<Object>& item : items_) {
      item = {block_.Make<Object>(), GetAddress(pointers), 0};
      if (Object::kHasSize) item.size = GetAddress(pointers);
      item.object->Read(table.At(item.address), item.size, block_);
    }
    block_.Close();
  }

  void Copy() override {
    copy_.Free();
    copy_.Begin();
    for (Item<Object>& to : Copied<Item<Object>>(items_, copy_)) {
      to.object = Copied<Object>({to.object, 1}, copy_).data();
      to.object->CopyParts(copy_);
    }
    copy_.Close();
  }

  void Write(Byte* image, std::size_t size) const override {
    const Writer table = Writer(image, size).At(table_);
    Writer pointers = table.At(index_.offset);
    const std::size_t width = Object::kAddress * (Object::kHasSize ? 2 : 1);
    Writer out = table.At(index_.offset + width * items_.size());
    for (const Item<Object>& item : items_) {
      PutAddress(pointers, item.address);
      if (Object::kHasSize) PutAddress(pointers, item.size);
      item.object->Write(out);
    }
  }

 private:
  static std::uint32_t GetAddress(Reader& in) {
    return Object::kAddress == 2 ? in.Get<std::uint16_t>() : in.Get<std::uint32_t>();
  }
  static void PutAddress(Writer& out, std::uint32_t address) {
    if (Object::kAddress == 4) return out.Put(address);
    out.Put(static_cast<std::uint16_t>(address));
  }

  Block block_, copy_;
  std::uint32_t table_ = 0;
  Index index_{};
  std::span<Item<Object>> items_;
};

struct TimeEntry {
  std::uint16_t number_0;
  std::uint8_t number_2;
  std::uint32_t number_3;
};

struct Vobu {
  std::uint8_t number_0;
  std::uint16_t word_1;
};

struct TimeMap {
  std::uint16_t offset;
  std::uint32_t address_offset;
  std::span<TimeEntry> times;
  std::span<Vobu> vobus;

  void Read(Reader in, Block& block) {
    const Byte* from = in.Take(sizeof(tag_TMAP_GI));
    const unsigned time_count = FromFile<std::uint16_t>(from);
    const unsigned vobu_count = FromFile<std::uint16_t>(from + 2);
    offset = FromFile<std::uint16_t>(from + 4);
    address_offset = FromFile<std::uint32_t>(from + 6);
    from = in.Take(sizeof(tag_TM_ENT) * time_count);
    times = {block.Make<TimeEntry>(time_count), time_count};
    for (TimeEntry& time : times) {
      time = {FromFile<std::uint16_t>(from), from[2], FromFile<std::uint32_t>(from + 3)};
      from += sizeof(tag_TM_ENT);
    }
    from = in.Take(sizeof(tag_VOBU_ENT) * vobu_count);
    vobus = {block.Make<Vobu>(vobu_count), vobu_count};
    for (Vobu& vobu : vobus) {
      vobu = {*from, FromFile<std::uint16_t>(from + 1)};
      from += sizeof(tag_VOBU_ENT);
    }
  }

  void Write(Writer& out) const {
    out.Put(static_cast<std::uint16_t>(times.size()));
    out.Put(static_cast<std::uint16_t>(vobus.size()));
    out.Put(offset);
    out.Put(address_offset);
    Byte* to = out.Take(sizeof(tag_TM_ENT) * times.size());
    for (const TimeEntry& time : times) {
      ToFile(to, time.number_0);
      to[2] = time.number_2;
      ToFile(to + 3, time.number_3);
      to += sizeof(tag_TM_ENT);
    }
    to = out.Take(sizeof(tag_VOBU_ENT) * vobus.size());
    for (const Vobu& vobu : vobus) {
      to[0] = vobu.number_0;
      ToFile(to + 1, vobu.word_1);
      to += sizeof(tag_VOBU_ENT);
    }
  }
};

struct Seamless {
  Clock clocks[2];
};

struct Gaps {
  Clock clocks[2];
  std::uint16_t numbers[2];
};

struct Vob {
  static constexpr std::size_t kTable = offsetof(tag_VMGI_MAT_HEADER, M_AVFIT_SA);
  static constexpr unsigned kAddress = 4;
  static constexpr bool kHasSize = false;

  Byte type[2];
  Byte bytes_2[7];
  std::uint16_t number_21;
  Clock clocks[2];
  Seamless* seamless;
  Gaps* gaps;
  TimeMap* map;

  static Index Find(const Reader& table) {
    const unsigned streams = *table.At(offsetof(tag_M_AVFITI, M_VOB_STI_Ns)).Take(1);
    const std::size_t index = sizeof(tag_M_AVFITI) + sizeof(tag_M_VOB_STI) * streams;
    return {index + sizeof(tag_M_AVFI_GI), table.At(index).Get<std::uint16_t>()};
  }

  bool IsSeamless() const { return (type[1] & 0x80U) != 0; }
  bool HasGaps() const { return (type[1] & 0x78U) != 0; }

  void Read(Reader in, std::size_t, Block& block) {
    *this = {};
    const Byte* from = in.Take(sizeof(tag_M_VOB_GI));
    std::memcpy(type, from, sizeof type);
    std::memcpy(bytes_2, from + 2, sizeof bytes_2);
    for (int i : {0, 1}) clocks[i] = ClockAt(from + 9 + 6 * i);
    number_21 = FromFile<std::uint16_t>(from + 21);
    if (IsSeamless()) {
      from = in.Take(sizeof(tag_SMLI));
      seamless = block.Make<Seamless>();
      for (int i : {0, 1}) seamless->clocks[i] = ClockAt(from + 6 * i);
    }
    if (HasGaps()) {
      from = in.Take(sizeof(tag_AGAPI));
      gaps = block.Make<Gaps>();
      for (int i : {0, 1}) gaps->clocks[i] = ClockAt(from + 6 * i);
      for (int i : {0, 1}) gaps->numbers[i] = FromFile<std::uint16_t>(from + 12 + 2 * i);
    }
    map = block.Make<TimeMap>();
    map->Read(in, block);
  }

  void CopyParts(Block& block) {
    if (seamless != nullptr) seamless = Copied<Seamless>({seamless, 1}, block).data();
    if (gaps != nullptr) gaps = Copied<Gaps>({gaps, 1}, block).data();
    map = Copied<TimeMap>({map, 1}, block).data();
    map->times = Copied<TimeEntry>(map->times, block);
    map->vobus = Copied<Vobu>(map->vobus, block);
  }

  void Write(Writer& out) const {
    Byte* to = out.Take(sizeof(tag_M_VOB_GI));
    std::memcpy(to, type, sizeof type);
    std::memcpy(to + 2, bytes_2, sizeof bytes_2);
    for (int i : {0, 1}) PutClock(to + 9 + 6 * i, clocks[i]);
    ToFile(to + 21, number_21);
    if (IsSeamless()) {
      to = out.Take(sizeof(tag_SMLI));
      for (int i : {0, 1}) PutClock(to + 6 * i, seamless->clocks[i]);
    }
    if (HasGaps()) {
      to = out.Take(sizeof(tag_AGAPI));
      for (int i : {0, 1}) PutClock(to + 6 * i, gaps->clocks[i]);
      for (int i : {0, 1}) ToFile(to + 12 + 2 * i, gaps->numbers[i]);
    }
    map->Write(out);
  }
};

struct Entry {
  std::uint8_t type;
  std::uint8_t reserved_1;  // of a still cell
  Clock time;               // of a movie cell
  Byte* block;
};

/// A cell of either kind.
struct Cell {
  static constexpr std::size_t kTable = offsetof(tag_VMGI_MAT_HEADER, ORG_PGCI_SA);
  static constexpr unsigned kAddress = 4;
  static constexpr bool kHasSize = false;

  std::uint8_t reserved_0, type;
  std::uint16_t number_2;
  Byte reserved_6[2];  // of a still cell
  Clock clocks[2];     // of a movie cell
  std::span<Entry> entries;

  static Index Find(const Reader& table) {
    const unsigned programs = *table.At(offsetof(tag_PGC_GI, PG_Ns)).Take(1);
    return {sizeof(tag_PGC_GI) + sizeof(tag_PGI) * programs,
            table.At(offsetof(tag_PGC_GI, CI_SRP_Ns)).Get<std::uint16_t>()};
  }

  bool IsStill() const { return CellKind(type) == CELL_STILL; }
  std::size_t EntrySize() const { return IsStill() ? 2 : 7; }

  void Read(Reader in, std::size_t, Block& block) {
    *this = {};
    reserved_0 = in.Get<std::uint8_t>();
    type = in.Get<std::uint8_t>();
    number_2 = in.Get<std::uint16_t>();
    const unsigned count = in.Get<std::uint16_t>();
    if (IsStill()) {
      std::memcpy(reserved_6, in.Take(2), 2);
    } else {
      const Byte* from = in.Take(12);
      for (int i : {0, 1}) clocks[i] = ClockAt(from + 6 * i);
    }
    entries = {block.Make<Entry>(count), count};
    for (Entry& entry : entries) {
      const Byte* from = in.Take(EntrySize());
      entry = {from[0], from[1], {}, nullptr};
      if (!IsStill()) entry.time = ClockAt(from + 1);
      if (!IsLongEntry(entry.type)) continue;
      entry.block = block.Make<Byte>(kEntryBlockSize);
      std::memcpy(entry.block, in.Take(kEntryBlockSize), kEntryBlockSize);
    }
  }

  void CopyParts(Block& block) {
    entries = Copied<Entry>(entries, block);
    for (Entry& entry : entries) {
      if (entry.block == nullptr) continue;
      entry.block = Copied<Byte>({entry.block, kEntryBlockSize}, block).data();
    }
  }

  void Write(Writer& out) const {
    out.Put(reserved_0);
    out.Put(type);
    out.Put(number_2);
    out.Put(static_cast<std::uint16_t>(entries.size()));
    if (IsStill()) {
      std::memcpy(out.Take(2), reserved_6, 2);
    } else {
      Byte* to = out.Take(12);
      for (int i : {0, 1}) PutClock(to + 6 * i, clocks[i]);
    }
    for (const Entry& entry : entries) {
      Byte* to = out.Take(EntrySize());
      *to = entry.type;
      if (IsStill()) {
        to[1] = entry.reserved_1;
      } else {
        PutClock(to + 1, entry.time);
      }
      if (entry.block != nullptr) {
        std::memcpy(out.Take(kEntryBlockSize), entry.block, kEntryBlockSize);
      }
    }
  }
};

/// An entry of any form.
struct StillEntry {
  std::uint8_t type, packs;
  std::uint16_t first_packs, first_word;  // of the first extension
  std::uint16_t second_word;              // of the second one
  std::uint8_t second_byte;

  bool HasFirst() const { return (type & 0x40U) != 0; }
  bool HasSecond() const { return (type & 0x80U) != 0; }

  void Read(Reader& in) {
    *this = {};
    type = in.Get<std::uint8_t>();
    packs = in.Get<std::uint8_t>();
    if (HasFirst()) {
      first_packs = in.Get<std::uint16_t>();
      first_word = in.Get<std::uint16_t>();
    }
    if (HasSecond()) {
      second_word = in.Get<std::uint16_t>();
      second_byte = in.Get<std::uint8_t>();
    }
  }

  void Write(Writer& out) const {
    out.Put(type);
    out.Put(packs);
    if (HasFirst()) {
      out.Put(first_packs);
      out.Put(first_word);
    }
    if (HasSecond()) {
      out.Put(second_word);
      out.Put(second_byte);
    }
  }
};

struct StillGroup {
  static constexpr std::size_t kTable = offsetof(tag_VMGI_MAT_HEADER, S_AVFIT_SA);
  static constexpr unsigned kAddress = 4;
  static constexpr bool kHasSize = false;

  std::uint32_t number_12;
  std::uint16_t number_16;
  Byte bytes_1[11];
  std::span<StillEntry> entries;

  static Index Find(const Reader& table) {
    const unsigned streams = *table.At(offsetof(tag_S_AVFITI, S_VOB_STI_Ns)).Take(1);
    const std::size_t index = sizeof(tag_S_AVFITI) + sizeof(tag_S_VOB_STI) * streams;
    return {index + sizeof(tag_S_AVFI_GI), table.At(index).Get<std::uint16_t>()};
  }

  void Read(Reader in, std::size_t, Block& block) {
    const unsigned count = in.Get<std::uint8_t>();
    std::memcpy(bytes_1, in.Take(sizeof bytes_1), sizeof bytes_1);
    number_12 = in.Get<std::uint32_t>();
    number_16 = in.Get<std::uint16_t>();
    entries = {block.Make<StillEntry>(count), count};
    for (StillEntry& entry : entries) entry.Read(in);
  }

  void CopyParts(Block& block) { entries = Copied<StillEntry>(entries, block); }

  void Write(Writer& out) const {
    out.Put(static_cast<std::uint8_t>(entries.size()));
    std::memcpy(out.Take(sizeof bytes_1), bytes_1, sizeof bytes_1);
    out.Put(number_12);
    out.Put(number_16);
    for (const StillEntry& entry : entries) entry.Write(out);
  }
};

struct Text {
  std::uint8_t code, length;
  Byte* text;
};

struct TextSet {
  static constexpr std::size_t kTable = offsetof(tag_VMGI_MAT_HEADER, TXTDT_MG_SA);
  static constexpr unsigned kAddress = 2;
  static constexpr bool kHasSize = true;

  std::span<Text> texts;

  static Index Find(const Reader& table) {
    return {sizeof(tag_TXTDITI),
            table.At(offsetof(tag_TXTDITI, IT_TXT_SRP_Ns)).Get<std::uint16_t>()};
  }

  void Read(Reader in, std::size_t size, Block& block) {
    const Byte* from = in.Take(size);
    const Byte* const end = from + size;
    std::size_t count = 0;
    for (const Byte* next = from; next < end; next += 2 + next[1]) ++count;
    texts = {block.Make<Text>(count), count};
    Byte* room = block.Make<Byte>(size - 2 * count);
    for (Text& text : texts) {
      text = {from[0], from[1], room};
      std::memcpy(room, from + 2, text.length);
      room += text.length;
      from += 2 + text.length;
    }
  }

  void CopyParts(Block& block) {
    texts = Copied<Text>(texts, block);
    for (Text& text : texts) text.text = Copied<Byte>({text.text, text.length}, block).data();
  }

  void Write(Writer& out) const {
    for (const Text& text : texts) {
      Byte* to = out.Take(2U + text.length);
      to[0] = text.code;
      to[1] = text.length;
      std::memcpy(to + 2, text.text, text.length);
    }
  }
};

}  // namespace

std::unique_ptr<Floor> FloorOfVobs() { return std::make_unique<FloorOf<Vob>>(); }
std::unique_ptr<Floor> FloorOfCells() { return std::make_unique<FloorOf<Cell>>(); }
std::unique_ptr<Floor> FloorOfStillGroups() { return std::make_unique<FloorOf<StillGroup>>(); }
std::unique_ptr<Floor> FloorOfTexts() { return std::make_unique<FloorOf<TextSet>>(); }
