// What `veska salvage` reads of damaged files: all that is sure, and nothing that did not stand
// there.

#include <gtest/gtest.h>
#include <veska/workshop/load.h>
#include <veska/workshop/salvage.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "check/examined.h"
#include "support/image_builder.h"
#include "tree/json_tree.h"

namespace {

using namespace VESKA;
using namespace VESKA::workshop;
using VESKA::Bytes;

using Positions = std::vector<std::size_t>;
std::optional<Positions> Match(const Json& saved, const Json& whole);

/// True when a value is that of the whole file: a list holds items of its list in their order. What
/// refers to cells may have lost some.
bool Stands(const std::string& key, const Json& saved, const Json& whole) {
  if (key.starts_with("cell_point")) return true;  // looked at with the cells
  if (key == "C_Ns") return saved <= whole;
  if (saved.is_array()) return whole.is_array() && Match(saved, whole);
  if (!saved.is_object()) return saved == whole;
  for (const auto& [name, value] : saved.items()) {
    if (!whole.contains(name) || !Stands(name, value, whole.at(name))) return false;
  }
  return saved.size() == whole.size();
}

/// Where the items of a list stand in the whole one.
std::optional<Positions> Match(const Json& saved, const Json& whole) {
  Positions positions;
  std::size_t next = 0;
  for (const Json& item : saved) {
    while (next < whole.size() && !Stands("", item, whole[next])) ++next;
    if (next == whole.size()) return {};
    positions.push_back(next++);
  }
  return positions;
}

/// Nothing but zeros.
bool IsEmpty(const Json& value) {
  if (value.is_number()) return value == 0;
  if (value.is_string())
    return value.get<std::string>().find_first_not_of('0') == std::string::npos;
  return value.is_object() && IsEmpty(value.contains("hex") ? value.at("hex") : value.at("cell"));
}

/// A cell point names the cell that it named before, or none.
void ExpectNamed(const Json& saved, const Json& saved_cells, const Json& whole,
                 const Json& whole_cells) {
  const auto cell_of = [](const Json& point, const Json& cells) {
    const auto number = point.at("cell").get<std::size_t>();
    return number != 0 && number <= cells.size() ? cells[number - 1] : Json();
  };
  const Json named = cell_of(saved, saved_cells);
  if (saved.at("cell") == 65535 || saved == whole || IsEmpty(saved.at("cell"))) return;
  ASSERT_FALSE(named.is_null()) << saved;
  ASSERT_TRUE(Stands("", named, cell_of(whole, whole_cells))) << saved << whole;
}

void ExpectPoints(const Json& saved, const Json& saved_cells, const Json& whole,
                  const Json& whole_cells) {
  const auto positions = Match(saved, whole);
  for (std::size_t i = 0; i < saved.size(); ++i) {
    ExpectNamed(saved[i].at("cell_point"), saved_cells, whole[(*positions)[i]].at("cell_point"),
                whole_cells);
  }
}

/// What is kept of a table: its own fields or, where the file ends in them, none of them; of each
/// list some items. A text set that is lost keeps its place.
void ExpectTable(const std::string& name, const Json& saved, const Json& whole) {
  for (const auto& [key, value] : saved.items()) {
    if (key == "sets") {
      ASSERT_LE(value.size(), whole.at(key).size());
      for (std::size_t i = 0; i < value.size(); ++i) {
        ASSERT_TRUE(Stands("", value[i], whole.at(key)[i])) << i << value[i];
      }
    } else {
      const bool may_be_empty = name != "header" && !value.is_array() && IsEmpty(value);
      ASSERT_TRUE(may_be_empty || Stands(key, value, whole.at(key))) << name << "/" << key << value;
    }
  }
}

/// Nothing stands in what is salvaged that does not stand in the whole file, but for the tables in
/// `damaged`.
void ExpectNothingInvented(const Json& saved, const Json& whole, const std::string& damaged = "") {
  for (const char* name : {"header", "play_lists", "movie", "still", "original_chain",
                           "user_chains", "texts", "manufacturers"}) {
    if (name != damaged && saved.contains(name)) ExpectTable(name, saved.at(name), whole.at(name));
  }
  const Json& cells = saved.at("original_chain").at("cells");
  const Json& whole_cells = whole.at("original_chain").at("cells");
  if (testing::Test::HasFatalFailure() || damaged == "original_chain") return;
  for (const char* key : {"cell_point_70", "cell_point_85"}) {
    if (damaged == "header") break;
    ExpectNamed(saved["header"][key], cells, whole["header"][key], whole_cells);
  }
  ExpectPoints(saved["original_chain"]["programs"], cells, whole["original_chain"]["programs"],
               whole_cells);
  if (damaged == "play_lists") return;
  ExpectPoints(saved["play_lists"]["lists"], cells, whole["play_lists"]["lists"], whole_cells);
}

/// What must hold for a file of any bytes. Returns what was salvaged.
std::unique_ptr<CVMGInfo> ExpectSense(const Bytes& damaged, const Bytes& original) {
  Salvaged result = workshop::Salvage(damaged);
  EXPECT_TRUE(result.info != nullptr || !result.is_whole);
  if (result.info == nullptr) return nullptr;
  const Bytes saved = Written(*result.info);
  const Examination check = Check(saved);
  EXPECT_TRUE(check.loads && check.errors == 0) << ToText(result) << ToText(check, "salvaged");
  EXPECT_TRUE(workshop::Salvage(saved).is_whole) << ToText(workshop::Salvage(saved));
  EXPECT_TRUE(result.is_whole || damaged != original);
  return std::move(result.info);
}

/// The whole file as completing leaves it, which sets the kinds of cells.
Json WholeTree(const Bytes& image) {
  const auto info = workshop::Load(image);
  info->AutoComplete();
  return TreeOf(*info);
}

TEST(Salvage, MakesSenseWhateverTheDamage) {
  for (const char* sample : kSamples) ExpectSense(Sample(sample), Sample(sample));
  ForEachDamaged(200, [](const Bytes& damaged, const Bytes& original) {
    ExpectSense(damaged, original);
    ASSERT_FALSE(testing::Test::HasFailure());
  });
}

TEST(Salvage, InventsNothingWhereTheFileIsCut) {
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    const Json whole = WholeTree(image);
    const std::size_t step = image.size() > 10000 ? 11 : image.size() > 5000 ? 3 : 1;
    Bytes last;  // most cuts leave what the one before left
    for (std::size_t size = image.size() % step; size < image.size(); size += step) {
      SCOPED_TRACE(std::string(sample) + " cut at " + std::to_string(size));
      const auto info = ExpectSense(image.Part(0, size), image);
      if (info == nullptr || Written(*info) == last) continue;
      last = Written(*info);
      ExpectNothingInvented(TreeOf(*info), whole);
      ASSERT_FALSE(HasFailure()) << ToText(workshop::Salvage(image.Part(0, size)));
    }
  }
}

