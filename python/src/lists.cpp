#include <algorithm>
#include <string>

#include "description.h"
#include "errors.h"
#include "values.h"
#include "views.h"

namespace veska_python {
namespace {

int CountOf(const Node& node) { return node.list()->count(node.Live()); }

/// The position that an index of Python stands for.
int PositionOf(const Node& node, py::ssize_t index) {
  const int count = CountOf(node);
  if (index < 0) index += count;
  if (index < 0 || index >= count) {
    throw py::index_error(std::string(node.list()->name) + ": " + std::to_string(count) +
                          " there, so no " + std::to_string(index));
  }
  return static_cast<int>(index);
}

std::vector<int> PositionsOf(const Node& node, const py::slice& slice) {
  py::ssize_t start = 0, stop = 0, step = 0, length = 0;
  if (!slice.compute(CountOf(node), &start, &stop, &step, &length)) throw py::error_already_set();
  std::vector<int> positions;
  for (; length > 0; --length, start += step) positions.push_back(static_cast<int>(start));
  return positions;
}

void Delete(const NodePtr& node, int i) {
  const List& list = *node->list();
  void* const table = node->Live();
  node->ExpectNoArrays();
  if (i < 0 || i >= list.count(table)) throw py::index_error("the list changed meanwhile");
  const void* const address = list.item(list.get(table, i)).address;
  node->EndItem(address);
  if (!list.erase(table, i)) throw std::bad_alloc();
  node->file().is_edited = true;
}

/// A new item at a position that is in range or the end.
NodePtr Make(const NodePtr& node, int i, Form form) {
  const List& list = *node->list();
  void* const table = node->Live();
  node->ExpectNoArrays();
  if (list.count(table) >= list.limit) {
    throw py::value_error(std::string(list.name) + ": a file counts " + std::to_string(list.limit) +
                          " at most");
  }
  if (list.make(table, i, form) == nullptr) throw std::bad_alloc();
  node->file().is_edited = true;
  return Node::ItemOf(node, i);
}

/// What `fill` makes of a new item; without it where that fails.
template <class Fill>
py::object Filled(const NodePtr& node, const NodePtr& item, const Fill& fill) {
  try {
    fill();
  } catch (...) {
    if (!item->is_stale() && !node->is_stale()) Delete(node, item->Index());
    throw;
  }
  return ViewOf(item);
}

py::object InsertCopy(const NodePtr& node, int i, const py::object& from) {
  const List& list = *node->list();
  if (!py::isinstance<RecordView>(from)) {
    throw py::type_error(std::string(list.name) + ": takes an item of such a list, and copies it");
  }
  const NodePtr source = py::cast<View&>(from).node;
  source->Live();
  if (std::find(list.types.begin(), list.types.end(), source->type()) == list.types.end()) {
    throw py::type_error(std::string(list.name) + ": takes no " + source->type()->name);
  }
  const Form form = list.form_of != nullptr ? list.form_of({source->type(), source->Live()}) : 0;
  const NodePtr item = Make(node, i, form);
  return Filled(node, item, [&] { list.copy(node->Live(), i, item->Live(), source->Live()); });
}

py::object InsertNew(const NodePtr& node, int i, py::dict fields) {
  const List& list = *node->list();
  const Form form = list.asked != nullptr ? list.asked(fields) : 0;
  i = std::min(i, CountOf(*node));
  const NodePtr item = Make(node, i, form);
  return Filled(node, item, [&] {
    const py::object view = ViewOf(item);
    for (const auto& [name, value] : fields) py::setattr(view, name, value);
  });
}

py::object InsertAt(const NodePtr& node, int i, const py::object& item, const py::kwargs& fields) {
  if (item.is_none()) return InsertNew(node, i, fields);
  if (!fields.empty()) throw py::type_error("either an item to copy, or fields");
  return InsertCopy(node, i, item);
}

/// As Python's lists do, before the item at an index that is brought into range.
py::object Insert(const ListView& self, py::ssize_t index, const py::object& item,
                  const py::kwargs& fields) {
  const int count = CountOf(*self.node);
  if (index < 0) index += count;
  index = std::clamp<py::ssize_t>(index, 0, count);
  return InsertAt(self.node, static_cast<int>(index), item, fields);
}

py::object Append(const ListView& self, const py::object& item, const py::kwargs& fields) {
  return InsertAt(self.node, CountOf(*self.node), item, fields);
}

void SetItem(const ListView& self, py::ssize_t index, const py::object& item) {
  const int i = PositionOf(*self.node, index);
  InsertCopy(self.node, i, item);
  Delete(self.node, i + 1);
}

py::object GetItem(const ListView& self, py::ssize_t index) {
  return ViewOf(Node::ItemOf(self.node, PositionOf(*self.node, index)));
}

py::list GetSlice(const ListView& self, const py::slice& slice) {
  py::list items;
  for (const int i : PositionsOf(*self.node, slice)) items.append(GetItem(self, i));
  return items;
}

void DeleteSlice(const ListView& self, const py::slice& slice) {
  std::vector<int> positions = PositionsOf(*self.node, slice);
  std::sort(positions.rbegin(), positions.rend());
  for (const int i : positions) Delete(self.node, i);
}

void Clear(const ListView& self) {
  for (int i = CountOf(*self.node); i-- > 0;) Delete(self.node, i);
}

void Move(const ListView& self, py::ssize_t from, py::ssize_t to) {
  const List& list = *self.node->list();
  const int first = PositionOf(*self.node, from);
  const int last = PositionOf(*self.node, to);
  if (list.move == nullptr) {
    throw py::type_error(std::string(list.name) + ": their order cannot be changed");
  }
  self.node->ExpectNoArrays();
  if (!list.move(self.node->Live(), first, last)) throw std::bad_alloc();
  self.node->file().is_edited = true;
}

/// Walks a list as Python's own does: it may change meanwhile.
struct ListIterator {
  ListView list;
  int next = 0;

