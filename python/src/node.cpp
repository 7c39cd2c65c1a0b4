#include "node.h"

#include <algorithm>
#include <utility>

#include "description.h"
#include "errors.h"

namespace veska_python {

Node::Node(NodePtr parent, std::shared_ptr<Loaded> file, const void* key)
    : parent_(std::move(parent)), file_(std::move(file)), key_(key) {
  if (parent_ == nullptr) return;
  has_file_positions_ = parent_->has_file_positions_;
  parent_->children_.emplace(key_, this);
}

Node::~Node() {
  if (parent_ != nullptr && !is_stale()) parent_->children_.erase(key_);
}

NodePtr Node::RootOf(std::unique_ptr<VESKA::CVMGInfo> info) {
  auto file = std::make_shared<Loaded>();
  file->info = std::move(info);
  NodePtr root(new Node(nullptr, file, nullptr));
  root->type_ = &FileType();
  root->address_ = file->info.get();
  return root;
}

void* Node::Live() const {
  if (!is_stale()) return address_;
  Raise("StaleError",
        "this was deleted, or its file was loaded anew or edited as a whole: take it from the "
        "file again");
}

int Node::Index() const {
  void* const table = parent_->Live();
  const List& list = *parent_->list();
  const int count = list.count(table);
  for (int i = 0; i < count; ++i) {
    if (list.item(list.get(table, i)).address == address_) return i;
  }
  Live();
  return -1;
}

NodePtr Node::Child(const NodePtr& node, const void* key) {
  const auto found = node->children_.find(key);
  if (found == node->children_.end()) return nullptr;
  return found->second->shared_from_this();
}

NodePtr Node::PartOf(const NodePtr& node, const Part& part) {
  void* const owner = node->Live();
  const Type& type = part.type();
  if (NodePtr there = Child(node, &part)) return there;
  NodePtr made(new Node(node, node->file_, &part));
  made->type_ = &type;
  if (part.is_list) made->list_ = &type.lists.front();
  made->address_ = part.get(owner);
  made->has_file_positions_ |= part.has_file_positions;
  return made;
}

NodePtr Node::ListOf(const NodePtr& node, const List& list) {
  void* const owner = node->Live();
  if (NodePtr there = Child(node, &list)) return there;
  NodePtr made(new Node(node, node->file_, &list));
  made->list_ = &list;
  made->address_ = owner;
  return made;
}

NodePtr Node::ItemOf(const NodePtr& list, int i) {
  void* const table = list->Live();
  const Item item = list->list_->item(list->list_->get(table, i));
  if (NodePtr there = Child(list, item.address)) return there;
  NodePtr made(new Node(list, list->file_, item.address));
  made->type_ = item.type;
  made->address_ = item.address;
  return made;
}

bool Node::HasArrays() const {
  return arrays_ != 0 || std::any_of(children_.begin(), children_.end(),
                                     [](const auto& child) { return child.second->HasArrays(); });
}

void Node::ExpectNoArrays() const {
  if (!HasArrays()) return;
  throw pybind11::buffer_error(
      "an array of to_numpy() shows the records: drop it, or keep a copy of it, before they "
      "change their number");
}

void Node::EndItem(const void* address) {
  const auto found = children_.find(address);
  if (found == children_.end()) return;
  Node* const item = found->second;
  children_.erase(found);
  item->End();
}

void Node::End() {
  address_ = nullptr;
  EndBelow(false);
}

void Node::EndBelow(bool items) {
  if (items && list_ == nullptr) {
    for (const auto& [key, child] : children_) child->EndBelow(true);
    return;
  }
  for (const auto& [key, child] : std::exchange(children_, {})) child->End();
}

}  // namespace veska_python
