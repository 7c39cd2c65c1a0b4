// Lines of text at a depth, with the values of records in them.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/show.h>

#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "basis/fields.h"
#include "basis/text.h"

namespace VESKA::workshop {

/// "VOB 3" for the one at position 2.
inline std::string Numbered(const char* what, int i) {
  return what + (" " + std::to_string(i + 1));
}

/// Lines at a depth. What is long or dull is left out unless all is wanted.
class Outline {
 public:
  Outline(const CVMGInfo& info, const ShowOptions& options) : info_(info), options_(options) {}

  /// The file that is shown.
  const CVMGInfo& Info() const { return info_; }
  bool All() const { return options_.all; }
  std::string Take() { return std::move(text_); }

  /// A line whose name bears the marks of the options.
  void Heading(const std::string& name, const std::string& text);
  /// Nothing for an empty text.
  void Line(const std::string& text);
  /// Bytes in hex, one step further in.
  void Data(std::span<const unsigned char> bytes);

  /// Shows `count` items by `show(i)`; of a long list the first ones.
  template <class ShowItem>
  void List(int count, const char* what, const ShowItem& show) {
    const int shown = All() || count <= kLongList ? count : kShownOfLong;
    for (int i = 0; i < shown; ++i) show(i);
    if (shown < count) {
      Line("and " + Plural(static_cast<unsigned>(count - shown), what) +
           " more (--all shows them)");
    }
  }

  /// "NAME value, NAME value": the fields of a record but for reserved zeros. Cell points count the
  /// cells of `user_chain`, or of the original one.
  template <class Type>
  std::string Fields(const Type& record, const CPGCInfo* user_chain = nullptr) const {
    return FieldsOf(RecordOf(record), false, user_chain);
  }
  /// The same without a text that stands in the heading as the name of the record.
  template <class Type>
  std::string NamedFields(const Type& record, const CPGCInfo* user_chain = nullptr) const {
    return FieldsOf(RecordOf(record), true, user_chain);
  }
  /// A text of the disc in quotes, or its bytes.
  std::string Text(std::span<const unsigned char> bytes) const {
    return TextOrHex(bytes, options_.decode);
  }
  /// "NAME value".
  std::string Value(const Record& record, const Field& field, const CPGCInfo* user_chain) const;
  bool IsDull(const Record& record, const Field& field) const;

  /// What is written while it lives stands one step further in.
  class Deeper {
   public:
    explicit Deeper(Outline& outline) : outline_(outline) { ++outline_.depth_; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
    ~Deeper() { --outline_.depth_; }

   private:
    Outline& outline_;
  };

 private:
  static constexpr int kLongList = 100;  // a longer list is cut
  static constexpr int kShownOfLong = 20;
  static constexpr std::size_t kShownDumpLines = 2;

  std::string Indent() const { return std::string(2 * depth_, ' '); }
  std::string FieldsOf(const Record& record, bool named, const CPGCInfo* user_chain) const;

  const CVMGInfo& info_;
  const ShowOptions& options_;
  std::string text_;
  std::size_t depth_ = 0;
};

/// Shows a program chain: its programs with their cells, then the cells that no program counts.
/// `user_chain` is the chain itself where it is a user-defined one, else null.
void ShowChain(Outline& to, const CPGCInfo& chain, const CPGCInfo* user_chain);

}  // namespace VESKA::workshop
