#include "basis/tables.h"

#include <algorithm>
#include <cctype>

namespace VESKA::workshop {
namespace {

bool IsNumber(std::string_view step) {
  return !step.empty() &&
         std::all_of(step.begin(), step.end(), [](unsigned char c) { return std::isdigit(c); });
}

/// The number behind `digits`, which may be longer than any type of number holds.
std::string OneMore(std::string digits) {
  std::size_t at = digits.size();
  while (at > 0 && digits[at - 1] == '9') digits[--at] = '0';
  if (at == 0) return "1" + digits;
  ++digits[at - 1];
  return digits;
}

}  // namespace

const char* NameOf(Table table) { return InfoOf(table).key; }

std::string PointerOf(Table table) {
  return table == Table::kFile ? "" : std::string("/") + NameOf(table);
}

bool IsWithin(std::string_view pointer, std::string_view to) {
  return pointer.starts_with(to) && (pointer.size() == to.size() || pointer[to.size()] == '/');
}

std::string Singular(std::string_view list) {
  if (list.ends_with("ies")) return std::string(list.substr(0, list.size() - 3)) + "y";
  return std::string(list.ends_with("s") ? list.substr(0, list.size() - 1) : list);
}

std::string InWords(std::string_view pointer) {
  std::string words;
  std::string key;
  const auto say = [&words](const std::string& text) {
    if (!text.empty()) words += (words.empty() ? "" : " / ") + text;
  };
  while (!pointer.empty()) {
    pointer.remove_prefix(pointer.front() == '/' ? 1 : 0);
    const std::string_view step = pointer.substr(0, pointer.find('/'));
    pointer.remove_prefix(step.size());
    if (IsNumber(step) && !key.empty()) {
      say(Singular(key) + " " + OneMore(std::string(step)));
      key.clear();
    } else {
      say(key);
      key = step;
    }
  }
  say(key);
  return words.empty() ? NameOf(Table::kFile) : words;
}

}  // namespace VESKA::workshop
