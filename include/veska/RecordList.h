/// The record list: the one list behind every table.
#pragma once

#include <veska/RecordRange.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace VESKA {

/// Whether a record or two of this kind lie within their list. A file may hold tens of thousands of
/// lists with a single small record, and an allocation for each would cost more than all else in
/// them.
template <class Record>
inline constexpr bool kLiesWithinList = std::is_trivially_copyable_v<Record> &&
                                        sizeof(Record) <= 16;

/// An ordered list of at most `Limit` records, as many as the count field in the file can hold.
///
/// The list owns its records. They lie in exact-size slots of blocks of memory: a record keeps its
/// slot, and so its address, until it is deleted or the list is cleared or assigned to. Inserting,
/// deleting, swapping and moving change positions only. A deleted record's slot is used again.
///
/// As loaded, all records lie in order in one block (the base) and cost their own size; a record or
/// two of few bytes lie within the list itself (see `kLiesWithinList`). The first edit that
/// disturbs that order adds an array of pointers, which holds the order from then on.
///
/// Moving and swapping lists takes the blocks along, and so leaves the records where they are, but
/// for those that lie within the list. A list that was moved from is empty.
///
/// Positions are 0-based. An operation that is given a position out of range, that would pass
/// `Limit` or that finds no memory returns null or false and changes nothing. Only copying,
/// `Reserve` and `Load` throw (`std::bad_alloc`). One thread at a time.
template <class Record, int Limit>
class RecordList {
  static_assert(Limit > 0 && Limit <= 0xFFFF, "counts in the file have at most 16 bits");

 public:
  RecordList() = default;
  /// Copies the records into one block, in order. Throws `std::bad_alloc`.
  RecordList(const RecordList& other) : RecordList() { Append(other); }
  /// As by copying; the list stays as it is where that throws.
  RecordList& operator=(const RecordList& other) {
    if (this != &other) *this = RecordList(other);
    return *this;
  }
  RecordList(RecordList&& other) noexcept { Take(other); }
  RecordList& operator=(RecordList&& other) noexcept {
    if (this != &other) {
      Clear();
      Take(other);
    }
    return *this;
  }
  ~RecordList() { Clear(); }

  ///@{
  /// The number of records.
  int Count() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  ///@}

  ///@{
  /// The record at position `i`, null when out of range.
  Record* Get(int i) { return InRange(i) ? At(i) : nullptr; }
  const Record* Get(int i) const { return InRange(i) ? At(i) : nullptr; }
  ///@}

  /// Appends a record made from `arguments` (zero bytes, or an empty object, without any).
  template <class... Arguments>
  Record* Add(Arguments&&... arguments) {
    return Place(count_, std::forward<Arguments>(arguments)...);
  }

  /// Places a new record before position `i`, which must be that of a record: appending is `Add`'s
  /// job.
  template <class... Arguments>
  Record* Insert(int i, Arguments&&... arguments) {
    return InRange(i) ? Place(i, std::forward<Arguments>(arguments)...) : nullptr;
  }

  /// Deletes the record at position `i`.
  bool Delete(int i) { return Delete(i, i); }

  /// Deletes the records at positions `first` to `last`, both included; false when first > last.
  bool Delete(int first, int last) {
    if (!InRange(first) || !InRange(last) || first > last) return false;
    const bool at_end = last == count_ - 1 && edits_ == nullptr;
    if (!at_end && !StartEdits()) return false;
    for (int i = first; i <= last; ++i) std::destroy_at(At(i));
    if (!at_end) edits_->Remove(first, last);
    count_ = static_cast<std::uint16_t>(count_ - (last - first + 1));
    return true;
  }

  /// Exchanges the positions of two records.
  bool Swap(int a, int b) {
    if (!InRange(a) || !InRange(b)) return false;
    if (a == b) return true;
    if (!StartEdits()) return false;
    std::swap(edits_->order.begin()[a], edits_->order.begin()[b]);
    return true;
  }

