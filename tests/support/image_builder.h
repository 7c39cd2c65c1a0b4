/// Images built byte by byte, so that a test states what stands in the file instead of asking the
/// library for it.
///
/// The fields of records lie unaligned and the macros of GoogleTest take references, so the tests
/// read a field by value: with a unary plus.
#pragma once

#include <gtest/gtest.h>
#include <veska/veska.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace VESKA {

struct Bytes : std::vector<unsigned char> {
  using std::vector<unsigned char>::vector;

  Bytes& operator+=(const Bytes& more) {
    insert(end(), more.begin(), more.end());
    return *this;
  }
  friend Bytes operator+(Bytes bytes, const Bytes& more) { return bytes += more; }

  Bytes Part(std::uint64_t offset, std::uint64_t size) const {
    const auto from = begin() + static_cast<std::ptrdiff_t>(offset);
    return {from, from + static_cast<std::ptrdiff_t>(size)};
  }
  /// The same with `other` in the place of the bytes at `offset`.
  Bytes With(std::size_t offset, const Bytes& other) const {
    Bytes result = *this;
    for (std::size_t i = 0; i < other.size(); ++i) result.at(offset + i) = other[i];
    return result;
  }
};

inline Bytes Zeros(std::size_t size) { return Bytes(size); }
/// A number of `width` bytes, the most significant one first.
inline Bytes Number(std::uint64_t value, unsigned width) {
  Bytes bytes(width);
  for (unsigned i = width; i-- > 0; value >>= 8U) bytes[i] = static_cast<unsigned char>(value);
  return bytes;
}
inline Bytes Byte(std::size_t value) { return Number(value, 1); }
inline Bytes Word(std::size_t value) { return Number(value, 2); }
inline Bytes Long(std::size_t value) { return Number(value, 4); }
/// first, first + 1, first + 2 ...: at every place another byte, up to 256.
inline Bytes Ramp(std::size_t size, unsigned first = 0) {
  Bytes bytes(size);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(first++);
  return bytes;
}
/// Pairs of hexadecimal digits with any blanks between them.
inline Bytes Hex(const std::string& digits) {
  Bytes bytes;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (digits[i] == ' ') continue;
    bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    ++i;
  }
  return bytes;
}
/// The characters, then zeros up to `size`.
inline Bytes Text(const std::string& text, std::size_t size) {
  return Zeros(size).With(0, Bytes(text.begin(), text.end()));
}

/// A cell without entry points.
inline Bytes MovieCell() { return Zeros(18); }
inline Bytes StillCell() { return Hex("00 20 00 00 00 00 00 00"); }
inline Bytes Program(unsigned cells, const Bytes& cell_point) {
  return Zeros(2) + Word(cells) + Zeros(130) + cell_point;
}
/// Addresses of `width` bytes, the first one `base`, then what they point to back to back.
inline Bytes Pointed(std::size_t base, const std::vector<Bytes>& parts) {
  Bytes pointers;
  Bytes behind;
  for (const Bytes& part : parts) {
    pointers += Long(base + 4 * parts.size() + behind.size());
    behind += part;
  }
  return pointers + behind;
}
inline Bytes Chain(const std::vector<Bytes>& programs, const std::vector<Bytes>& cells) {
  Bytes chain = Byte(0) + Byte(programs.size()) + Word(cells.size());
  for (const Bytes& program : programs) chain += program;
  return chain + Pointed(chain.size(), cells);
}
inline Bytes UserChains(const std::vector<Bytes>& chains) {
  const Bytes rest = Pointed(6, chains);
  return Byte(0) + Byte(chains.size()) + Long(5 + rest.size()) + rest;
}
inline Bytes PlayLists(const std::vector<Bytes>& play_lists) {
  Bytes table = Zeros(3) + Byte(play_lists.size()) + Long(7 + 146 * play_lists.size());
  for (const Bytes& play_list : play_lists) table += play_list;
  return table;
}

/// The image with damage of one of four kinds: cut, zeroed in a place, with a part of itself in
/// another place, or with a few bytes at random.
inline Bytes RandomlyDamaged(const Bytes& image, std::mt19937& random, unsigned kind) {
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  const std::size_t offset = below(image.size());
  const std::size_t size = std::min<std::size_t>(below(300), image.size() - offset);
  if (kind % 4 == 0) return image.Part(0, offset);
  if (kind % 4 == 1) return image.With(offset, Zeros(size));
  if (kind % 4 == 2) {
    return image.With(offset, image.Part(below(image.size() - size + 1), size));
  }
  Bytes damaged = image;
  for (unsigned i = 0; i <= kind % 5; ++i) {
    damaged[below(image.size())] = static_cast<unsigned char>(below(256));
  }
  return damaged;
}

