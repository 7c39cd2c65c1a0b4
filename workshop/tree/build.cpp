// A management file from JSON.
#include <algorithm>
#include <cstring>

#include "basis/cell_points.h"
#include "tree/reader.h"
#include "tree/walk.h"

namespace VESKA::workshop {
namespace {

class Builder : public TreeVisitor {
 public:
  explicit Builder(const Json& document) : document_(document), reader_(document) {}

  /// Walks through the document and finds what it does not know.
  void Run(VESKA::CVMGInfo& info) {
    if (!document_.is_object()) reader_.Fail("", "an object", document_);
    if (reader_.Has("$schema")) reader_.Text("$schema");
    Version();
    if (reader_.Has("file")) reader_.Text("file");
    WalkFile(*this, info);
    reader_.FailOnUnknownKeys();
  }

  bool Builds() const override { return true; }

  void Fields(const Record& record, Positions positions) override {
    for (const Field& field : record.fields) {
      if (field.kind != FieldKind::kDerived) SetField(record, field, positions);
    }
  }

  void Object(const char* name, const std::function<void()>& content) override {
    reader_.Inside(reader_.Get(name), std::string("/") + name, content);
  }

  void List(const char* name, int limit, int, const std::function<void(int)>& item) override {
    const Json& list = reader_.Array(name, static_cast<std::size_t>(limit));
    for (std::size_t i = 0; i < list.size(); ++i) {
      reader_.Inside(list[i], "/" + (name + ("/" + std::to_string(i))),
                     [&] { item(static_cast<int>(i)); });
    }
  }

  void Block(const char* name, Bytes& bytes, std::size_t least, std::size_t most) override {
    Object(name, [&] { bytes = reader_.TextBytes(least, most); });
  }

  int Kind(const char* name, std::span<const char* const> kinds, int) override {
    const Json& value = reader_.Get(name);
    const auto kind = std::find(kinds.begin(), kinds.end(), value);
    if (kind == kinds.end()) {
      std::string expected;
      for (const char* text : kinds)
        expected += (expected.empty() ? "\"" : " or \"") + (text + std::string("\""));
      reader_.Fail(std::string("/") + name, expected, value);
    }
    return static_cast<int>(kind - kinds.begin());
  }

  std::uint8_t Form(const char* name, std::uint8_t) override {
    return static_cast<std::uint8_t>(reader_.Number(name, 1));
  }

  void Expect(bool holds, const char* name, const char* expected) override {
    if (!holds) reader_.Fail(std::string("/") + name, expected, reader_.Get(name));
  }

 private:
  void SetField(const Record& record, const Field& field, Positions positions) {
    unsigned char* const to = record.bytes + field.offset;
    const auto copy = [to](const Bytes& bytes) { std::copy(bytes.begin(), bytes.end(), to); };
    switch (field.kind) {
      case FieldKind::kNumber:
      case FieldKind::kDerived:
        return SetNumber(record, field, reader_.Number(field.name, field.width));
      case FieldKind::kBytes:
        return copy(reader_.HexBytes(field.name, field.width, field.width));
      case FieldKind::kText:
        return Object(field.name, [&] { copy(reader_.TextBytes(field.width, field.width)); });
      case FieldKind::kClock:
        return Object(field.name, [&] { SetClock(to); });
      case FieldKind::kCellPoint:
        return Object(field.name, [&] { SetCellPoint(to, positions); });
    }
  }

  void SetClock(unsigned char* to) {
    SetNumber(to, 4, reader_.Number("base", 4));
    SetNumber(to + 4, 2, reader_.Number("ext", 2));
  }

  /// The position as two numbers or as the bytes that they stand for: the cell may have become
  /// one of the other kind.
  void SetCellPoint(unsigned char* to, Positions positions) {
    VESKA::tag_CELL_POINT point{};
    point.cell = static_cast<std::uint16_t>(reader_.Number("cell", 2));
    const bool is_numbers = reader_.Has("base") || reader_.Has("ext");
    if (is_numbers) {
      point.position = static_cast<std::uint32_t>(reader_.Number("base", 4));
      point.position_ext = static_cast<std::uint16_t>(reader_.Number("ext", 2));
    } else {
      const Bytes position = reader_.HexBytes("position", 6, 6);
      std::memcpy(reinterpret_cast<unsigned char*>(&point) + 2, position.data(), position.size());
    }
    const bool to_numbers = positions == Positions::kByCell && IsMovieCell(point.cell);
    if (is_numbers != to_numbers) ConvertPosition(point);
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
    const Json& version = reader_.Get("version");
    if (version != kJsonVersion) reader_.Fail("/version", std::to_string(kJsonVersion), version);
  }

  const Json& document_;
  DocumentReader reader_;
};

}  // namespace

std::unique_ptr<CVMGInfo> Build(const Json& document) {
  auto info = std::make_unique<CVMGInfo>();
  Builder(document).Run(*info);
  info->AutoComplete();
  return info;
}

std::unique_ptr<CVMGInfo> FromJson(std::string_view text) { return Build(ParseJson(text)); }

}  // namespace VESKA::workshop