  /// Moves the block of records at positions `first` to `last` so that it stands at `first + shift`
  /// to `last + shift`. An empty block (first = last + 1) moves nothing and is true; first > last +
  /// 1 is false.
  bool Move(int first, int last, int shift) {
    const auto to = std::int64_t{first} + shift;
    if (!InRange(first) || !InRange(last) || first > last + 1 || to < 0 ||
        std::int64_t{last} + shift >= count_) {
      return false;
    }
    if (shift == 0 || first > last) return true;
    if (!StartEdits()) return false;
    Record** const begin = edits_->order.begin();
    if (shift > 0) {
      std::rotate(begin + first, begin + last + 1, begin + last + 1 + shift);
    } else {
      std::rotate(begin + first + shift, begin + first, begin + last + 1);
    }
    return true;
  }

  /// Deletes every record and gives the memory back.
  void Clear() {
    if constexpr (!std::is_trivially_destructible_v<Record>) {
      for (Record& record : *this) std::destroy_at(&record);
    }
    if (edits_ != nullptr) delete std::exchange(edits_, nullptr);
    count_ = 0;
    FreeBlock();
  }

  /// What `Reserve` asks of the heap, in bytes.
  static constexpr std::uint64_t BlockSize(int count, std::uint64_t spare = 0) {
    if (count <= kInline && spare == 0) return 0;
    const auto records = static_cast<std::uint64_t>(std::max(count, kInline + 1));
    return records * sizeof(Record) + sizeof(std::uint32_t) + spare;
  }

