// A management file to JSON.
#include <veska/cell_points.h>

#include <nlohmann/json.hpp>

#include "basis/text.h"
#include "tree/json_tree.h"
#include "tree/walk.h"

namespace VESKA::workshop {
namespace {

using VESKA::Field;
using VESKA::FieldKind;

/// Bytes with their readable text beside, which is for reading only.
Json TextJson(std::span<const unsigned char> bytes) {
  return {{"hex", Hex(bytes)}, {"text", Readable(bytes)}};
}

class Exporter : public TreeVisitor {
 public:
  Exporter(const CVMGInfo& info, bool derived) : cells_(info.GetOriginalPGC()), derived_(derived) {}

  Json Take() { return std::move(tree_); }

  bool Builds() const override { return false; }

  void Fields(const Record& record, Positions positions) override {
    for (const Field& field : record.fields) {
      if (field.kind == FieldKind::kDerived && !derived_) continue;
      (*current_)[field.name] = Value(record, field, positions);
    }
  }

  void Derived(const char* name, std::uint64_t value) override {
    if (derived_) (*current_)[name] = value;
  }

  void Object(const char* name, const std::function<void()>& content) override {
    (*current_)[name] = Filled(content);
  }

  void List(const char* name, int, int count, const std::function<void(int)>& item) override {
    Json list = Json::array();
    for (int i = 0; i < count; ++i) list.push_back(Filled([&] { item(i); }));
    (*current_)[name] = std::move(list);
  }

  void Block(const char* name, Bytes& bytes, std::size_t, std::size_t) override {
    (*current_)[name] = TextJson(bytes);
  }

  int Kind(const char* name, std::span<const char* const> kinds, int current) override {
    (*current_)[name] = kinds[static_cast<std::size_t>(current)];
    return current;
  }

 private:
  Json Filled(const std::function<void()>& content) {
    Json object = Json::object();
    Json* const outer = current_;
    current_ = &object;
    content();
    current_ = outer;
    return object;
  }

  Json Value(const Record& record, const Field& field, Positions positions) {
    const std::span<const unsigned char> bytes = FieldBytes(record, field);
    switch (field.kind) {
      case FieldKind::kNumber:
      case FieldKind::kDerived:
        return GetNumber(record, field);
      case FieldKind::kClock:
        return Clock(bytes.data());
      case FieldKind::kCellPoint:
        return CellPoint(bytes, positions);
      case FieldKind::kText:
        return TextJson(bytes);
      case FieldKind::kBytes:
        break;
    }
    return Hex(bytes);
  }

  static Json Clock(const unsigned char* bytes) {
    return {{"base", GetNumber(bytes, 4)}, {"ext", GetNumber(bytes + 4, 2)}};
  }

  Json CellPoint(std::span<const unsigned char> bytes, Positions positions) {
    const auto cell = static_cast<std::uint16_t>(GetNumber(bytes.data(), 2));
    Json point = {{"cell", cell}};
    if (positions == Positions::kByCell && NamesMovieCell(cells_, cell)) {
      point.update(Clock(bytes.data() + 2));
    } else {
      point["position"] = Hex(bytes.subspan(2));
    }
    return point;
  }

  const CPGCInfo& cells_;
  bool derived_;
  Json tree_ = Json::object();
  Json* current_ = &tree_;
};

std::string Compact(const Json& value) {
  return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

void Print(const Json& value, std::size_t depth, std::string& text) {
  constexpr std::size_t kWidth = 100;
  const std::string line = Compact(value);
  if (depth > 0 && (!value.is_structured() || 2 * depth + line.size() <= kWidth)) {
    text += line;
    return;
  }
  const char* separator = "";
  text += value.is_array() ? '[' : '{';
  for (const auto& [key, item] : value.items()) {
    text += separator + ("\n" + std::string(2 * (depth + 1), ' '));
    if (value.is_object()) text += Compact(key) + ": ";
    Print(item, depth + 1, text);
    separator = ",";
  }
  text += "\n" + std::string(2 * depth, ' ') + (value.is_array() ? ']' : '}');
}

}  // namespace

Json TreeOf(const VESKA::CVMGInfo& info, bool derived) {
  auto& object = const_cast<VESKA::CVMGInfo&>(info);  // values are taken only
  Exporter exporter(info, derived);
  WalkFile(exporter, object);
  return exporter.Take();
}

std::string TextOf(const Json& document, JsonForm form) {
  if (form == JsonForm::kLine) return Compact(document) + "\n";
  std::string text;
  Print(document, 0, text);
  return text + "\n";
}

std::string ToJson(const CVMGInfo& info, JsonForm form, std::string_view file) {
  Json document = {{"$schema", kSchemaName}, {"version", kJsonVersion}};
  if (!file.empty()) document["file"] = file;
  document.update(TreeOf(info));
  return TextOf(document, form);
}

}  // namespace VESKA::workshop
