// The two walks, over the bytes of a file and over the object made of them, and the one address of
// places that both have.
#include "map/map.h"

#include <gtest/gtest.h>
#include <veska/workshop/load.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "support/image_builder.h"
#include "tree/json_tree.h"

namespace {

using namespace VESKA;
using namespace VESKA::workshop;

/// The pointers of the lists below a value that hold anything. Texts are bytes in the map.
void CollectLists(const Json& value, const std::string& pointer, std::set<std::string>& lists) {
  if (value.is_array() && !value.empty() && !pointer.ends_with("/texts")) lists.insert(pointer);
  if (!value.is_structured()) return;
  for (const auto& [key, child] : value.items()) {
    CollectLists(child, std::string(pointer).append("/").append(key), lists);
  }
}

TEST(MapTest, EveryPlaceIsInTheTreeWithTheSameCounts) {
  for (const char* sample : kSamples) {
    const VESKA::Bytes image = Sample(sample);
    const Json tree = TreeOf(*workshop::Load(image));
    std::set<std::string> lists;
    CollectLists(tree, "", lists);
    Findings findings(1);
    const ImageMap map = MapImage(image, findings);
    for (const Structure& structure : map.structures) {
      const std::string pointer = map.PointerOf(map.PositionOf(structure));
      SCOPED_TRACE(std::string(sample) + " " + pointer);
      ASSERT_TRUE(tree.contains(Json::json_pointer(pointer)));
      const Json& value = tree.at(Json::json_pointer(pointer));
      const Role role = InfoOf(structure.part).role;
      const bool is_list = role == Role::kRun || role == Role::kIndex || role == Role::kEntries;
      if (!is_list || structure.part == Part::kTextSet) continue;
      EXPECT_EQ(value.size(), structure.count);
      lists.erase(pointer);
    }
    EXPECT_TRUE(lists.empty()) << sample << ": not in the map: " << *lists.begin();
  }
}

TEST(MapTest, PlacesHaveWords) {
  const struct {
    const char* pointer;
    const char* words;
  } cases[] = {{"", "file"},
               {"/movie", "movie"},
               {"/movie/vobs/2/time_map", "movie / vob 3 / time_map"},
               {"/play_lists/lists/9", "play_lists / list 10"},
               {"/still/groups/98/entries/99", "still / group 99 / entry 100"},
               {"/original_chain/cells/0/entries", "original_chain / cell 1 / entries"},
               {"/user_chains/chains/0/programs/18446744073709551615/cell_point",
                "user_chains / chain 1 / program 18446744073709551616 / cell_point"}};
  for (const auto& test : cases) EXPECT_EQ(InWords(test.pointer), test.words);
}

}  // namespace
