// The tree of fields by what is below one place, and by what a field says.
#include "veska/workshop/browse.h"

#include <algorithm>
#include <charconv>

#include "tree/branch_text.h"
#include "tree/walk.h"

namespace VESKA::workshop {
namespace {

/// What is told of a record in the line above it ends with the value that reaches this length.
constexpr std::size_t kSummary = 120;

std::vector<std::string_view> WordsOf(std::string_view pointer) {
  std::vector<std::string_view> words;
  while (!pointer.empty()) {
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    words.push_back(pointer.substr(1, end - 1));
    pointer.remove_prefix(end);
  }
  return words;
}

/// The position that a word of a pointer says; `count` when it says none below that.
int PositionOf(std::string_view word, int count) {
  int i = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), i);
  const bool is_one = error == std::errc() && end == word.data() + word.size();
  return is_one && i >= 0 && i < count ? i : count;
}

/// Takes values, and builds nothing.
class Taker : public TreeVisitor {
 public:
  Taker(const CVMGInfo& info, const DecodeText& decode) : info_(info), decode_(decode) {}

  bool Builds() const override { return false; }
  std::uint8_t Form(const char*, std::uint8_t current) override { return current; }
  void Expect(bool, const char*, const char*) override {}
  void Optional(bool present, const std::function<void()>& content) override {
    if (present) content();
  }
  void Derived(const char* name, std::uint64_t value) override {
    Leaf(name, std::to_string(value));
  }
  void Block(const char* name, Bytes& bytes, std::size_t, std::size_t) override {
    Leaf(name, BlockText(bytes, decode_));
  }
  int Kind(const char* name, std::span<const char* const> kinds, int current) override {
    Leaf(name, kinds[static_cast<std::size_t>(current)]);
    return current;
  }

 protected:
  std::string Text(const Record& record, const Field& field, Positions positions) const {
    return BranchText(record, field, positions, info_, decode_);
  }

 private:
  /// A value that is no field of a record.
  virtual void Leaf(const char* name, std::string text) = 0;

  const CVMGInfo& info_;
  const DecodeText& decode_;
};

/// Goes down to one place and keeps what is directly below it.
class Browser : public Taker {
 public:
  Browser(const CVMGInfo& info, std::string_view pointer, int first, int most,
          const DecodeText& decode)
      : Taker(info, decode),
        pointer_(pointer),
        words_(WordsOf(pointer)),
        first_(first),
        most_(most) {}

  std::vector<Branch> Take() { return std::move(branches_); }

  void Fields(const Record& record, Positions positions) override {
    for (const Field& field : record.fields) {
      if (summed_ != nullptr) {
        ++summed_->children;
        if (field.kind == FieldKind::kBytes || IsFull()) continue;
        Say(field.name, Text(record, field, positions));
      } else if (IsWanted()) {
        Add(field.name, {.text = Text(record, field, positions)});
      }
    }
  }

  void Object(const char* name, const std::function<void()>& content) override {
    if (summed_ != nullptr) {
      ++summed_->children;
    } else if (IsHere()) {
      if (IsWanted()) Add(name, SummaryOf(content));
    } else if (words_[depth_] == name) {
      Down(1, content);
    }
  }

  void List(const char* name, int, int count, const std::function<void(int)>& item) override {
    if (summed_ != nullptr) {
      ++summed_->children;
      if (!IsFull()) Say(name, std::to_string(count));
    } else if (IsHere()) {
      if (IsWanted()) Add(name, {.children = count, .is_list = true});
    } else if (words_[depth_] == name) {
      InList(count, item);
    }
  }

 private:
  void Leaf(const char* name, std::string text) override {
    if (summed_ != nullptr) {
      ++summed_->children;
      if (!IsFull()) Say(name, text);
    } else if (IsWanted()) {
      Add(name, {.text = std::move(text)});
    }
  }