TEST(Salvage, InventsNothingWhereBytesAreOverwritten) {
  std::mt19937 random(7);
  for (const char* sample : kSamples) {
    const Bytes image = Sample(sample);
    const Json whole = WholeTree(image);
    for (const Structure& structure : Examine(image, 1).map.structures) {
      if (structure.size == 0 || !ImageMap::IsLeaf(structure.part)) continue;
      const std::size_t at = structure.offset + random() % structure.size;
      const std::size_t left = structure.offset + structure.size - at;
      Bytes bytes(std::min<std::size_t>(1 + random() % 40, left), random() % 2 == 0 ? 0 : 0xFF);
      if (random() % 3 == 0) {
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
      }
      SCOPED_TRACE(std::string(sample) + " with " + std::to_string(bytes.size()) + " bytes at " +
                   std::to_string(at));
      const auto info = ExpectSense(image.With(at, bytes), image);
      const char* table = NameOf(structure.table);
      if (info != nullptr) ExpectNothingInvented(TreeOf(*info), whole, table);
      ASSERT_FALSE(HasFailure()) << ToText(workshop::Salvage(image.With(at, bytes)));
    }
  }
}

TEST(Salvage, KeepsAllThatIsSure) {
  const struct {
    const char* sample;
    std::size_t at;
    Bytes patch;
    std::size_t size;            // of the file; 0 for all of it
    bool is_whole, is_complete;  // nothing was changed; the result is the undamaged sample
    const char* line;
  } cases[] = {
      {"mixed_full", 0, {}, 0, true, true, "movie: 2 of 2 streams, 6 of 6 vobs\n"},
      {"mixed_full", 4, Byte('x'), 0, false, true, "header / VMG_ID: damaged"},
      {"mixed_full", 256, Long(1105), 0, false, true, "1105, taken as 1104"},
      {"mixed_full", 256, Zeros(104), 0, false, false, "0, taken as 6482"},
      {"mixed_full", 1232, Word(60000), 0, false, true, "60000, taken as 6"},
      {"mixed_full", 1242, Long(9), 0, false, true, "9, taken as 310"},
      {"mixed_full", 658, Word(77), 0, false, false, "named cell 77, which does not exist"},
      {"odd_layout", 1388, Long(1 << 20), 0, false, false, "7 of 8 cells"},
      {"odd_layout", 308, Long(1 << 30), 0, false, false, "user_chains: lost\n"},
      {"odd_layout", 3426, Long(1 << 20), 0, false, false,
       "user_chains / chain 3 / program 2 / cell_point: named cell 2"},
      {"movie_recorder", 0, {}, 8500, false, false, "original_chain: 3 of 12 programs, 0 of 40"},
      {"movie_recorder", 0, {}, 1600, false, false, "kept with"},
      {"movie_recorder", 0, {}, 300, false, false, "shorter than its header"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.line);
    const Bytes image = Sample(test.sample);
    Bytes damaged = image.With(test.at, test.patch);
    if (test.size != 0) damaged.resize(test.size);
    const Salvaged result = workshop::Salvage(damaged);
    const std::string text = ToText(result);
    EXPECT_EQ(result.is_whole, test.is_whole) << text;
    EXPECT_EQ(result.info != nullptr && Written(*result.info) == image, test.is_complete);
    EXPECT_NE(text.find(test.line), std::string::npos) << text;
  }
}