  /// On an empty list: makes room for `count` records in one block, and for `spare` bytes behind
  /// them that `Spare` hands out. Otherwise does nothing. Throws `std::bad_alloc`.
  void Reserve(int count, std::uint32_t spare = 0) {
    if (count_ != 0 || edits_ != nullptr || count > Limit) return;
    if (count <= capacity_ && spare <= Spare().size()) return;
    FreeBlock();
    count = std::max(count, kInline + 1);
    const std::uint64_t size = BlockSize(count, spare);
    if (size > std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
    room_.block = static_cast<Record*>(::operator new(static_cast<std::size_t>(size)));
    capacity_ = static_cast<std::uint16_t>(count);
    std::memcpy(BehindBlock(), &spare, sizeof spare);
  }

  /// The spare bytes of `Reserve`. They live until the list is cleared.
  std::span<unsigned char> Spare() const {
    if (!HasBlock()) return {};
    std::uint32_t size = 0;
    std::memcpy(&size, BehindBlock(), sizeof size);
    return {BehindBlock() + sizeof size, size};
  }

  /// Makes the list `count` records whose bytes the caller sets next, and makes room for `spare`
  /// bytes as `Reserve` does. For records that are plain bytes.
  Record* Load(int count, std::uint32_t spare = 0) {
    static_assert(std::is_trivially_copyable_v<Record>);
    Renew(count, spare);
    count_ = static_cast<std::uint16_t>(count);
    return Base();
  }

  /// Makes room as `Reserve` does in a list that is read anew, whatever it holds. Where the block
  /// that it has is hardly larger than needed, the first records stay, `count` at most, to be read
  /// over; otherwise the list is empty then. Throws `std::bad_alloc`.
  void Renew(int count, std::uint32_t spare = 0) {
    if (!Suits(count, spare)) {
      Clear();
      return Reserve(count, spare);
    }
    if constexpr (!std::is_trivially_destructible_v<Record>) {
      for (int i = count; i < count_; ++i) std::destroy_at(Base() + i);
    }
    if (count < count_) count_ = static_cast<std::uint16_t>(count);
  }

  /// Of a list with room left by `Renew`: makes a record behind the last one from `arguments`.
  template <class... Arguments>
  Record& AddReserved(Arguments&&... arguments) {
    return *Construct(Base() + count_++, std::forward<Arguments>(arguments)...);
  }

  /// The records as one array while they lie in order in one block, else null.
  const Record* Contiguous() const { return edits_ == nullptr ? Base() : nullptr; }

  /// Equal when the records are, in order.
  bool operator==(const RecordList& other) const {
    return count_ == other.count_ && std::equal(begin(), end(), other.begin());
  }

  ///@{
  /// The records in order.
  auto begin() { return Range().begin(); }
  auto end() { return Range().end(); }
  auto begin() const { return Range().begin(); }
  auto end() const { return Range().end(); }
  ///@}

  ///@{
  /// The same as a range, of `Value`: the record or its public base.
  template <class Value = Record>
  RecordRange<Record, Value> Range() {
    return {{Base(), Positions(), 0}, {Base(), Positions(), count_}};
  }
  template <class Value = Record>
  RecordRange<Record, const Value> Range() const {
    return {{Base(), Positions(), 0}, {Base(), Positions(), count_}};
  }
  ///@}

 private:
  /// Pointers to the records, in order. There is room for more at both ends, so that an edit moves
  /// those before it or those behind it, whichever are fewer.
  class Order {
   public:
    void Start(Record* first, int count) {
      slots_.resize(Index(count));
      std::iota(begin(), end(), first);
    }
    Record** begin() { return slots_.data() + room_; }
    Record** end() { return slots_.data() + slots_.size(); }
    int Count() const { return static_cast<int>(slots_.size() - room_); }

    void Insert(int i, Record* record) {
      if (i >= Count() / 2) {
        // Deleting at the front and adding at the end would otherwise grow without end.
        if (slots_.size() == slots_.capacity() && room_ > slots_.size() / 4) {
          slots_.erase(slots_.begin(), Slot(0));
          room_ = 0;
        }
        slots_.insert(Slot(i), record);
        return;
      }
      if (room_ == 0) {
        const std::size_t room = slots_.size() / 4 + 4;
        slots_.insert(slots_.begin(), room, nullptr);
        room_ = room;
      }
      std::move(begin(), begin() + i, begin() - 1);
      --room_;
      begin()[i] = record;
    }

    void Erase(int first, int last) {
      if (first >= Count() - 1 - last) {
        slots_.erase(Slot(first), Slot(last + 1));
        return;
      }
      std::move_backward(begin(), begin() + first, begin() + last + 1);
      room_ += Index(last + 1 - first);
    }

   private:
    auto Slot(int i) { return slots_.begin() + static_cast<std::ptrdiff_t>(room_) + i; }

    std::vector<Record*> slots_;
    std::size_t room_ = 0;  // slots before the first record
  };

  /// What a list needs once its records no longer lie in order in the base.
  struct Edits {
    /// Gives a block of memory back.
    struct Free {
      /// That of `operator new`.
      void operator()(void* block) const { ::operator delete(block); }
    };

    void Remove(int first, int last) {
      try {
        free.insert(free.end(), order.begin() + first, order.begin() + last + 1);
      } catch (const std::bad_alloc&) {
        // The slots stay unused until the list is cleared.
      }
      order.Erase(first, last);
    }

    /// A free slot. Throws `std::bad_alloc`.
    Record* TakeSlot() {
      if (!free.empty()) return Pop(free);
      if (next == end) {
        const std::size_t slots = std::clamp<std::size_t>(Index(order.Count()), 4, 4096);
        blocks.reserve(blocks.size() + 1);
        blocks.emplace_back(::operator new(slots * sizeof(Record)));
        next = static_cast<Record*>(blocks.back().get());
        end = next + slots;
      }
      return next++;
    }

    /// Corrects the pointers to the first `count` slots, which were moved.
    void Rebase(Record* from, Record* to, int count) noexcept {
      const auto correct = [&](Record*& slot) {
        for (int i = 0; i <= count; ++i) {
          if (slot == from + i) return void(slot = to + i);
        }
      };
      std::for_each(order.begin(), order.end(), correct);
      std::for_each(free.begin(), free.end(), correct);
      if (end == from + count) {
        correct(next);
        correct(end);
      }
    }

    static Record* Pop(std::vector<Record*>& slots) {
      Record* slot = slots.back();
      slots.pop_back();
      return slot;
    }

    Order order;
    std::vector<Record*> free;
    std::vector<std::unique_ptr<void, Free>> blocks;
    Record* next = nullptr;
    Record* end = nullptr;
  };

  static constexpr bool kIsInline = kLiesWithinList<Record>;
  static constexpr std::size_t kRoom = std::max(sizeof(Record*), kIsInline ? sizeof(Record) : 0);
  static constexpr int kInline = kIsInline ? static_cast<int>(kRoom / sizeof(Record)) : 0;
  static constexpr std::uint16_t kInlineCapacity = kInline;

  union Room {
    unsigned char here[kRoom];
    Record* block;  // when there is one
  };

  bool HasBlock() const { return capacity_ > kInline; }
  Record* Base() {
    if (HasBlock()) return room_.block;
    return kInline == 0 ? nullptr : std::launder(reinterpret_cast<Record*>(room_.here));
  }
  Record* Base() const { return const_cast<RecordList*>(this)->Base(); }
  void FreeBlock() {
    if (HasBlock()) ::operator delete(room_.block);
    room_ = {};
    capacity_ = kInline;
  }

  /// Takes over what an empty list is to hold.
  void Take(RecordList& other) noexcept {
    Record* const from = other.Base();
    room_ = std::exchange(other.room_, {});
    edits_ = std::exchange(other.edits_, nullptr);
    count_ = std::exchange(other.count_, std::uint16_t{0});
    capacity_ = std::exchange(other.capacity_, kInlineCapacity);
    if (edits_ != nullptr && !HasBlock()) edits_->Rebase(from, Base(), kInline);
  }
  /// Where the size of the spare bytes stands, and then they.
  unsigned char* BehindBlock() const {
    return reinterpret_cast<unsigned char*>(room_.block + capacity_);
  }

  /// Whether the list's own block is one for `count` records and `spare` bytes: large enough, and
  /// by a sixteenth too large at most, since what a load may take follows from the image.
  bool Suits(int count, std::uint32_t spare) const {
    if (edits_ != nullptr || count > capacity_) return false;
    if (!HasBlock()) return spare == 0;
    const auto has = static_cast<std::uint32_t>(Spare().size());
    const std::uint64_t needed = BlockSize(count, spare);
    return spare <= has && BlockSize(capacity_, has) <= needed + needed / 16;
  }

  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  bool InRange(int i) const { return i >= 0 && i < count_; }
  Record* const* Positions() const { return edits_ == nullptr ? nullptr : edits_->order.begin(); }
  Record* At(int i) const { return edits_ == nullptr ? Base() + i : edits_->order.begin()[i]; }

  bool StartEdits() {
    if (edits_ != nullptr) return true;
    try {
      auto edits = std::make_unique<Edits>();
      edits->order.Start(Base(), count_);
      edits->next = Base() + count_;
      edits->end = Base() + capacity_;
      edits_ = edits.release();
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  template <class... Arguments>
  Record* Place(int i, Arguments&&... arguments) {
    if (count_ == Limit) return nullptr;
    try {
      if (capacity_ == 0 && edits_ == nullptr) Reserve(std::min(4, Limit));
      Record* slot = nullptr;
      if (edits_ == nullptr && i == count_ && count_ < capacity_) {
        slot = Construct(Base() + i, std::forward<Arguments>(arguments)...);
      } else {
        if (!StartEdits()) return nullptr;
        slot = PlaceEdited(i, std::forward<Arguments>(arguments)...);
      }
      ++count_;
      return slot;
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
  }

  template <class... Arguments>
  Record* PlaceEdited(int i, Arguments&&... arguments) {
    edits_->order.Insert(i, nullptr);
    try {
      Record* slot = edits_->TakeSlot();
      Construct(slot, std::forward<Arguments>(arguments)...);
      return edits_->order.begin()[i] = slot;
    } catch (...) {
      edits_->order.Erase(i, i);
      throw;
    }
  }

  template <class... Arguments>
  static Record* Construct(Record* slot, Arguments&&... arguments) {
    if constexpr (sizeof...(arguments) == 0 && !std::is_trivially_default_constructible_v<Record>) {
      return ::new (static_cast<void*>(slot)) Record;  // sets its fields itself, and only once
    } else {
      return ::new (static_cast<void*>(slot)) Record(std::forward<Arguments>(arguments)...);
    }
  }

  void Append(const RecordList& other) {
    Reserve(other.count_);
    if constexpr (std::is_trivially_copyable_v<Record>) {
      if (other.count_ != 0 && other.edits_ == nullptr) {
        std::memcpy(Base(), other.Base(), Index(other.count_) * sizeof(Record));
        count_ = other.count_;
        return;
      }
    }
    for (const Record& record : other) {
      Construct(Base() + count_, record);
      ++count_;
    }
  }

  Room room_{};
  Edits* edits_ = nullptr;
  std::uint16_t count_ = 0;
  std::uint16_t capacity_ = kInlineCapacity;  // records that fit into the base
};

}  // namespace VESKA
