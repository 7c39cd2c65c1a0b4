// A JSON document, read value by value, where every mistake is named by its JSON pointer.
#pragma once

#include <veska/workshop/load.h>

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tree/json_tree.h"

namespace VESKA::workshop {

/// Reads the object at hand, at first the whole document, which has to live as long. Every function
/// throws Error (kDocument) where what stands at a key is not what was asked for.
class DocumentReader {
 public:
  explicit DocumentReader(const Json& document) : current_{&document, "", {}} {}

  bool Has(const char* key) const { return current_.json->contains(key); }
  const Json& Get(const std::string& key);
  const Json& Array(const std::string& key, std::size_t most);
  std::uint64_t Number(const std::string& key, unsigned width);
  std::string Text(const std::string& key);
  Bytes HexBytes(const std::string& key, std::size_t least, std::size_t most);
  /// The bytes of an object of "hex" and "text", of which one is enough.
  Bytes TextBytes(std::size_t least, std::size_t most);

  /// Reads `object`, which stands at `path` in the one at hand, by `content`, and fails on keys in
  /// it that nobody asked for.
  void Inside(const Json& object, const std::string& path, const std::function<void()>& content);

  /// Fails on keys of the object at hand that nobody asked for.
  void FailOnUnknownKeys() const;
  [[noreturn]] void Fail(const std::string& path, const std::string& expected,
                         const Json& found) const;
  [[noreturn]] void FailFor(const std::string& path, const std::string& expected,
                            const std::string& found) const;

 private:
  struct Place {
    const Json* json;
    std::string pointer;
    std::set<std::string> known;  // keys that were asked for
  };

  Bytes BytesOfText(std::size_t least, std::size_t most);

  Place current_;
};

}  // namespace VESKA::workshop