/// The end address of the table tells how long the last information is.
TEST(Salvage, KeepsTheWholeInformationOfAManufacturer) {
  const Bytes image = Sample("mixed_full");
  const Json whole = TreeOf(*workshop::Load(image))["manufacturers"]["items"];
  // Where one lies is not known, and how long the one before it is.
  const Salvaged result = workshop::Salvage(image.With(6926, Word(20)));
  ASSERT_NE(result.info, nullptr) << ToText(result);
  EXPECT_EQ(TreeOf(*result.info)["manufacturers"]["items"], Json::array({whole[2]}));
}

TEST(Salvage, CountsNoEntriesWhereTheyAreLost) {
  const Bytes image = Sample("mixed_full");
  // More entries than there is room for in cell 5, and the kind of one is wrong.
  const Salvaged result = workshop::Salvage(image.With(2933, Word(900)).With(2939, Byte(0x1A)));
  ASSERT_NE(result.info, nullptr);
  Json cells = TreeOf(*workshop::Load(image))["original_chain"]["cells"];
  cells[4]["entries"] = Json::array();
  EXPECT_EQ(TreeOf(*result.info)["original_chain"]["cells"], cells) << ToText(result);
}

/// What a user-defined chain names beside its cells says nothing unless some of them are lost.
TEST(Salvage, LeavesWhatAWholeUserChainNamesBesideItsCells) {
  const Bytes image = Sample("odd_layout");
  const ImageMap map = Examine(image, 1).map;
  const auto programs = std::find_if(
      map.structures.begin(), map.structures.end(), [&map](const Structure& structure) {
        return map.PointerOf(structure) == "/user_chains/chains/2/programs";
      });
  ASSERT_NE(programs, map.structures.end());
  const Bytes named = image.With(programs->offset + offsetof(tag_PGI, cell_point), Word(77));
  const std::string changed = "named cell 77, which does not exist, and names none";
  EXPECT_EQ(ToText(workshop::Salvage(named)).find(changed), std::string::npos);
  const std::string text = ToText(workshop::Salvage(named.With(3426, Long(1 << 20))));
  EXPECT_NE(text.find("user_chains / chain 3 / program 1 / cell_point: " + changed),
            std::string::npos)
      << text;
}

}  // namespace
