// What a Python object stands for: a table, a record or a list of a file, as long as that stands.
#pragma once

#include <veska/CVMGInfo.h>

#include <memory>
#include <unordered_map>

namespace veska_python {

struct List;
struct Part;
struct Type;

/// A loaded file and what its views have in common.
struct Loaded {
  std::unique_ptr<VESKA::CVMGInfo> info;
  bool is_edited = false;  ///< since it was loaded or completed last
};

class Node;
using NodePtr = std::shared_ptr<Node>;

/// A place in a file. There is one at most for each table, record and list, and it keeps those
/// above it and the file alive. Records are told by their address, which they keep while they live,
/// so a node follows its record through other edits; whoever ends the record ends the node first.
/// All of it is the business of the thread that holds the interpreter's lock.
class Node : public std::enable_shared_from_this<Node> {
 public:
  static NodePtr RootOf(std::unique_ptr<VESKA::CVMGInfo> info);
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  ~Node();

  const Type* type() const { return type_; }  ///< null for a list that is no table as well
  const List* list() const { return list_; }  ///< null for a table or a record
  const NodePtr& parent() const { return parent_; }
  /// Whether the cell points hold the bytes of the file whatever they name.
  bool has_file_positions() const { return has_file_positions_; }
  bool is_stale() const { return address_ == nullptr; }
  /// The object. Raises StaleError when there is none any more.
  void* Live() const;
  Loaded& file() const { return *file_; }
  /// The position of a record in its list.
  int Index() const;

  ///@{
  /// Those below this one, which has to live.
  static NodePtr PartOf(const NodePtr& node, const Part& part);
  static NodePtr ListOf(const NodePtr& node, const List& list);
  static NodePtr ItemOf(const NodePtr& list, int i);
  ///@}

  ///@{
  /// Raises BufferError where an array shows the memory of a list that is this one or below it.
  void ExpectNoArrays() const;
  void CountArray(int by) { arrays_ += by; }
  ///@}

  /// Ends what stands for the item at `address` of this list, and for all below it.
  void EndItem(const void* address);
  /// Ends all below this one; `items` alone leaves the tables that stand in the file object.
  void EndBelow(bool items);

 private:
  Node(NodePtr parent, std::shared_ptr<Loaded> file, const void* key);
  static NodePtr Child(const NodePtr& node, const void* key);
  bool HasArrays() const;
  void End();

  const NodePtr parent_;
  const std::shared_ptr<Loaded> file_;
  const void* const key_;  // by which the parent finds it
  const Type* type_ = nullptr;
  const List* list_ = nullptr;
  void* address_ = nullptr;
  bool has_file_positions_ = false;
  int arrays_ = 0;
  std::unordered_map<const void*, Node*> children_;
};

}  // namespace veska_python
