// A management file from JSON.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>

#include "cell_points.h"
#include "json_tree.h"
#include "tree.h"

namespace veska_tool {
namespace {

using VESKA::Field;
using VESKA::FieldKind;

std::string Escaped(const std::string& key) {
  std::string text;
  for (const char c : key) {
    text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  }
  return text;
}

/// What stands there, short enough for a line.
std::string Found(const Json& value) {
  if (value.is_object()) return "an object";
  if (value.is_array()) return "an array";
  std::string text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
  constexpr std::size_t kLongest = 40;
  if (text.size() > kLongest) text = text.substr(0, kLongest) + "...";
  return text;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

class Builder : public TreeWalker {
 public:
  Builder(const Json& document, std::string where) : where_(std::move(where)), document_(document) {
    current_ = {&document, "", {}};
  }

  /// Walks through the document and finds what it does not know.
  void Run(VESKA::CVMGInfo& info) {
    if (!document_.is_object()) Fail("", "an object", Found(document_));
    if (document_.contains("$schema")) Text("$schema");
    Version();
    if (document_.contains("file")) Text("file");
    WalkFile(*this, info);
    FailOnUnknownKeys();
  }

  bool Builds() const override { return true; }

  void Fields(const Record& record, Positions positions) override {
    for (const Field& field : record.fields) {
      if (field.kind != FieldKind::kDerived) SetField(record, field, positions);
    }
  }

  void Derived(const char*, std::uint64_t) override {}

  void Object(const char* name, const std::function<void()>& content) override {
    Inside(Get(name), current_.pointer + "/" + name, content);
  }

  void List(const char* name, int limit, int, const std::function<void(int)>& item) override {
    const Json& list = Get(name);
    const std::string pointer = current_.pointer + "/" + name;
    if (!list.is_array()) Fail(pointer, "an array", Found(list));
    if (list.size() > static_cast<std::size_t>(limit)) {
      Fail(pointer, "an array of at most " + std::to_string(limit) + " items",
           std::to_string(list.size()) + " items");
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
      Inside(list[i], pointer + "/" + std::to_string(i), [&] { item(static_cast<int>(i)); });
    }
  }

  void Block(const char* name, Bytes& bytes, std::size_t least, std::size_t most) override {
    Object(name, [&] { bytes = TextBytes(least, most); });
  }

  int Kind(const char* name, std::span<const char* const> kinds, int) override {
    const Json& value = Get(name);
    const auto kind = std::find(kinds.begin(), kinds.end(), value);
    if (kind == kinds.end()) {
      std::string expected;
      for (const char* text : kinds)
        expected += (expected.empty() ? "\"" : " or \"") + (text + std::string("\""));
      Fail(current_.pointer + "/" + name, expected, Found(value));
    }
    return static_cast<int>(kind - kinds.begin());
  }

  std::uint8_t Form(const char* name, std::uint8_t) override {
    return static_cast<std::uint8_t>(Number(name, 1));
  }

  void Optional(bool present, const std::function<void()>& content) override {
    if (present) content();
  }

  void Expect(bool holds, const char* name, const char* expected) override {
    if (!holds) Fail(current_.pointer + "/" + name, expected, Found((*current_.json)[name]));
  }

 private:
  struct Place {
    const Json* json;
    std::string pointer;
    std::set<std::string> known;  // keys that were asked for
  };

  [[noreturn]] void Fail(const std::string& pointer, const std::string& expected,
                         const std::string& found) const {
    throw Failure(ExitStatus::kFound, where_,
                  (pointer.empty() ? "the document" : pointer) + ": expected " + expected +
                      ", found " + found);
  }

  void FailOnUnknownKeys() const {
    for (const auto& [key, value] : current_.json->items()) {
      if (current_.known.count(key) != 0) continue;
      std::string expected = "none but ";
      for (const std::string& known : current_.known) {
        expected += (known == *current_.known.begin() ? "" : ", ") + known;
      }
      Fail(current_.pointer + "/" + Escaped(key), expected, "this key");
    }
  }

  const Json& Get(const std::string& name) {
    current_.known.insert(name);
    const auto value = current_.json->find(name);
    if (value == current_.json->end()) {
      Fail(current_.pointer.empty() ? "the document" : current_.pointer, "the key \"" + name + "\"",
           "none");
    }
    return *value;
  }

  void Inside(const Json& object, const std::string& pointer,
              const std::function<void()>& content) {
    if (!object.is_object()) Fail(pointer, "an object", Found(object));
    Place outer = std::exchange(current_, {&object, pointer, {}});
    content();
    FailOnUnknownKeys();
    current_ = std::move(outer);
  }

  std::uint64_t Number(const std::string& name, unsigned width) {
    const Json& value = Get(name);
    const std::uint64_t largest = LargestNumber(width);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > largest) {
      Fail(current_.pointer + "/" + name, "a whole number from 0 to " + std::to_string(largest),
           Found(value));
    }
    return value.get<std::uint64_t>();
  }

  std::string Text(const std::string& name) {
    const Json& value = Get(name);
    if (!value.is_string()) Fail(current_.pointer + "/" + name, "a string", Found(value));
    return value.get<std::string>();
  }

  Bytes HexBytes(const std::string& name, std::size_t least, std::size_t most) {
    const Json& value = Get(name);
    const auto fail = [&] {
      const std::string digits = least == most ? std::to_string(2 * least)
                                 : most > 0xFFFF
                                     ? "an even number of"
                                     : "an even number, up to " + std::to_string(2 * most) + ", of";
      Fail(current_.pointer + "/" + name, digits + " hex digits", Found(value));
    };
    if (!value.is_string()) fail();
    const std::string& text = value.get_ref<const std::string&>();
    if (text.size() % 2 != 0 || text.size() / 2 < least || text.size() / 2 > most) fail();
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
      const int high = HexDigit(text[i]);
      const int low = HexDigit(text[i + 1]);
      if (high < 0 || low < 0) fail();
      bytes.push_back(static_cast<unsigned char>(16 * high + low));
    }
    return bytes;
  }

