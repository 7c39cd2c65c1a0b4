// The workshop for the page: one file is open at a time; the page asks in words and is answered in
// JSON, HTML or bytes.
#include <veska/workshop/browse.h>
#include <veska/workshop/check.h>
#include <veska/workshop/edit.h>
#include <veska/workshop/json.h>
#include <veska/workshop/list.h>
#include <veska/workshop/load.h>
#include <veska/workshop/locate.h>
#include <veska/workshop/report.h>
#include <veska/workshop/salvage.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#define VESKA_FROM_PAGE(name) __attribute__((import_module("page"), import_name(name)))
#define VESKA_TO_PAGE(name) __attribute__((export_name(name)))

extern "C" {
/// Decodes a text in the character set that the page chose. Returns how many bytes of UTF-8 it put
/// at `to`, which has room for three times `size`; less than 0 when it is no text in that set.
VESKA_FROM_PAGE("decode") int PageDecode(const unsigned char* from, std::size_t size, char* to);
/// Reads from the image that is searched; returns how many bytes there were.
VESKA_FROM_PAGE("read") std::size_t PageRead(double offset, unsigned char* to, std::size_t size);
}

namespace {

using namespace VESKA::workshop;
using Json = nlohmann::ordered_json;
using Words = std::span<const std::string>;

constexpr const char* kMemory = "there is not enough memory";

std::string request;
std::string answer;
Bytes file;                             // what is open
Bytes made;                             // the file that an answer comes with
std::unique_ptr<VESKA::CVMGInfo> info;  // of the open file, once it was asked for

const VESKA::CVMGInfo& Info() {
  if (info == nullptr) info = Load(file);
  return *info;
}

std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::int64_t Number(const std::string& word) {
  std::int64_t number = 0;
  std::from_chars(word.data(), word.data() + word.size(), number);
  return number;
}

std::optional<std::string> DecodeByPage(std::span<const unsigned char> bytes) {
  std::string text(3 * bytes.size(), '\0');
  const int size = PageDecode(bytes.data(), bytes.size(), text.data());
  if (size < 0) return {};
  text.resize(static_cast<std::size_t>(size));
  return text;
}

std::string Open(Words) {
  info = nullptr;
  return "";
}

bool Loads() {
  try {
    Info();
    return true;
  } catch (const Error&) {
    return false;
  }
}

std::string List(Words) {
  const Listing listing = ListingOf(file, DecodeByPage);
  Json programs = Json::array();
  for (const ListedProgram& one : listing.programs) {
    programs.push_back({{"text", one.text},
                        {"kind", one.kind},
                        {"firstCell", one.first_cell},
                        {"cells", one.cells},
                        {"seconds", one.seconds}});
  }
  Json play_lists = Json::array();
  for (const ListedPlayList& one : listing.play_lists) {
    play_lists.push_back({{"text", one.text}, {"cell", one.cell}});
  }
  return Text({{"status", static_cast<int>(listing.status)},
               {"problem", listing.problem},
               {"text", listing.text},
               {"programs", std::move(programs)},
               {"playLists", std::move(play_lists)},
               {"cells", listing.cells},
               {"userChains", listing.user_chains},
               {"vobs", listing.vobs},
               {"stillGroups", listing.still_groups},
               {"seconds", listing.seconds},
               {"bytes", listing.bytes},
               {"recordedFirst", listing.recorded_first},
               {"recordedLast", listing.recorded_last},
               {"loads", Loads()},
               {"errors", listing.errors},
               {"warnings", listing.warnings}});
}

std::string CheckFile(Words words) {
  const NamedExamination named{words[0], Check(file)};
  return ToJson(std::span(&named, 1));
}

std::string ReportFile(Words words) { return Report(words[0], file, {.decode = DecodeByPage}); }

std::string Export(Words) { return ToJson(Info()); }

Json JsonOf(const std::vector<Branch>& branches) {
  Json json = Json::array();
  for (const Branch& branch : branches) {
    json.push_back({{"pointer", branch.pointer},
                    {"name", branch.name},
                    {"text", branch.text},
                    {"children", branch.children},
                    {"isList", branch.is_list}});
  }
  return json;
}

std::string Branches(Words words) {
  return Text(JsonOf(BranchesOf(Info(), words[0], static_cast<int>(Number(words[1])),
                                static_cast<int>(Number(words[2])), DecodeByPage)));
}

std::string Find(Words words) {
  const auto most = static_cast<std::size_t>(Number(words[1]));
  Json json = JsonOf(FindFields(Info(), words[0], most, DecodeByPage));
  for (Json& one : json) one["words"] = InWords(one["pointer"].get<std::string>());
  return Text(json);
}

std::string Preview(Words words) {
  return Text(PreviewEdit(Info(), words, EncodeUtf8, DecodeByPage));
}

std::string EditFile(Words words) {
  VESKA::CVMGInfo edited = Info();
  const std::vector<std::string> followed = Edit(edited, words);
  made = ImageOf(edited);
  return Text(followed);
}

Json JsonOf(const SalvagedTable& table) {
  Json counts = Json::array();
  for (const KeptItems& one : table.counts) {
    counts.push_back({{"what", one.what}, {"kept", one.kept}, {"all", one.all}});
  }
  Json losses = Json::array();
  for (const Loss& loss : table.losses) {
    losses.push_back(
        {{"words", InWords(loss.pointer)}, {"what", loss.what}, {"reason", loss.reason}});
  }
  return {{"table", NameOf(table.table)},
          {"isLost", table.is_lost},
          {"counts", std::move(counts)},
          {"losses", std::move(losses)}};
}

std::string SalvageFile(Words) {
  const Salvaged salvaged = Salvage(file);
  Json tables = Json::array();
  for (const SalvagedTable& table : salvaged.tables) tables.push_back(JsonOf(table));
  Json otherwise = Json::array();
  for (const Finding& finding : salvaged.otherwise) {
    otherwise.push_back({{"words", InWords(finding.pointer)},
                         {"title", EntryOf(finding.code).title},
                         {"stands", finding.stands},
                         {"right", finding.right}});
  }
  if (salvaged.info != nullptr) made = ImageOf(*salvaged.info);
  return Text({{"isRead", salvaged.info != nullptr},
               {"isWhole", salvaged.is_whole},
               {"tables", std::move(tables)},
               {"otherwise", std::move(otherwise)}});
}

/// Searches the part of an image between two offsets; a file that begins there may end behind it.
std::string LocateIn(Words words) {
  const auto from = static_cast<std::uint64_t>(Number(words[0]));
  const auto to = static_cast<std::uint64_t>(Number(words[1]));
  const auto read = [from](std::uint64_t offset, std::span<unsigned char> bytes) {
    return PageRead(static_cast<double>(from + offset), bytes.data(), bytes.size());
  };
  Json found = Json::array();
  for (const Located& one : Locate(read, [&](std::uint64_t at) { return from + at < to; })) {
    if (from + one.offset >= to) continue;  // the next part has it
    found.push_back({{"offset", from + one.offset},
                     {"size", one.size},
                     {"isSound", one.is_sound},
                     {"canBeSalvaged", one.can_be_salvaged}});
  }
  return Text(found);
}

std::string BeginsLike(Words) { return BeginsLikeOne(file) ? "true" : "false"; }

struct Request {
  const char* name;
  std::size_t words;  // at least
  std::string (*answer)(Words words);
};

constexpr Request kRequests[] = {
    {"open", 0, Open},           {"list", 0, List},       {"check", 1, CheckFile},
    {"report", 1, ReportFile},   {"json", 0, Export},     {"branches", 3, Branches},
    {"find", 2, Find},           {"preview", 1, Preview}, {"edit", 1, EditFile},
    {"salvage", 0, SalvageFile}, {"locate", 2, LocateIn}, {"begins", 0, BeginsLike},
};

/// The words of the request, each with a zero behind it.
std::vector<std::string> TakeWords() {
  std::vector<std::string> words;
  for (std::size_t at = 0; at < request.size();) {
    const std::size_t end = std::min(request.find('\0', at), request.size());
    words.push_back(request.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

void Refuse(const char* kind, const std::string& what, const std::string& place = {}) {
  answer = Text({{"kind", kind}, {"what", what}, {"place", place}});
}

bool Answer() {
  const std::vector<std::string> words = TakeWords();
  const auto* known = std::find_if(std::begin(kRequests), std::end(kRequests), [&](auto& one) {
    return !words.empty() && one.name == words[0] && words.size() > one.words;
  });
  if (known == std::end(kRequests)) return false;
  answer = known->answer(Words(words).subspan(1));
  return true;
}

}  // namespace

extern "C" {

VESKA_TO_PAGE("roomForRequest") char* RoomForRequest(std::size_t size) {
  request.resize(size);
  return request.data();
}

/// For the bytes of the file to open; null when there is no memory.
VESKA_TO_PAGE("roomForFile") unsigned char* RoomForFile(std::size_t size) {
  try {
    info = nullptr;
    file = Bytes();
    file.resize(size);
    return file.data();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// True when the answer is what was asked for, false when it says why not.
VESKA_TO_PAGE("ask") bool Ask() {
  made = Bytes();
  answer = std::string();
  try {
    if (Answer()) return true;
    Refuse("request", "there is no such request");
  } catch (const Error& error) {
    static constexpr const char* kKinds[] = {"file", "document", "request"};
    Refuse(kKinds[static_cast<int>(error.Kind()) - 1], error.what(), error.Place());
  } catch (const std::bad_alloc&) {
    Refuse("memory", kMemory);
  } catch (const std::exception& error) {
    Refuse("file", error.what());
  }
  return false;
}

VESKA_TO_PAGE("answer") const char* AnswerData() { return answer.data(); }
VESKA_TO_PAGE("answerSize") std::size_t AnswerSize() { return answer.size(); }
VESKA_TO_PAGE("made") const unsigned char* MadeData() { return made.data(); }
VESKA_TO_PAGE("madeSize") std::size_t MadeSize() { return made.size(); }
}