/// A whole file: its tables, which `Image` lays out.
struct File {
  Bytes header = Text("DVD_RTR_VMG0", 512);
  Bytes play_lists = PlayLists({});
  Bytes movie = Hex("00 00 00 00 00 00 00 07");
  Bytes still = Hex("00 00 00 00 00 00 00 07");
  Bytes chain = Chain({}, {});
  Bytes user_chains;
  Bytes texts;
  Bytes manufacturers;

  Bytes Image() const {
    Bytes image = header + play_lists;
    image = image.With(28, Long(image.size() - 1));
    const auto add = [&image](std::size_t pointer, const Bytes& table) {
      if (!table.empty()) image = image.With(pointer, Long(image.size())) + table;
    };
    add(256, movie);
    add(260, still);
    add(304, chain);
    add(308, user_chains);
    add(352, texts);
    add(356, manufacturers);
    return image.With(12, Long(image.size() - 1));
  }
};

template <class Record>
Bytes MemoryOf(const Record& record) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
  return {bytes, bytes + sizeof record};
}

/// Parses bytes that end where their memory ends, so that a sanitizer sees any read past them.
template <class Table, class... Arguments>
void Parse(Table& table, const Bytes& bytes, Arguments... arguments) {
  Bytes image = bytes;
  EXPECT_TRUE(table.Parse(image.data(), arguments...));
  EXPECT_EQ(image, bytes) << "parsing changed the image";
}

/// What a table writes, which must be what its size says and must not change it.
template <class Table>
Bytes Written(Table& table) {
  constexpr std::size_t kGuard = 64;
  const std::size_t size = table.GetDataSize();
  Bytes out(kGuard + size + kGuard, 0xEE);
  table.GetData(out.data() + kGuard);
  const Bytes guard(kGuard, 0xEE);
  EXPECT_EQ(out.Part(0, kGuard), guard) << "written before the start";
  EXPECT_EQ(out.Part(kGuard + size, kGuard), guard) << "written past the size";
  Bytes again(size, 0xEE);
  table.GetData(again.data());
  EXPECT_EQ(out.Part(kGuard, size), again) << "writing changed the object";
  return again;
}

/// What a table writes once it is complete.
template <class Table, class... Arguments>
Bytes Completed(Table& table, Arguments... arguments) {
  table.AutoComplete(arguments...);
  return Written(table);
}

/// What has to hold of every table whose image is as the library writes it.
template <class Table>
void ExpectRoundTrip(const Bytes& image) {
  Table table;
  Parse(table, image);
  EXPECT_EQ(Written(table), image);
  Table copy = table;
  table.Clear();
  EXPECT_EQ(MemoryOf(table.GetHeader()), Zeros(sizeof table.GetHeader()));
  EXPECT_EQ(Completed(copy), image);
  EXPECT_NE(Completed(table), image);
  table = copy;
  copy = *&copy;
  copy.AutoComplete();  // a copied chain has no addresses of cells yet
  EXPECT_EQ(Written(copy), image);
  EXPECT_EQ(Completed(table), image);
}

inline bool Load(CVMGInfo& info, const Bytes& image, unsigned char flags = CVMGInfo::kLoadAll) {
  Bytes copy = image;
  const bool loaded =
      info.LoadFromMemory(copy.data(), static_cast<unsigned long>(copy.size()), flags);
  EXPECT_EQ(copy, image) << "loading changed the image";
  return loaded;
}

template <class Content = Bytes>
Content ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Content(std::istreambuf_iterator<char>(file), {});
}
inline Bytes Sample(const std::string& name) { return ReadFile(VESKA_SAMPLES "/" + name + ".ifo"); }
inline constexpr const char* kSamples[] = {"empty", "still_camera", "odd_layout", "mixed_full",
                                           "movie_recorder"};

/// Calls `visit(damaged image, original)` for `count` damages of each sample, until one fails.
template <class Visit>
void ForEachDamaged(unsigned count, Visit&& visit) {
  std::mt19937 random(20061);
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    for (unsigned i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
      SCOPED_TRACE(std::string(sample) + " " + std::to_string(i));
      visit(RandomlyDamaged(image, random, i), image);
    }
  }
}

}  // namespace VESKA
