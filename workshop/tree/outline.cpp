#include "tree/outline.h"

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
  ++depth_;
  const std::size_t lines = All() ? bytes.size() : kShownDumpLines;
  if (!All() && IsZero(bytes)) {
    Line(Plural(bytes.size(), "zero byte"));
  } else {
    text_ += HexDump(bytes, Indent(), lines);
    if (bytes.size() > 16 * lines) {
      Line("and " + Plural(bytes.size() - 16 * lines, "byte") + " more (--all shows them)");
    }
  }
  --depth_;
}

std::string Outline::FieldsOf(const Record& record, bool named) const {
  std::string line;
  for (const Field& field : record.fields) {
    const bool is_name =
        named && field.kind == FieldKind::kText && Text(FieldBytes(record, field)).front() == '"';
    const std::string value = is_name ? "" : Value(record, field);
    line += (line.empty() || value.empty() ? "" : ", ") + value;
  }
  return line;
}

std::string Outline::Value(const Record& record, const Field& field) const {
  const std::string name = field.name;
  const bool is_dull = name.starts_with("reserved") && IsZero(FieldBytes(record, field));
  if (!All() && is_dull) return "";
  return name + (field.kind == FieldKind::kCellPoint ? ": " : " ") +
         FieldText(record, field, info_, user_chain_, options_.decode);
}

}  // namespace VESKA::workshop
