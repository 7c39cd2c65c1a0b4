// Lines of text at a depth, with the values of records in them.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/show.h>

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

  bool All() const { return options_.all; }
  std::string Take() { return std::move(text_); }
  /// The user-defined chain whose cells the cell points count from here on; null for the original.
  void CountCellsOf(const CPGCInfo* user_chain) { user_chain_ = user_chain; }

  /// A line whose name bears the marks of the options.
  void Heading(const std::string& name, const std::string& text = {});
  /// A heading, and what `content` writes one step further in.
  template <class Content>
  void Section(const std::string& name, const std::string& text, const Content& content) {
    Heading(name, text);
    ++depth_;
    content();
    --depth_;
  }
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
  /// A list of records with a heading for each.
  template <class Range>
  void Records(const Range& records, const char* what) {
    List(static_cast<int>(records.size()), what,
         [&](int i) { Heading(Numbered(what, i), Fields(records.begin()[i])); });
  }

  /// "NAME value, NAME value": the fields of a record but for reserved zeros.
  template <class Type>
  std::string Fields(const Type& record) const {
    return FieldsOf(RecordOf(record), false);
  }
  /// The same without a text that stands in the heading as the name of the record.
  template <class Type>
  std::string NamedFields(const Type& record) const {
    return FieldsOf(RecordOf(record), true);
  }
  /// A text of the disc in quotes, or its bytes.
  std::string Text(std::span<const unsigned char> bytes) const {
    return TextOrHex(bytes, options_.decode);
  }
  /// "NAME value"; empty where a reserved field is zero.
  std::string Value(const Record& record, const Field& field) const;

 private:
  static constexpr int kLongList = 100;  // a longer list is cut
  static constexpr int kShownOfLong = 20;
  static constexpr std::size_t kShownDumpLines = 2;

  std::string Indent() const { return std::string(2 * depth_, ' '); }
  std::string FieldsOf(const Record& record, bool named) const;

  const CVMGInfo& info_;
  const ShowOptions& options_;
  const CPGCInfo* user_chain_ = nullptr;
  std::string text_;
  std::size_t depth_ = 0;
};

}  // namespace VESKA::workshop
