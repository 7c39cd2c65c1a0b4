// The JSON Schema of the document, told by the walk that reads and writes it.
#include <nlohmann/json.hpp>
#include <utility>

#include "tree/json_tree.h"
#include "tree/walk.h"

namespace VESKA::workshop {
namespace {

using VESKA::Field;
using VESKA::FieldKind;

Json Integer(std::uint64_t least, std::uint64_t most) {
  return {{"type", "integer"}, {"minimum", least}, {"maximum", most}};
}

Json HexString(std::size_t least, std::size_t most) {
  constexpr std::size_t kCounted = 0xFFFF;  // more is no limit that a pattern need count
  std::string count = std::to_string(least);
  if (most != least) count += "," + (most > kCounted ? "" : std::to_string(most));
  return {{"type", "string"}, {"pattern", "^([0-9a-fA-F]{2}){" + count + "}$"}};
}

Json Closed(Json properties, Json required) {
  return {{"type", "object"},
          {"properties", std::move(properties)},
          {"required", std::move(required)},
          {"additionalProperties", false}};
}

Json TextSchema(std::size_t least, std::size_t most) {
  Json schema =
      Closed({{"hex", HexString(least, most)}, {"text", {{"type", "string"}}}}, Json::array());
  schema.erase("required");
  schema["minProperties"] = 1;  // either is enough
  return schema;
}

Json ClockProperties() {
  return {{"base", Integer(0, LargestNumber(4))}, {"ext", Integer(0, LargestNumber(2))}};
}

Json Definitions() {
  const Json cell = Integer(0, LargestNumber(2));
  Json movie_point = {{"cell", cell}};
  movie_point.update(ClockProperties());
  return {{"clock", Closed(ClockProperties(), {"base", "ext"})},
          {"cell_point",
           {{"anyOf",
             {Closed(movie_point, {"cell", "base", "ext"}),
              Closed({{"cell", cell}, {"position", HexString(6, 6)}}, {"cell", "position"})}}}}};
}

Json Reference(const char* name) { return {{"$ref", std::string("#/$defs/") + name}}; }

/// Builds one item of every list and kind, and notes what it is asked for.
class SchemaMaker : public TreeVisitor {
 public:
  Json Take() { return std::move(top_); }

  /// A property of the object at hand.
  void Add(const std::string& name, Json schema, bool required = true) {
    (*current_)["properties"][name] = std::move(schema);
    if (required && !optional_) (*current_)["required"].push_back(name);
  }

  bool Builds() const override { return true; }

  void Fields(const Record& record, Positions) override {
    for (const Field& field : record.fields) {
      if (field.kind != FieldKind::kDerived) Add(field.name, FieldSchema(field));
    }
  }

  void Object(const char* name, const std::function<void()>& content) override {
    Add(name, Filled(content));
  }

  void List(const char* name, int limit, int, const std::function<void(int)>& item) override {
    const auto outer = std::exchange(kinds_, {});
    Json items = Json::array();
    for (; kinds_.chosen < kinds_.count; ++kinds_.chosen) {
      items.push_back(Filled([&] { item(kinds_.chosen); }));
    }
    kinds_ = outer;
    Add(name, {{"type", "array"},
               {"maxItems", limit},
               {"items", items.size() == 1 ? items[0] : Json{{"anyOf", items}}}});
  }

  void Block(const char* name, Bytes&, std::size_t least, std::size_t most) override {
    Add(name, TextSchema(least, most));
  }

  int Kind(const char* name, std::span<const char* const> kinds, int) override {
    kinds_.count = static_cast<int>(kinds.size());
    Add(name, {{"const", kinds[static_cast<std::size_t>(kinds_.chosen)]}});
    return kinds_.chosen;
  }

  std::uint8_t Form(const char* name, std::uint8_t) override {
    kinds_.count = 4;
    kinds_.form_field = name;
    return static_cast<std::uint8_t>(kinds_.chosen << 6U);
  }

  void Optional(bool, const std::function<void()>& content) override {
    optional_ = true;
    content();
    optional_ = false;
  }

 private:
  /// The kinds of item that the list at hand holds, and the one that is walked through.
  struct Kinds {
    int count = 1;
    int chosen = 0;
    std::string form_field;
  };

  Json Filled(const std::function<void()>& content) {
    Json object = Closed(Json::object(), Json::array());
    Json* const outer = std::exchange(current_, &object);
    const bool was_optional = std::exchange(optional_, false);
    content();
    current_ = outer;
    optional_ = was_optional;
    return object;
  }

  Json FieldSchema(const Field& field) const {
    switch (field.kind) {
      case FieldKind::kNumber:
      case FieldKind::kDerived:
        if (field.name == kinds_.form_field) {
          const auto least = static_cast<std::uint64_t>(kinds_.chosen) << 6U;
          return Integer(least, least + 0x3F);
        }
        return Integer(0, LargestNumber(field.width));
      case FieldKind::kClock:
        return Reference("clock");
      case FieldKind::kCellPoint:
        return Reference("cell_point");
      case FieldKind::kText:
        return TextSchema(field.width, field.width);
      case FieldKind::kBytes:
        break;
    }
    return HexString(field.width, field.width);
  }

  Json top_ = Closed(Json::object(), Json::array());
  Json* current_ = &top_;
  bool optional_ = false;
  Kinds kinds_;
};

}  // namespace

Json Schema() {
  SchemaMaker maker;
  maker.Add("$schema", {{"type", "string"}}, false);
  maker.Add("version", {{"const", kJsonVersion}});
  maker.Add("file", {{"type", "string"}}, false);
  VESKA::CVMGInfo scratch;
  WalkFile(maker, scratch);
  Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                 {"title", "A DVD Video Recording management file, as veska exports it"}};
  schema.update(maker.Take());
  schema["$defs"] = Definitions();
  return schema;
}

std::string JsonSchema() { return TextOf(Schema()); }

}  // namespace VESKA::workshop
