/// Walking the records of a list.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <span>
#include <type_traits>

namespace VESKA {

/// Walks the records of a list in order, at random access. `Record` is what the list holds and
/// `Value` what is handed out: the record or its public base, const or not.
template <class Record, class Value>
class RecordIterator {
 public:
  ///@{
  /// What the standard library asks of an iterator.
  using iterator_category = std::random_access_iterator_tag;
  using value_type = std::remove_cv_t<Value>;
  using difference_type = std::ptrdiff_t;
  using pointer = Value*;
  using reference = Value&;

  RecordIterator() = default;
  /// One that hands out const records, of one that does not.
  template <class Other>
  requires(std::convertible_to<Other*, Value*> && !std::same_as<Other, Value>)
      RecordIterator(const RecordIterator<Record, Other>& other)
      : base_(other.base_), order_(other.order_), i_(other.i_) {}

  reference operator*() const { return order_ == nullptr ? base_[i_] : *order_[i_]; }
  pointer operator->() const { return &**this; }
  reference operator[](difference_type n) const { return *(*this + n); }

  RecordIterator& operator++() { return *this += 1; }
  RecordIterator& operator--() { return *this += -1; }
  RecordIterator operator++(int) { return {base_, order_, i_++}; }
  RecordIterator operator--(int) { return {base_, order_, i_--}; }
  RecordIterator& operator+=(difference_type n) {
    i_ += n;
    return *this;
  }
  RecordIterator& operator-=(difference_type n) { return *this += -n; }
  friend RecordIterator operator+(RecordIterator from, difference_type n) { return from += n; }
  friend RecordIterator operator+(difference_type n, RecordIterator from) { return from += n; }
  friend RecordIterator operator-(RecordIterator from, difference_type n) { return from -= n; }
  friend difference_type operator-(const RecordIterator& a, const RecordIterator& b) {
    return a.i_ - b.i_;
  }
  friend bool operator==(const RecordIterator& a, const RecordIterator& b) { return a.i_ == b.i_; }
  friend auto operator<=>(const RecordIterator& a, const RecordIterator& b) {
    return a.i_ <=> b.i_;
  }
  ///@}

  /// For the lists: one at position `i` of the records at `base` or, unless it is null, of those
  /// that `order` points to.
  RecordIterator(Record* base, Record* const* order, difference_type i)
      : base_(base), order_(order), i_(i) {}

 private:
  template <class, class>
  friend class RecordIterator;

  Record* base_ = nullptr;
  Record* const* order_ = nullptr;
  difference_type i_ = 0;
};

/// The records of a list in order, for a range-for and the algorithms of the standard library:
///
///     for (tag_PGI& program : chain.Programs()) program.number_132 = 0;
///
/// It holds no record itself and costs nothing to make and copy. It lasts as long as the list is
/// neither edited nor moved: a list operation ends it, though not the pointers to records.
template <class Record, class Value>
class RecordRange {
 public:
  /// The iterator.
  using Iterator = RecordIterator<Record, Value>;

  RecordRange() = default;
  /// For the lists.
  RecordRange(Iterator begin, Iterator end) : begin_(begin), end_(end) {}

  ///@{
  /// The ends, and the number of records between them.
  Iterator begin() const { return begin_; }
  Iterator end() const { return end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
  bool empty() const { return begin_ == end_; }
  ///@}

  /// The record at position `i`, which has to be one's.
  Value& operator[](std::ptrdiff_t i) const { return begin_[i]; }

 private:
  Iterator begin_;
  Iterator end_;
};

}  // namespace VESKA

/// Its iterators stay good without it. (`<span>` declares these as `<ranges>` does, and takes less
/// of a build.)
template <class Record, class Value>
inline constexpr bool std::ranges::enable_borrowed_range<VESKA::RecordRange<Record, Value>> = true;
template <class Record, class Value>
inline constexpr bool std::ranges::enable_view<VESKA::RecordRange<Record, Value>> = true;
