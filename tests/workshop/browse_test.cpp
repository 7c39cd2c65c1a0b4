// The tree of fields, a piece at a time: all that the JSON document has is there, and found.
#include <gtest/gtest.h>
#include <veska/workshop/browse.h>
#include <veska/workshop/json.h>
#include <veska/workshop/load.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "support/image_builder.h"
#include "support/samples.h"

namespace {

using namespace VESKA;
using namespace VESKA::workshop;
using Json = nlohmann::ordered_json;

std::unique_ptr<CVMGInfo> Sample(const char* name) { return Load(ReadFile(SamplePath(name))); }

/// Goes through a document and the branches beside it; returns how many values it has seen.
int Compare(const CVMGInfo& info, const Json& document, const std::string& pointer) {
  const std::vector<Branch> branches = BranchesOf(info, pointer, 0, 1 << 20);
  if (document.is_array()) {
    EXPECT_EQ(branches.size(), document.size()) << pointer;
  }
  int seen = 0;
  std::size_t at = 0;
  for (const auto& [key, value] : document.items()) {
    if (key == "$schema" || key == "version") continue;
    const std::string below = std::string(pointer).append("/").append(key);
    while (at < branches.size() && branches[at].pointer != below) ++at;  // a derived one
    if (at == branches.size()) {
      ADD_FAILURE() << below << " is missing or out of order";
      return seen;
    }
    const Branch& branch = branches[at];
    const bool is_field = branch.children == 0 && !branch.is_list;
    EXPECT_EQ(branch.is_list, value.is_array()) << below;
    if (value.is_array()) {
      EXPECT_EQ(branch.children, static_cast<int>(value.size())) << below;
    }
    const auto all = BranchesOf(info, below, 0, 1 << 20).size();
    EXPECT_EQ(static_cast<std::size_t>(branch.children), all) << below;
    seen += is_field ? 1 : Compare(info, value, below);
  }
  return seen;
}

TEST(Browse, HasAllThatTheDocumentHas) {
  for (const char* sample :
       {"movie_recorder", "mixed_full", "still_camera", "odd_layout", "empty"}) {
    SCOPED_TRACE(sample);
    const auto info = Sample(sample);
    EXPECT_GT(Compare(*info, Json::parse(ToJson(*info)), ""), 20);
  }
}

TEST(Browse, GivesTheChildrenThatAreAskedFor) {
  const auto info = Sample("movie_recorder");
  const struct {
    const char* pointer;
    int first;
    int most;
    std::vector<std::string> names;
  } cases[] = {
      {"", 1, 2, {"play_lists", "movie"}},
      {"/original_chain/cells", 37, 9, {"38", "39", "40"}},
      {"/original_chain/cells/39", 0, 2, {"type", "CI_SA"}},
      {"/movie/vobs/5/time_map", 4, 9, {"times", "vobus"}},
      {"/movie/vobs", 2000000000, 2000000000, {}},
      {"/movie/vobs", -5, 1, {"1"}},
      {"/movie/vobs", 0, -1, {}},
      {"/movie/vobs/6", 0, 9, {}},
      {"/movie/vobs/-1", 0, 9, {}},
      {"/movie/vobs/1x", 0, 9, {}},
      {"/movie/vobs/99999999999", 0, 9, {}},
      {"/movie/vobs//", 0, 9, {}},
      {"/header/VMG_ID", 0, 9, {}},
      {"/nothing", 0, 9, {}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.pointer);
    std::vector<std::string> names;
    for (const Branch& branch : BranchesOf(*info, test.pointer, test.first, test.most)) {
      names.push_back(branch.name);
    }
    EXPECT_EQ(names, test.names);
  }
}

TEST(Browse, TellsValuesForPeople) {
  const auto info = Sample("movie_recorder");
  const auto text = [&](const char* pointer) {
    const std::string_view all(pointer);
    const auto at = all.rfind('/');
    for (const Branch& one : BranchesOf(*info, all.substr(0, at), 0, 1000)) {
      if (one.pointer == all) return one.text;
    }
    return std::string("none");
  };
  EXPECT_EQ(text("/header/text_93"), "\"FAMILY RECORDINGS VOL 3\"");
  EXPECT_EQ(text("/header/VMG_EA"), "13087");  // derived
  EXPECT_EQ(text("/play_lists/lists/1/cell_point"), "cell 34 (movie), position 120600 and 150");
  EXPECT_EQ(text("/play_lists/lists/0").substr(0, 24), "text_8 \"Best of spring\",");
  const DecodeText decode = [](std::span<const unsigned char>) { return "decoded"; };
  const auto decoded = BranchesOf(*info, "/play_lists/lists/1", 0, 9, decode);
  EXPECT_TRUE(std::any_of(decoded.begin(), decoded.end(),
                          [](const Branch& one) { return one.text == "\"decoded\""; }));
}

TEST(Browse, FindsFieldsByNameAndValue) {
  const auto info = Sample("movie_recorder");
  const std::vector<Branch> found = FindFields(*info, "sPORT oNLY", 10);
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].pointer, "/play_lists/lists/1/text_8");
  EXPECT_EQ(found[1].pointer, "/user_chains/chains/1/programs/0/text_4");
  EXPECT_EQ(FindFields(*info, "pg_ns", 10).size(), 4U);  // of four chains
  EXPECT_EQ(FindFields(*info, "word_1", 7).size(), 7U);
  EXPECT_TRUE(FindFields(*info, "no such thing", 10).empty());
  EXPECT_TRUE(FindFields(*info, "word_1", 0).empty());
}

}  // namespace