  /// The bytes of {"hex", "text"}. A text that does not go with them is a mistake: whoever changed
  /// it would find nothing changed.
  Bytes TextBytes(std::size_t least, std::size_t most) {
    Bytes bytes = HexBytes("hex", least, most);
    if (current_.json->contains("text") && Text("text") != Readable(bytes)) {
      Fail(current_.pointer + "/text",
           "\"" + Readable(bytes) + "\", as \"hex\" says (change that and leave \"text\" out)",
           Found((*current_.json)["text"]));
    }
    current_.known.insert("text");
    return bytes;
  }

  void SetField(const Record& record, const Field& field, Positions positions) {
    unsigned char* const to = record.bytes + field.offset;
    const auto copy = [to](const Bytes& bytes) { std::copy(bytes.begin(), bytes.end(), to); };
    switch (field.kind) {
      case FieldKind::kNumber:
      case FieldKind::kDerived:
        return SetNumber(record, field, Number(field.name, field.width));
      case FieldKind::kBytes:
        return copy(HexBytes(field.name, field.width, field.width));
      case FieldKind::kText:
        return Object(field.name, [&] { copy(TextBytes(field.width, field.width)); });
      case FieldKind::kClock:
        return Object(field.name, [&] { SetClock(to); });
      case FieldKind::kCellPoint:
        return Object(field.name, [&] { SetCellPoint(to, positions); });
    }
  }

  void SetClock(unsigned char* to) {
    SetNumber(to, 4, Number("base", 4));
    SetNumber(to + 4, 2, Number("ext", 2));
  }

  /// The position as two numbers or as the bytes that they stand for: the cell may have become
  /// one of the other kind.
  void SetCellPoint(unsigned char* to, Positions positions) {
    VESKA::tag_CELL_POINT point{};
    point.cell = static_cast<std::uint16_t>(Number("cell", 2));
    const bool is_numbers = current_.json->contains("base") || current_.json->contains("ext");
    if (is_numbers) {
      point.position = static_cast<std::uint32_t>(Number("base", 4));
      point.position_ext = static_cast<std::uint16_t>(Number("ext", 2));
    } else {
      const Bytes position = HexBytes("position", 6, 6);
      std::memcpy(reinterpret_cast<unsigned char*>(&point) + 2, position.data(), position.size());
    }
    const bool to_numbers = positions == Positions::kByCell && IsMovieCell(point.cell);
    if (is_numbers && !to_numbers) PositionToFileBytes(point);
    if (!is_numbers && to_numbers) PositionToNumbers(point);
    std::memcpy(to, &point, sizeof point);
  }

  /// By the document, since the cells stand behind most of the points into them. A mistake there is
  /// found when it is walked through.
  bool IsMovieCell(std::uint64_t cell) const {
    if (cell == 0 || cell == kNoCell) return false;
    const Json::json_pointer type("/original_chain/cells/" + std::to_string(cell - 1) + "/type");
    return document_.contains(type) && document_[type] == "movie";
  }

  void Version() {
    const Json& version = Get("version");
    if (version != kJsonVersion) Fail("/version", std::to_string(kJsonVersion), Found(version));
  }

  std::string where_;
  const Json& document_;
  Place current_;
};

/// Finds keys that stand twice, which the parser would silently take the last of.
class KeyWatch {
 public:
  bool operator()(int, Json::parse_event_t event, Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
        open_.emplace_back();
        break;
      case Json::parse_event_t::object_end:
        open_.pop_back();
        break;
      case Json::parse_event_t::key:
        if (!open_.back().insert(parsed.get<std::string>()).second && twice_.empty()) {
          twice_ = parsed.get<std::string>();
        }
        break;
      default:
        break;
    }
    return true;
  }
  const std::string& Twice() const { return twice_; }

 private:
  std::vector<std::set<std::string>> open_;
  std::string twice_;
};

}  // namespace

void Build(const Json& document, const std::string& where, VESKA::CVMGInfo& info) {
  Builder(document, where).Run(info);
  info.AutoComplete();
}

Json ParseJson(const std::string& text, const std::string& where) {
  KeyWatch watch;
  Json document;
  try {
    document = Json::parse(text, std::ref(watch));
  } catch (const Json::exception& error) {  // no JSON, or a number too large
    const std::string what = error.what();  // "[json.exception...] parse error at line 1, ..."
    const std::size_t start = what.find("] ");
    throw Failure(ExitStatus::kFound, where,
                  "not JSON: " + (start == std::string::npos ? what : what.substr(start + 2)));
  }
  if (!watch.Twice().empty()) {
    throw Failure(ExitStatus::kFound, where,
                  "the key \"" + watch.Twice() + "\" stands twice in one object");
  }
  return document;
}

}  // namespace veska_tool