  py::object Next() {
    if (next >= CountOf(*list.node)) throw py::stop_iteration();
    return GetItem(list, next++);
  }
};

py::object ListsEqual(const ListView& a, const py::object& other) {
  if (!py::isinstance<ListView>(other)) {
    return py::reinterpret_borrow<py::object>(Py_NotImplemented);
  }
  const ListView& b = py::cast<ListView&>(other);
  if (a.node->list() != b.node->list() || CountOf(*a.node) != CountOf(*b.node)) {
    return py::bool_(false);
  }
  for (int i = 0; i < CountOf(*a.node); ++i) {
    if (!HoldSame(Node::ItemOf(a.node, i), Node::ItemOf(b.node, i))) return py::bool_(false);
  }
  return py::bool_(true);
}

py::str ReprOfList(const ListView& self) {
  constexpr int kShown = 10;
  const std::string name = std::string("veska ") + self.node->list()->name;
  if (self.node->is_stale()) return "<" + name + ", which are stale>";
  const int count = CountOf(*self.node);
  std::string text = "<" + name + ": " + std::to_string(count);
  for (int i = 0; i < std::min(count, kShown); ++i) {
    text += "\n  " + std::string(py::repr(GetItem(self, i)));
  }
  if (count > kShown) text += "\n  ...";
  return text + ">";
}

}  // namespace

void DefineLists(py::module_& module, const py::class_<View>& view) {
  py::class_<ListIterator>(module, "_ListIterator")
      .def("__iter__", [](const py::object& self) { return self; })
      .def("__next__", &ListIterator::Next);
  py::class_<ListView> list(module, "List", view, "A list of a file.");
  list.def(py::init(&ViewFrom<ListView>))
      .def("__len__", [](const ListView& self) { return CountOf(*self.node); })
      .def("__getitem__", GetItem, py::arg("index"))
      .def("__getitem__", GetSlice, py::arg("index"))
      .def("__setitem__", SetItem, py::arg("index"), py::arg("item"))
      .def("__delitem__", [](const ListView& self,
                             py::ssize_t i) { Delete(self.node, PositionOf(*self.node, i)); })
      .def("__delitem__", DeleteSlice, py::arg("index"))
      .def("__iter__", [](const ListView& self) { return ListIterator{self}; })
      .def("__eq__", ListsEqual)
      .def("__repr__", ReprOfList)
      .def("insert", Insert, py::arg("index"), py::arg("item") = py::none())
      .def("append", Append, py::arg("item") = py::none())
      .def("clear", Clear)
      .def("move", Move, py::arg("index"), py::arg("to"), "Moves an item; it becomes item `to`.")
      .def(
          "to_numpy", [](const ListView& self) { return ToNumpy(self.node); },
          "The records as a read-only array, which shows their memory.");
  const py::object sequence = py::module_::import("collections.abc").attr("Sequence");
  for (const char* name : {"index", "count", "__reversed__"}) {
    list.attr(name) = sequence.attr(name);
  }
  sequence.attr("register")(list);
}

}  // namespace veska_python
