#include "tree/reader.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "basis/fields.h"
#include "basis/text.h"

namespace VESKA::workshop {
namespace {

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

void DocumentReader::Fail(const std::string& path, const std::string& expected,
                          const Json& found) const {
  FailFor(path, expected, Found(found));
}

void DocumentReader::FailFor(const std::string& path, const std::string& expected,
                             const std::string& found) const {
  const std::string pointer = current_.pointer + path;
  throw Error(
      ErrorKind::kDocument,
      (pointer.empty() ? "the document" : pointer) + ": expected " + expected + ", found " + found,
      pointer);
}

void DocumentReader::FailOnUnknownKeys() const {
  for (const auto& [key, value] : current_.json->items()) {
    if (current_.known.count(key) != 0) continue;
    std::string expected = "none but ";
    for (const std::string& known : current_.known) {
      expected += (known == *current_.known.begin() ? "" : ", ") + known;
    }
    FailFor("/" + Escaped(key), expected, "this key");
  }
}

const Json& DocumentReader::Get(const std::string& key) {
  current_.known.insert(key);
  const auto value = current_.json->find(key);
  if (value == current_.json->end()) FailFor("", "the key \"" + key + "\"", "none");
  return *value;
}

const Json& DocumentReader::Array(const std::string& key, std::size_t most) {
  const Json& list = Get(key);
  if (!list.is_array()) Fail("/" + key, "an array", list);
  if (list.size() > most) {
    FailFor("/" + key, "an array of at most " + std::to_string(most) + " items",
            std::to_string(list.size()) + " items");
  }
  return list;
}

void DocumentReader::Inside(const Json& object, const std::string& path,
                            const std::function<void()>& content) {
  if (!object.is_object()) Fail(path, "an object", object);
  Place outer = std::exchange(current_, {&object, current_.pointer + path, {}});
  content();
  FailOnUnknownKeys();
  current_ = std::move(outer);
}

std::uint64_t DocumentReader::Number(const std::string& key, unsigned width) {
  const Json& value = Get(key);
  const std::uint64_t largest = LargestNumber(width);
  if (!value.is_number_unsigned() || value.get<std::uint64_t>() > largest) {
    Fail("/" + key, "a whole number from 0 to " + std::to_string(largest), value);
  }
  return value.get<std::uint64_t>();
}

std::string DocumentReader::Text(const std::string& key) {
  const Json& value = Get(key);
  if (!value.is_string()) Fail("/" + key, "a string", value);
  return value.get<std::string>();
}

Bytes DocumentReader::HexBytes(const std::string& key, std::size_t least, std::size_t most) {
  const Json& value = Get(key);
  const auto fail = [&] {
    const std::string digits = least == most ? std::to_string(2 * least)
                               : most > 0xFFFF
                                   ? "an even number of"
                                   : "an even number, up to " + std::to_string(2 * most) + ", of";
    Fail("/" + key, digits + " hex digits", value);
  };
  if (!value.is_string()) fail();
  const std::string& text = value.get_ref<const std::string&>();
  if (text.size() % 2 != 0 || text.size() / 2 < least || text.size() / 2 > most) fail();
  Bytes bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    unsigned char byte = 0;
    const char* const digits = &text[i];
    if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) fail();
    bytes.push_back(byte);
  }
  return bytes;
}

// A text that does not go with the hex is a mistake: whoever changed it would find nothing changed.
Bytes DocumentReader::TextBytes(std::size_t least, std::size_t most) {
  current_.known.insert("text");
  if (!Has("hex") && Has("text")) return BytesOfText(least, most);
  Bytes bytes = HexBytes("hex", least, most);
  if (Has("text") && Text("text") != Readable(bytes)) {
    Fail("/text", "\"" + Readable(bytes) + "\", as \"hex\" says (leave one of both out)",
         Get("text"));
  }
  return bytes;
}

/// A text without hex, with zeros behind it up to `least` bytes.
Bytes DocumentReader::BytesOfText(std::size_t least, std::size_t most) {
  const std::optional<std::string> text = Unescaped(Text("text"));
  if (!text) {
    Fail("/text", "a text where a backslash stands for itself as \\\\ and for a byte as \\xNN",
         Get("text"));
  }
  if (text->size() > most) {
    FailFor(
        "/text", "at most " + Plural(most, "byte"),
        std::to_string(text->size()) + ", " + std::to_string(text->size() - most) + " too many");
  }
  Bytes bytes(text->begin(), text->end());
  bytes.resize(std::max(bytes.size(), least));
  return bytes;
}

Json ParseJson(std::string_view text) {
  KeyWatch watch;
  Json document;
  try {
    document = Json::parse(text, std::ref(watch));
  } catch (const Json::exception& error) {  // no JSON, or a number too large
    const std::string what = error.what();  // "[json.exception...] parse error at line 1, ..."
    const std::size_t start = what.find("] ");
    throw Error(ErrorKind::kDocument,
                "not JSON: " + (start == std::string::npos ? what : what.substr(start + 2)));
  }
  if (!watch.Twice().empty()) {
    throw Error(ErrorKind::kDocument,
                "the key \"" + watch.Twice() + "\" stands twice in one object");
  }
  return document;
}

}  // namespace VESKA::workshop
