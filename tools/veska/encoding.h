// The character sets of texts: by the platform's own conversions.
#pragma once

#include <veska/workshop/text.h>

#include <memory>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace veska_tool {

/// A character set that texts are recorded in, by the name that the platform gives it. Without a
/// name what is UTF-8 is taken as such, and all else as bytes.
class Encoding {
 public:
  Encoding() = default;
  /// Throws Failure (wrong usage) when the platform knows no such character set.
  explicit Encoding(const std::string& name);

  bool IsNamed() const { return !name_.empty(); }
  /// The UTF-8 of a text in the character set; none when the bytes are no text in it.
  std::optional<std::string> Decode(std::span<const unsigned char> bytes) const;
  /// The bytes of a text in UTF-8; none when the character set cannot hold it.
  std::optional<std::string> Encode(const std::string& text) const;

  /// For what the workshop shows and takes. They keep a copy of this.
  VESKA::workshop::DecodeText Decoder() const;
  VESKA::workshop::EncodeText Encoder() const;

 private:
  std::string name_;
};

/// Adds --encoding to the parser of a command. `name` has to live as long.
void DeclareEncoding(CLI::App& app, std::string& name);

}  // namespace veska_tool
