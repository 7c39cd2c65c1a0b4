/// The tree of all fields of a management file, a piece at a time.
#pragma once

#include <veska/CVMGInfo.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "veska/workshop/error.h"
#include "veska/workshop/text.h"

namespace VESKA::workshop {

/// A field, a table, a record, a list or an item of one.
struct Branch {
  std::string pointer = {};  ///< its place as in the JSON document: "/original_chain/cells/6/C_TY"
  std::string name = {};     ///< the last word of that; of an item of a list its number, from 1
  std::string text = {};  ///< a field's value for people, or what a record or an item begins with
  int children = 0;       ///< how many branches are directly below; 0 for a field
  bool is_list = false;
};

/// What is directly below a place, from child `first` on (from 0), at most `most`: all fields, also
/// those that JSON leaves out since they are derived. Below "" are the tables. None below a field,
/// nor below what does not exist. Takes time and memory in proportion to what is returned.
VESKA_WORKSHOP_API std::vector<Branch> BranchesOf(const CVMGInfo& info, std::string_view pointer,
                                                  int first, int most,
                                                  const DecodeText& decode = DecodeUtf8);

/// The fields whose name or value has `part` in it, whatever the case of its ASCII letters; the
/// first `most` of them in the order of the tree. Takes time in proportion to the object.
VESKA_WORKSHOP_API std::vector<Branch> FindFields(const CVMGInfo& info, std::string_view part,
                                                  std::size_t most,
                                                  const DecodeText& decode = DecodeUtf8);

}  // namespace VESKA::workshop
