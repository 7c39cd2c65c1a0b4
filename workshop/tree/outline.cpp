#include "tree/outline.h"

#include <algorithm>
#include <string_view>

#include "tree/field_text.h"

namespace VESKA::workshop {

void Outline::Heading(const std::string& name, const std::string& text) {
  text_ += Indent() + options_.before_heading + name + options_.after_heading +
           (text.empty() ? "" : ": ") + text + "\n";
}

void Outline::Line(const std::string& text) {
  if (!text.empty()) text_ += Indent() + text + "\n";
}

void Outline::Data(std::span<const unsigned char> bytes) {
  if (bytes.empty()) return;
  const Deeper deeper(*this);
  if (!All() && IsZero(bytes)) return Line(Plural(bytes.size(), "zero byte"));
  const std::size_t lines = All() ? bytes.size() : kShownDumpLines;
  text_ += HexDump(bytes, Indent(), lines);
  if (bytes.size() > 16 * lines) {
    Line("and " + Plural(bytes.size() - 16 * lines, "byte") + " more (--all shows them)");
  }
}

std::string Outline::FieldsOf(const Record& record, bool named, const CPGCInfo* user_chain) const {
  std::string line;
  for (const Field& field : record.fields) {
    const bool is_name =
        named && field.kind == FieldKind::kText && Text(FieldBytes(record, field)).front() == '"';
    if (is_name || IsDull(record, field)) continue;
    line += (line.empty() ? "" : ", ") + Value(record, field, user_chain);
  }
  return line;
}

std::string Outline::Value(const Record& record, const Field& field,
                           const CPGCInfo* user_chain) const {
  return field.name + std::string(field.kind == FieldKind::kCellPoint ? ": " : " ") +
         FieldText(record, field, user_chain != nullptr ? *user_chain : info_.GetOriginalPGC(),
                   user_chain != nullptr, options_.decode);
}

bool Outline::IsDull(const Record& record, const Field& field) const {
  return !All() && std::string_view(field.name).starts_with("reserved") &&
         IsZero(FieldBytes(record, field));
}

}  // namespace VESKA::workshop
