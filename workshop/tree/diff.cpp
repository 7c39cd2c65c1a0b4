#include "veska/workshop/diff.h"

#include <veska/cell_points.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "basis/tables.h"
#include "basis/text.h"
#include "tree/diff.h"
#include "tree/json_tree.h"

namespace VESKA::workshop {
namespace {

std::string ValueText(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

/// Which items of two lists belong together: pairs of indices, -1 for none, in order.
class Alignment {
 public:
  using Pairs = std::vector<std::pair<int, int>>;

  static Pairs Of(const Json& a, const Json& b) { return Alignment(a, b).Align(); }

 private:
  /// Beyond this many comparisons, items are taken in order.
  static constexpr std::size_t kMostCells = std::size_t{1} << 22U;

  Alignment(const Json& a, const Json& b) : a_(a), b_(b) {}

  bool Same(std::size_t i, std::size_t j) const { return a_[i] == b_[j]; }
  static int Index(std::size_t i) { return static_cast<int>(i); }

  Pairs Align() {
    const std::size_t shorter = std::min(a_.size(), b_.size());
    std::size_t head = 0;
    while (head < shorter && Same(head, head)) ++head;
    std::size_t tail = 0;
    while (tail < shorter - head && Same(a_.size() - 1 - tail, b_.size() - 1 - tail)) ++tail;
    for (std::size_t i = 0; i < head; ++i) Add(i, i);
    Middle(head, a_.size() - tail, head, b_.size() - tail);
    for (std::size_t i = tail; i > 0; --i) Add(a_.size() - i, b_.size() - i);
    return std::move(pairs_);
  }

  void Add(std::size_t i, std::size_t j) { pairs_.emplace_back(Index(i), Index(j)); }

  /// Between the ends that are equal: the longest common subsequence, and what stands between its
  /// items is paired in order.
  void Middle(std::size_t a, std::size_t a_end, std::size_t b, std::size_t b_end) {
    const std::size_t rows = a_end - a;
    const std::size_t columns = b_end - b;
    if (rows == columns || rows * columns > kMostCells) return Pair(a, a_end, b, b_end);
    std::vector<std::size_t> longest((rows + 1) * (columns + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& {
      return longest[i * (columns + 1) + j];
    };
    for (std::size_t i = rows; i-- > 0;) {
      for (std::size_t j = columns; j-- > 0;) {
        at(i, j) = Same(a + i, b + j) ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
      }
    }
    std::size_t i = 0;
    std::size_t j = 0;
    std::size_t i_paired = 0;
    std::size_t j_paired = 0;
    while (i < rows && j < columns) {
      if (Same(a + i, b + j)) {
        Pair(a + i_paired, a + i, b + j_paired, b + j);
        Add(a + i++, b + j++);
        i_paired = i;
        j_paired = j;
      } else {
        ++(at(i + 1, j) >= at(i, j + 1) ? i : j);
      }
    }
    Pair(a + i_paired, a_end, b + j_paired, b_end);
  }

  void Pair(std::size_t a, std::size_t a_end, std::size_t b, std::size_t b_end) {
    while (a < a_end || b < b_end) {
      pairs_.emplace_back(a < a_end ? Index(a++) : -1, b < b_end ? Index(b++) : -1);
    }
  }

  const Json& a_;
  const Json& b_;
  Pairs pairs_;
};

class Differ {
 public:
  /// With `skips_lost`, cell points that only in the second tree name none are left out.
  explicit Differ(const DecodeText& decode, bool skips_lost = false)
      : decode_(decode), skips_lost_(skips_lost) {}

  std::vector<std::string> Take() { return std::move(lines_); }

  /// `path` names the place as `InWords` does. `a` and `b` say which items of lists belong
  /// together; `full_a` and `full_b`, the same trees with more keys, are compared.
  void Compare(const std::string& path, const Json& a, const Json& b, const Json& full_a,
               const Json& full_b) {
    if (full_a == full_b || (skips_lost_ && IsLost(full_b))) return;
    if (full_a.is_object() && full_b.is_object() && !full_a.contains("hex")) {
      Objects(path, a, b, full_a, full_b);
    } else if (full_a.is_array() && full_b.is_array()) {
      Lists(path, a, b, full_a, full_b);
    } else {
      Values(path, full_a, full_b);
    }
  }

 private:
  void Line(std::string text) { lines_.push_back(std::move(text)); }

  static bool IsLost(const Json& point) {
    return point.is_object() && point.contains("cell") && point["cell"] == kNoCell;
  }

  static const Json& At(const Json& object, const std::string& key) {
    static const Json kNone = Json::object();
    const auto value = object.find(key);
    return value == object.end() ? kNone : *value;
  }

  void Objects(const std::string& path, const Json& a, const Json& b, const Json& full_a,
               const Json& full_b) {
    const auto inside = [&path](const std::string& key) {
      return path.empty() ? key : path + " / " + key;
    };
    for (const auto& [key, value] : full_a.items()) {
      if (full_b.contains(key)) {
        Compare(inside(key), At(a, key), At(b, key), value, full_b[key]);
      } else {
        Line(inside(key) + ": only in the first");
      }
    }
    for (const auto& [key, value] : full_b.items()) {
      if (!full_a.contains(key)) Line(inside(key) + ": only in the second");
    }
  }

  void Lists(const std::string& path, const Json& a, const Json& b, const Json& full_a,
             const Json& full_b) {
    const std::string list = path.substr(path.rfind(' ') + 1);
    const std::string stem = path.substr(0, path.size() - list.size()) + Singular(list) + " ";
    for (const auto& [i, j] : Alignment::Of(a, b)) {
      const auto number = [](int index) { return std::to_string(index + 1); };
      if (j < 0) {
        Line(stem + number(i) + ": only in the first");
      } else if (i < 0) {
        Line(stem + number(j) + ": only in the second");
      } else {
        const std::string name = stem + number(i) + (i == j ? "" : " (now " + number(j) + ")");
        const auto at = [](const Json& from, int index) -> const Json& {
          return from[static_cast<std::size_t>(index)];
        };
        Compare(name, at(a, i), at(b, j), at(full_a, i), at(full_b, j));
      }
    }
  }

  void Values(const std::string& path, const Json& a, const Json& b) {
    if (a.is_object()) return Texts(path, a, b);
    const std::string from = ValueText(a);
    const std::string to = ValueText(b);
    if (a.is_string() && from.size() == to.size() && from.size() > kLongHex) {
      return LongHex(path, from, to);
    }
    Line(path + ": " + from + " -> " + to);
  }

  std::optional<std::string> TextOf(const Json& value) const {
    const std::optional<std::string> bytes = Unescaped(value["text"].get_ref<const std::string&>());
    return PlainText({reinterpret_cast<const unsigned char*>(bytes->data()), bytes->size()},
                     decode_);
  }

  /// {"hex", "text"}: the text says enough where it can be shown and differs.
  void Texts(const std::string& path, const Json& a, const Json& b) {
    const auto from = TextOf(a);
    const auto to = TextOf(b);
    if (from && to && *from != *to) return Line(path + ": " + Quoted(*from) + " -> " + Quoted(*to));
    Values(path, a["hex"], b["hex"]);
  }

  void LongHex(const std::string& path, const std::string& from, const std::string& to) {
    const auto first =
        static_cast<std::size_t>(std::mismatch(from.begin(), from.end(), to.begin()).first -
                                 from.begin()) /
        2;
    const auto behind =
        static_cast<std::size_t>(from.rend() -
                                 std::mismatch(from.rbegin(), from.rend(), to.rbegin()).first + 1) /
        2;
    const auto part = [&](const std::string& hex) {
      return hex.substr(2 * first, 2 * (behind - first));
    };
    Line(path + ": bytes " + std::to_string(first) + " to " + std::to_string(behind - 1) + ": " +
         part(from) + " -> " + part(to));
  }

  static constexpr std::size_t kLongHex = 32;
  const DecodeText& decode_;
  bool skips_lost_;
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> DifferencesOfEdit(const CVMGInfo& before, const CVMGInfo& after,
                                           const DecodeText& decode) {
  const Json tree_before = TreeOf(before);
  const Json tree_after = TreeOf(after);
  Differ differ(decode, true);
  differ.Compare("", tree_before, tree_after, tree_before, tree_after);
  return differ.Take();
}

std::vector<std::string> Differences(const CVMGInfo& a, const CVMGInfo& b, bool derived,
                                     const DecodeText& decode) {
  const Json tree_a = TreeOf(a);
  const Json tree_b = TreeOf(b);
  Differ differ(decode);
  if (derived || tree_a == tree_b) {
    differ.Compare("", tree_a, tree_b, TreeOf(a, true), TreeOf(b, true));
  } else {
    differ.Compare("", tree_a, tree_b, tree_a, tree_b);
  }
  return differ.Take();
}

}  // namespace VESKA::workshop
