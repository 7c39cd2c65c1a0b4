// The tables of a management file as a tree of named values: what export, build, comparison and
// the schema have in common.
#pragma once

#include <veska/CVMGInfo.h>
#include <veska/workshop/load.h>

#include <cstdint>
#include <functional>
#include <span>

#include "basis/fields.h"

namespace VESKA::workshop {

/// How a cell point's position stands in memory: by the kind of the cell that it names, or always
/// as the file's bytes, as in user-defined program chains.
enum class Positions { kByCell, kBytes };

/// Is led through the tables of a file. It takes values from the object or, when it builds, puts
/// them into it: then the lists of the object are empty and grow by an item for each call of
/// `item`.
class TreeVisitor {
 public:
  TreeVisitor() = default;
  TreeVisitor(const TreeVisitor&) = delete;
  TreeVisitor& operator=(const TreeVisitor&) = delete;
  virtual ~TreeVisitor() = default;

  virtual bool Builds() const = 0;

  /// The fields of a record. Derived ones are not built.
  virtual void Fields(const Record& record, Positions positions) = 0;
  /// A derived value that stands beside a record. It is not built.
  virtual void Derived(const char* /*name*/, std::uint64_t /*value*/) {}
  /// A table or a record inside the current one.
  virtual void Object(const char* name, const std::function<void()>& content) = 0;
  /// A list of `count` objects (more than `limit` do not fit); `item(i)` walks through one.
  virtual void List(const char* name, int limit, int count,
                    const std::function<void(int)>& item) = 0;
  /// A separate block of bytes, `least` to `most`.
  virtual void Block(const char* name, Bytes& bytes, std::size_t least, std::size_t most) = 0;
  /// The kind of an object, which says what else it holds.
  virtual int Kind(const char* name, std::span<const char* const> kinds, int current) = 0;
  /// A number of one byte, before the fields that it stands in, whose bits 7 and 6 say what else
  /// the object holds.
  virtual std::uint8_t Form(const char* /*name*/, std::uint8_t current) { return current; }
  /// What is there only when `present`.
  virtual void Optional(bool present, const std::function<void()>& content) {
    if (present) content();
  }
  /// Says what was expected at `name` when something cannot be built.
  virtual void Expect(bool /*holds*/, const char* /*name*/, const char* /*expected*/) {}
};

/// Leads `to` through all tables of `info`.
void WalkFile(TreeVisitor& to, VESKA::CVMGInfo& info);

}  // namespace VESKA::workshop