  void InList(int count, const std::function<void(int)>& item) {
    if (depth_ + 1 < words_.size()) {
      const int i = PositionOf(words_[depth_ + 1], count);
      if (i < count) Down(2, [&] { item(i); });
      return;
    }
    const int end = first_ < count ? first_ + std::min(most_, count - first_) : first_;
    for (int i = first_; i < end; ++i) {
      Branch branch = SummaryOf([&] { item(i); });
      branch.name = std::to_string(i + 1);
      branch.pointer = pointer_ + "/" + std::to_string(i);
      branches_.push_back(std::move(branch));
    }
  }

  template <class Content>
  void Down(std::size_t steps, const Content& content) {
    depth_ += steps;
    content();
    depth_ -= steps;
  }

  /// How many branches a record has below it, and how its values begin.
  template <class Content>
  Branch SummaryOf(const Content& content) {
    Branch branch;
    summed_ = &branch;
    content();
    summed_ = nullptr;
    return branch;
  }
  bool IsFull() const { return summed_->text.size() >= kSummary; }
  void Say(const char* name, const std::string& value) {
    summed_->text += (summed_->text.empty() ? "" : ", ") + (name + (" " + value));
  }

  bool IsHere() const { return depth_ == words_.size(); }
  bool IsWanted() {
    if (!IsHere()) return false;
    const int at = seen_++ - first_;
    return at >= 0 && at < most_;
  }
  void Add(const char* name, Branch branch) {
    branch.name = name;
    branch.pointer = pointer_ + "/" + name;
    branches_.push_back(std::move(branch));
  }

  std::string pointer_;
  std::vector<std::string_view> words_;
  std::size_t depth_ = 0;
  int first_;
  int most_;
  int seen_ = 0;
  Branch* summed_ = nullptr;  // the one whose content is walked through for its summary
  std::vector<Branch> branches_;
};

/// Goes everywhere and keeps the fields that say something.
class Finder : public Taker {
 public:
  Finder(const CVMGInfo& info, std::string_view part, std::size_t most, const DecodeText& decode)
      : Taker(info, decode), part_(LowerCase(part)), most_(most) {}

  std::vector<Branch> Take() { return std::move(found_); }

  void Fields(const Record& record, Positions positions) override {
    for (const Field& field : record.fields) {
      if (IsDone()) return;
      Match(field.name, Text(record, field, positions));
    }
  }
  void Object(const char* name, const std::function<void()>& content) override {
    In(name, content);
  }
  void List(const char* name, int, int count, const std::function<void(int)>& item) override {
    In(name, [&] {
      for (int i = 0; i < count && !IsDone(); ++i) In(std::to_string(i), [&] { item(i); });
    });
  }

 private:
  void Leaf(const char* name, std::string text) override { Match(name, std::move(text)); }

  bool IsDone() const { return found_.size() >= most_; }

  void Match(const char* name, std::string text) {
    if (IsDone() || !(HasPart(name, part_) || HasPart(text, part_))) return;
    found_.push_back({.pointer = path_ + "/" + name, .name = name, .text = std::move(text)});
  }

  template <class Content>
  void In(const std::string& name, const Content& content) {
    if (IsDone()) return;
    const std::size_t before = path_.size();
    path_ += "/" + name;
    content();
    path_.resize(before);
  }

  std::string part_;
  std::size_t most_;
  std::string path_;
  std::vector<Branch> found_;
};

/// The walk changes nothing unless its visitor builds.
CVMGInfo& Walked(const CVMGInfo& info) { return const_cast<CVMGInfo&>(info); }

}  // namespace

std::vector<Branch> BranchesOf(const CVMGInfo& info, std::string_view pointer, int first, int most,
                               const DecodeText& decode) {
  Browser browser(info, pointer, std::max(first, 0), std::max(most, 0), decode);
  WalkFile(browser, Walked(info));
  return browser.Take();
}

std::vector<Branch> FindFields(const CVMGInfo& info, std::string_view part, std::size_t most,
                               const DecodeText& decode) {
  Finder finder(info, part, most, decode);
  WalkFile(finder, Walked(info));
  return finder.Take();
}

}  // namespace VESKA::workshop
